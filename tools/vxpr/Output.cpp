#include "Output.h"

#include "Failure.h"
#include "NumberText.h"
#include "TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace Vxpr {

namespace {

constexpr std::size_t BUFFER_SIZE = 65536;

std::string resolveLinks(const std::string& in_strPath) {
    const std::unique_ptr<char, decltype(&std::free)> pResolved(
        realpath(in_strPath.c_str(), nullptr), &std::free);
    return pResolved ? pResolved.get() : in_strPath;
}

mode_t getDefaultMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

Failure failToOpen(const std::string& in_strPath, int in_iError) {
    return Failure::ofData("can't write '" + in_strPath + "': " + std::strerror(in_iError) +
                           "; choose another place with -o");
}

} // namespace

bool isSameFile(const std::string& in_strLeft, const std::string& in_strRight) {
    struct stat left {};
    struct stat right {};
    return stat(in_strLeft.c_str(), &left) == 0 && stat(in_strRight.c_str(), &right) == 0 &&
           S_ISREG(left.st_mode) && left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

Output::Output(const std::string& in_strPath)
    : m_strPath(in_strPath), m_strBuffer(BUFFER_SIZE, '\0') {
    if (in_strPath == "-") {
        m_bStandardOutput = true;
        m_iFile = STDOUT_FILENO;
        return;
    }
    struct stat status {};
    const bool bExists = stat(in_strPath.c_str(), &status) == 0;
    if (bExists && S_ISDIR(status.st_mode)) {
        throw Failure::ofData("can't write '" + in_strPath +
                              "': it is a directory; name a file in it with -o");
    }
    if (bExists && !S_ISREG(status.st_mode)) {
        // A device or a named pipe is written to; replacing it by a file would destroy it.
        m_iFile = open(in_strPath.c_str(), O_WRONLY | O_CLOEXEC);
        if (m_iFile < 0) {
            throw failToOpen(in_strPath, errno);
        }
        return;
    }
    if (bExists && faccessat(AT_FDCWD, in_strPath.c_str(), W_OK, AT_EACCESS) != 0) {
        throw failToOpen(in_strPath, errno);
    }
    openBeside(bExists ? resolveLinks(in_strPath) : in_strPath,
               bExists ? status.st_mode & 07777 : getDefaultMode());
}

void Output::openBeside(const std::string& in_strTarget, unsigned in_uiMode) {
    const std::size_t uiSlash = in_strTarget.rfind('/');
    const std::size_t uiName = uiSlash == std::string::npos ? 0 : uiSlash + 1;
    // The name is cut so that the temporary one isn't longer than a name may be.
    std::string strTemporary = in_strTarget.substr(0, uiName) + "." +
                               in_strTarget.substr(uiName, NAME_MAX - 16) + ".XXXXXX";
    const TemporaryFile::Pause pause;
    m_iFile = mkostemp(strTemporary.data(), O_CLOEXEC);
    if (m_iFile < 0) {
        throw failToOpen(m_strPath, errno);
    }
    m_strTarget = in_strTarget;
    m_strTemporary = strTemporary;
    TemporaryFile::watch(m_strTemporary);
    fchmod(m_iFile, static_cast<mode_t>(in_uiMode));
}

Output::~Output() {
    if (m_iFile >= 0 && !m_bStandardOutput) {
        close(m_iFile);
    }
    if (!m_strTemporary.empty()) {
        unlink(m_strTemporary.c_str());
        TemporaryFile::forget();
    }
}

void Output::makeRoom(std::size_t in_uiBytes) {
    if (m_uiUsed + in_uiBytes > m_strBuffer.size()) {
        flush();
    }
}

void Output::append(std::string_view in_strText) {
    makeRoom(in_strText.size());
    if (in_strText.size() > m_strBuffer.size()) {
        write(in_strText.data(), in_strText.size());
        return;
    }
    std::memcpy(m_strBuffer.data() + m_uiUsed, in_strText.data(), in_strText.size());
    m_uiUsed += in_strText.size();
}

void Output::append(char in_cCharacter) {
    makeRoom(1);
    m_strBuffer[m_uiUsed++] = in_cCharacter;
}

void Output::appendNumber(double in_dValue) {
    makeRoom(MAX_NUMBER_TEXT);
    char* pBegin = m_strBuffer.data() + m_uiUsed;
    m_uiUsed += static_cast<std::size_t>(writeNumber(pBegin, in_dValue) - pBegin);
}

void Output::flush() {
    const std::size_t uiSize = m_uiUsed;
    m_uiUsed = 0;
    write(m_strBuffer.data(), uiSize);
}

void Output::write(const char* in_pData, std::size_t in_uiSize) {
    while (in_uiSize > 0) {
        const ssize_t iWritten = ::write(m_iFile, in_pData, in_uiSize);
        if (iWritten < 0 && errno == EINTR) {
            continue;
        }
        if (iWritten < 0) {
            failToWrite(errno);
        }
        in_pData += iWritten;
        in_uiSize -= static_cast<std::size_t>(iWritten);
    }
}

void Output::failToWrite(int in_iError) const {
    if (in_iError == EPIPE) {
        throw BrokenPipe();
    }
    const std::string strName = m_bStandardOutput ? "the standard output" : "'" + m_strPath + "'";
    // Not every command has -o.
    std::string strAdvice =
        m_bStandardOutput ? "send it to another place" : "choose another place with -o";
    if (in_iError == ENOSPC || in_iError == EDQUOT) {
        strAdvice.insert(0, "free some space or ");
    }
    throw Failure::ofData("can't write " + strName + ": " + std::strerror(in_iError) + "; " +
                          strAdvice);
}

void Output::overwrite(std::uint64_t in_uiOffset, std::string_view in_strText) {
    flush();
    if (pwrite(m_iFile, in_strText.data(), in_strText.size(), static_cast<off_t>(in_uiOffset)) !=
        static_cast<ssize_t>(in_strText.size())) {
        failToWrite(errno);
    }
}

void Output::commit() {
    flush();
    if (m_bStandardOutput) {
        return;
    }
    // Some file systems notice a full disk only here.
    if (isFile() && fsync(m_iFile) != 0) {
        failToWrite(errno);
    }
    const int iFile = m_iFile;
    m_iFile = -1;
    if (close(iFile) != 0) {
        failToWrite(errno);
    }
    if (!isFile()) {
        return;
    }
    if (std::rename(m_strTemporary.c_str(), m_strTarget.c_str()) != 0) {
        failToWrite(errno);
    }
    m_strTemporary.clear();
    TemporaryFile::forget();
}

} // namespace Vxpr
