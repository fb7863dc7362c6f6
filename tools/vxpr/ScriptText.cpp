#include "ScriptText.h"

#include "Failure.h"

#include <velmora/math/xpr/ScriptParser.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace Vxpr {

namespace {

constexpr std::size_t TAB_STOP = 4;

/// What the engine refuses needn't be read first; it may be a device that has no end.
constexpr std::size_t MOST_BYTES = Velmora::Math::Xpr::ScriptParser::MaxScriptSize;

bool isLineEnd(char in_cCharacter) {
    return in_cCharacter == '\n' || in_cCharacter == '\r';
}

/// The length of the line end at that place.
std::size_t measureLineEnd(const std::string& in_strText, std::size_t in_uiOffset) {
    const std::size_t uiNext = in_uiOffset + 1;
    const bool bPair = uiNext < in_strText.size() && isLineEnd(in_strText[uiNext]) &&
                       in_strText[uiNext] != in_strText[in_uiOffset];
    return bPair ? 2 : 1;
}

std::size_t advance(std::size_t in_uiColumn, char in_cCharacter) {
    return in_cCharacter == '\t' ? in_uiColumn + TAB_STOP - (in_uiColumn - 1) % TAB_STOP
                                 : in_uiColumn + 1;
}

/// The name that a script has in qualified names: its file's without directory and last ending.
std::string takeStem(const std::string& in_strPath) {
    const std::size_t uiSlash = in_strPath.rfind('/');
    const std::string strFile =
        uiSlash == std::string::npos ? in_strPath : in_strPath.substr(uiSlash + 1);
    const std::size_t uiPoint = strFile.rfind('.');
    return uiPoint == std::string::npos || uiPoint == 0 ? strFile : strFile.substr(0, uiPoint);
}

std::string readAll(std::FILE* in_pFile, const std::string& in_strPath) {
    std::string strText;
    char buffer[16384];
    std::size_t uiRead = 0;
    while ((uiRead = std::fread(buffer, 1, sizeof buffer, in_pFile)) > 0) {
        strText.append(buffer, uiRead);
        if (strText.size() > MOST_BYTES) {
            throw Failure::ofData("the script '" + in_strPath + "' has more than " +
                                  std::to_string(MOST_BYTES) +
                                  " bytes; divide it into several that use each other");
        }
    }
    if (std::ferror(in_pFile) != 0) {
        throw Failure::ofData("can't read the script '" + in_strPath +
                              "': " + std::strerror(errno));
    }
    return strText;
}

std::string readFile(const std::string& in_strPath) {
    if (in_strPath == "-") {
        return readAll(stdin, in_strPath);
    }
    struct stat status {};
    if (stat(in_strPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        throw Failure::ofData("'" + in_strPath +
                              "' is a directory; name a script in it, such as '" + in_strPath +
                              "/level.xpr'");
    }
    std::FILE* pFile = std::fopen(in_strPath.c_str(), "re");
    if (pFile == nullptr) {
        throw Failure::ofData("can't open the script '" + in_strPath +
                              "': " + std::strerror(errno) +
                              (errno == EACCES ? "; give the file's readers the right to read it"
                                               : "; check the path, with its ending .xpr"));
    }
    struct Closer {
        std::FILE* m_pFile;
        ~Closer() { std::fclose(m_pFile); }
    } closer{pFile};
    return readAll(pFile, in_strPath);
}

} // namespace

ScriptText::ScriptText(const std::string& in_strPath, const std::string& in_strName,
                       const std::string& in_strText)
    : m_strPath(in_strPath), m_strName(in_strName), m_strText(in_strText) {
    findLines();
}

ScriptText ScriptText::read(const std::string& in_strPath) {
    const bool bStandardInput = in_strPath == "-";
    return {bStandardInput ? "stdin" : in_strPath, bStandardInput ? "stdin" : takeStem(in_strPath),
            readFile(in_strPath)};
}

void ScriptText::findLines() {
    m_vLineStarts.assign(1, 0);
    for (std::size_t uiOffset = 0; uiOffset < m_strText.size();) {
        if (isLineEnd(m_strText[uiOffset])) {
            uiOffset += measureLineEnd(m_strText, uiOffset);
            m_vLineStarts.push_back(uiOffset);
        } else {
            ++uiOffset;
        }
    }
}

std::string_view ScriptText::getLine(std::size_t in_uiLine) const {
    if (in_uiLine == 0 || in_uiLine > m_vLineStarts.size()) {
        return {};
    }
    const std::size_t uiBegin = m_vLineStarts[in_uiLine - 1];
    const std::size_t uiEnd = std::min(m_strText.find_first_of("\r\n", uiBegin), m_strText.size());
    return std::string_view(m_strText).substr(uiBegin, uiEnd - uiBegin);
}

ScriptText::Position ScriptText::getPosition(std::size_t in_uiOffset) const {
    const auto iteLine = std::upper_bound(m_vLineStarts.begin(), m_vLineStarts.end(), in_uiOffset);
    Position position;
    position.m_uiLine = static_cast<std::size_t>(iteLine - m_vLineStarts.begin());
    for (std::size_t uiOffset = *(iteLine - 1); uiOffset < in_uiOffset; ++uiOffset) {
        position.m_uiColumn = advance(position.m_uiColumn, m_strText[uiOffset]);
    }
    return position;
}

std::size_t ScriptText::getOffset(const Position& in_Position) const {
    if (in_Position.m_uiLine == 0 || in_Position.m_uiLine > m_vLineStarts.size()) {
        return m_strText.size();
    }
    std::size_t uiOffset = m_vLineStarts[in_Position.m_uiLine - 1];
    std::size_t uiColumn = 1;
    while (uiColumn < in_Position.m_uiColumn && uiOffset < m_strText.size() &&
           !isLineEnd(m_strText[uiOffset])) {
        uiColumn = advance(uiColumn, m_strText[uiOffset++]);
    }
    return uiOffset;
}

ScriptText ScriptText::blankOut(std::size_t in_uiBegin, std::size_t in_uiEnd) const {
    std::string strText = m_strText;
    for (std::size_t uiOffset = in_uiBegin; uiOffset < in_uiEnd && uiOffset < strText.size();
         ++uiOffset) {
        if (!isLineEnd(strText[uiOffset]) && strText[uiOffset] != '\t') {
            strText[uiOffset] = ' ';
        }
    }
    return {m_strPath, m_strName, strText};
}

} // namespace Vxpr
