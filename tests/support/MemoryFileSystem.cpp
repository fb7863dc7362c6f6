#include "support/MemoryFileSystem.h"

#include <algorithm>
#include <utility>

namespace Velmora::Testing {

class MemoryFileSystem::File : public VirtualFile {
public:
    File(std::string in_strPath, std::string in_strText, std::shared_ptr<Record> in_pRecord)
        : m_strPath(std::move(in_strPath)),
          m_strText(std::move(in_strText)),
          m_pRecord(std::move(in_pRecord)) {
        ++m_pRecord->m_uiOpenFiles;
    }

    ~File() override { --m_pRecord->m_uiOpenFiles; }

    long read(char* out_pBuffer, std::size_t in_uiCount) override {
        m_pRecord->m_uiLargestRead = std::max(m_pRecord->m_uiLargestRead, in_uiCount);
        const std::size_t uiCount = m_strText.copy(out_pBuffer, in_uiCount, m_uiPosition);
        m_uiPosition += uiCount;
        return static_cast<long>(uiCount);
    }

    const char* getPath() const override { return m_strPath.c_str(); }

private:
    std::string m_strPath;
    std::string m_strText;
    std::size_t m_uiPosition = 0;
    std::shared_ptr<Record> m_pRecord;
};

MemoryFileSystem::MemoryFileSystem(Files in_mapFiles)
    : m_mapFiles(std::move(in_mapFiles)), m_pRecord(std::make_shared<Record>()) {}

TSHandle<VirtualFile> MemoryFileSystem::open(const char* in_szPath) {
    m_pRecord->m_vAskedPaths.emplace_back(in_szPath);
    const auto iteFile = m_mapFiles.find(in_szPath);
    if (iteFile == m_mapFiles.end()) {
        return TSHandle<VirtualFile>();
    }
    return TSHandle<VirtualFile>(new File(iteFile->first, iteFile->second, m_pRecord));
}

void MemoryFileSystem::setFile(const std::string& in_strPath, const std::string& in_strText) {
    m_mapFiles[in_strPath] = in_strText;
}

} // namespace Velmora::Testing
