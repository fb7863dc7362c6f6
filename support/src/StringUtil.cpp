#include <velmora/StringUtil.h>

#include <algorithm>

namespace Velmora {

void strTokenize(const std::string& in_strText, StringVector& out_vItems, char in_cDelimiter) {
    out_vItems.clear();
    std::size_t uiStart = 0;
    while (uiStart < in_strText.size()) {
        const std::size_t uiEnd =
            std::min(in_strText.find(in_cDelimiter, uiStart), in_strText.size());
        if (uiEnd != uiStart) {
            out_vItems.push_back(in_strText.substr(uiStart, uiEnd - uiStart));
        }
        uiStart = uiEnd + 1;
    }
}

std::string& strFindAndReplace(const std::string& in_strFrom, const std::string& in_strTo,
                               std::string& inout_strText) {
    if (in_strFrom.empty()) {
        return inout_strText;
    }
    std::string strResult;
    std::size_t uiStart = 0;
    for (;;) {
        const std::size_t uiFound = inout_strText.find(in_strFrom, uiStart);
        strResult.append(inout_strText, uiStart, uiFound - uiStart);
        if (uiFound == std::string::npos) {
            break;
        }
        strResult += in_strTo;
        uiStart = uiFound + in_strFrom.size();
    }
    inout_strText = std::move(strResult);
    return inout_strText;
}

std::string& strToLower(std::string& inout_strText) {
    for (char& c : inout_strText) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return inout_strText;
}

std::string strToLower(std::string&& in_strText) {
    std::string strText(std::move(in_strText));
    strToLower(strText);
    return strText;
}

} // namespace Velmora
