#include "scripts/ScriptCase.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <regex>
#include <sstream>
#include <stdexcept>

namespace Velmora::Testing {

namespace {

std::string trimmed(const std::string& in_strText) {
    const auto uiFirst = in_strText.find_first_not_of(" \t\r");
    if (uiFirst == std::string::npos) {
        return std::string();
    }
    return in_strText.substr(uiFirst, in_strText.find_last_not_of(" \t\r") + 1 - uiFirst);
}

/// The pieces of a text between delimiters, trimmed.
std::vector<std::string> split(const std::string& in_strText, const std::string& in_strDelimiter) {
    std::vector<std::string> vPieces;
    std::size_t uiStart = 0;
    while (true) {
        const std::size_t uiEnd = in_strText.find(in_strDelimiter, uiStart);
        vPieces.push_back(trimmed(in_strText.substr(uiStart, uiEnd - uiStart)));
        if (uiEnd == std::string::npos) {
            return vPieces;
        }
        uiStart = uiEnd + in_strDelimiter.size();
    }
}

Math::DoubleVector parseVector(const std::string& in_strText) {
    if (in_strText.size() < 2 || in_strText.front() != '[' || in_strText.back() != ']') {
        throw std::runtime_error("not a vector: " + in_strText);
    }
    Math::DoubleVector vValue;
    std::istringstream stream(in_strText.substr(1, in_strText.size() - 2));
    for (std::string strItem; stream >> strItem;) {
        std::size_t uiUsed = 0;
        vValue.push_back(std::stod(strItem, &uiUsed));
        if (uiUsed != strItem.size()) {
            throw std::runtime_error("not a number: " + strItem);
        }
    }
    return vValue;
}

ScriptCase::Value parseValue(const std::string& in_strText) {
    return in_strText == "fails" ? ScriptCase::Value() : ScriptCase::Value(parseVector(in_strText));
}

std::string readFile(const std::string& in_strPath) {
    std::ifstream file(in_strPath, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

} // namespace

ScriptCase ScriptCase::read(const std::string& in_strPath) {
    const std::filesystem::path path(in_strPath);
    ScriptCase scriptCase;
    scriptCase.m_strStem = path.stem().string();
    scriptCase.m_strDirectory = path.parent_path().string();
    scriptCase.m_strText = readFile(in_strPath);
    const std::regex pattern("^//\\s*(frame|expect|error|fails|assertion|evaluation error|"
                             "evaluation assertion|sealed evaluation error):(.*)$");
    bool bExpects = false;
    std::istringstream lines(scriptCase.m_strText);
    for (std::string strLine; std::getline(lines, strLine);) {
        std::smatch match;
        const std::string strTrimmed(trimmed(strLine));
        if (std::regex_match(strTrimmed, match, pattern)) {
            scriptCase.addLine(match[1], trimmed(match[2]));
            bExpects = bExpects || match[1] != "frame";
        }
    }
    if (!bExpects) {
        throw std::runtime_error("the script expects nothing");
    }
    return scriptCase;
}

void ScriptCase::addLine(const std::string& in_strKey, const std::string& in_strText) {
    if (in_strKey == "frame") {
        Frame frame;
        for (const std::string& strInput : split(in_strText, ",")) {
            const auto vParts = split(strInput, "=");
            frame.emplace_back(qualified(vParts.at(0)), parseVector(vParts.at(1)));
        }
        m_vFrames.push_back(std::move(frame));
    } else if (in_strKey == "expect") {
        Expectation expectation;
        const std::size_t uiSign = in_strText.find_first_of("=~");
        if (uiSign == std::string::npos) {
            throw std::runtime_error("nothing expected: " + in_strText);
        }
        expectation.m_strName = qualified(trimmed(in_strText.substr(0, uiSign)));
        expectation.m_bExact = in_strText[uiSign] == '=';
        for (const std::string& strValue : split(in_strText.substr(uiSign + 1), " then ")) {
            expectation.m_vValues.push_back(parseValue(strValue));
        }
        m_vExpectations.push_back(std::move(expectation));
    } else if (in_strKey == "fails") {
        const std::vector<std::string> vStages{"load", "link", "configure"};
        const auto iteStage = std::find(vStages.begin(), vStages.end(), in_strText);
        if (iteStage == vStages.end()) {
            throw std::runtime_error("no stage: " + in_strText);
        }
        m_FailingStage = static_cast<Stage>(std::distance(vStages.begin(), iteStage) + 1);
    } else {
        auto& vLines = in_strKey == "error"                  ? m_vErrors
                       : in_strKey == "assertion"            ? m_vAssertions
                       : in_strKey == "evaluation error"     ? m_vEvaluationErrors
                       : in_strKey == "evaluation assertion" ? m_vEvaluationAssertions
                                                             : m_vSealedErrors;
        vLines.push_back(in_strText);
    }
}

std::string ScriptCase::qualified(const std::string& in_strName) const {
    return in_strName.find('.') == std::string::npos ? m_strStem + "." + in_strName : in_strName;
}

std::string ScriptCase::normalised(const std::string& in_strMessage) const {
    static const std::regex s_pattern("<file_position fileName=\"([^\"]*)\" line=\"(\\d+)\" "
                                      "column=\"(\\d+)\"/>");
    static const std::regex s_identifier("&[0-9]+");
    static const std::regex s_uuid("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}");
    std::string strMessage(std::regex_replace(in_strMessage, s_identifier, "&ID"));
    strMessage = std::regex_replace(strMessage, s_uuid, "UUID");
    const std::size_t uiDirectory = strMessage.find(m_strDirectory + "/");
    if (uiDirectory != std::string::npos) {
        strMessage.erase(uiDirectory, m_strDirectory.size() + 1);
    }
    std::smatch match;
    if (!std::regex_search(strMessage, match, s_pattern)) {
        return strMessage;
    }
    std::string strPlace = match[2].str() + ":" + match[3].str() + " ";
    if (match[1] != m_strStem) {
        strPlace = match[1].str() + ":" + strPlace;
    }
    std::string strBefore(match.prefix());
    std::string strBehind(match.suffix());
    if (strBefore.empty() && !strBehind.empty() && strBehind.front() == ':') {
        strBehind.erase(0, 1);
    }
    return trimmed(strPlace + strBefore + strBehind);
}

} // namespace Velmora::Testing
