#include <velmora/DiskFileSystem.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Velmora {

namespace {

class DiskFile : public VirtualFile {
public:
    DiskFile(int in_iDescriptor, const char* in_szPath)
        : m_iDescriptor(in_iDescriptor), m_strPath(in_szPath) {}
    ~DiskFile() override { ::close(m_iDescriptor); }
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;

    long read(char* out_pBuffer, std::size_t in_uiCount) override {
        const std::size_t uiCount = std::min(in_uiCount, static_cast<std::size_t>(LONG_MAX));
        ssize_t iRead = 0;
        do {
            iRead = ::read(m_iDescriptor, out_pBuffer, uiCount);
        } while (iRead < 0 && errno == EINTR);
        return static_cast<long>(iRead);
    }

    const char* getPath() const override { return m_strPath.c_str(); }

private:
    const int m_iDescriptor;
    const std::string m_strPath;
};

bool isRegular(const struct stat& in_status) {
    return S_ISREG(in_status.st_mode);
}

} // namespace

DiskFileSystem::DiskFileSystem() = default;
DiskFileSystem::~DiskFileSystem() = default;

TSHandle<VirtualFile> DiskFileSystem::open(const char* in_szPath) {
    // Looked at before it is opened, since opening alone can act on a device, and once more behind
    // it, since the path may have come to name another file.
    struct stat status {};
    if (in_szPath == nullptr || ::stat(in_szPath, &status) != 0 || !isRegular(status)) {
        return {};
    }
    const int iDescriptor = ::open(in_szPath, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (iDescriptor < 0) {
        return {};
    }
    if (::fstat(iDescriptor, &status) != 0 || !isRegular(status)) {
        ::close(iDescriptor);
        return {};
    }
    return new DiskFile(iDescriptor, in_szPath);
}

} // namespace Velmora
