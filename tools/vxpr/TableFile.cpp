#include "TableFile.h"

#include "Failure.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace Vxpr {

TableFile::TableFile(const std::string& in_strPath, const std::string& in_strName)
    : m_strName(in_strName) {
    m_pFile = in_strPath == "-" ? stdin : std::fopen(in_strPath.c_str(), "re");
    if (m_pFile == nullptr) {
        throw Failure::ofData("can't open the table " + m_strName + ": " + std::strerror(errno) +
                              "; check the path after --input");
    }
    struct stat status {};
    if (fstat(fileno(m_pFile), &status) == 0 && S_ISDIR(status.st_mode)) {
        std::fclose(m_pFile);
        throw Failure::ofData(m_strName + " is a directory; name the table in it after --input");
    }
}

TableFile::~TableFile() {
    if (m_pFile != stdin) {
        std::fclose(m_pFile);
    }
}

void TableFile::checkError() const {
    if (std::ferror(m_pFile) != 0) {
        throw Failure::ofData("can't read the table " + m_strName + ": " + std::strerror(errno));
    }
}

bool TableFile::readLine(std::string& out_strLine) {
    out_strLine.clear();
    for (int iCharacter = getc_unlocked(m_pFile); iCharacter != EOF;
         iCharacter = getc_unlocked(m_pFile)) {
        if (iCharacter == '\r') {
            const int iNext = getc_unlocked(m_pFile);
            if (iNext != '\n' && iNext != EOF) {
                std::ungetc(iNext, m_pFile);
            }
            return true;
        }
        if (iCharacter == '\n') {
            return true;
        }
        out_strLine.push_back(static_cast<char>(iCharacter));
    }
    checkError();
    return !out_strLine.empty();
}

bool TableFile::readBytes(void* in_pData, std::size_t in_uiSize) {
    const std::size_t uiRead = std::fread(in_pData, 1, in_uiSize, m_pFile);
    checkError();
    return uiRead == in_uiSize;
}

} // namespace Vxpr
