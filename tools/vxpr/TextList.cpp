#include "TextList.h"

namespace Vxpr {

std::string join(const std::vector<std::string>& in_vTexts, const std::string& in_strSeparator) {
    std::string strJoined;
    for (const std::string& strText : in_vTexts) {
        if (&strText != &in_vTexts.front()) {
            strJoined += in_strSeparator;
        }
        strJoined += strText;
    }
    return strJoined;
}

std::string count(std::size_t in_uiNumber, const std::string& in_strWord) {
    return std::to_string(in_uiNumber) + " " + in_strWord + (in_uiNumber == 1 ? "" : "s");
}

} // namespace Vxpr
