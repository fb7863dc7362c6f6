#include "NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace Vxpr {

char* writeNumber(char* in_pBuffer, double in_dValue) {
    if (std::isnan(in_dValue)) {
        constexpr std::string_view NOT_A_NUMBER = "nan";
        return std::copy(NOT_A_NUMBER.begin(), NOT_A_NUMBER.end(), in_pBuffer);
    }
    return std::to_chars(in_pBuffer, in_pBuffer + MAX_NUMBER_TEXT, in_dValue).ptr;
}

std::string toText(double in_dValue) {
    char buffer[MAX_NUMBER_TEXT];
    return {buffer, writeNumber(buffer, in_dValue)};
}

std::optional<double> readNumber(std::string_view in_strText) {
    const char* pBegin = in_strText.data();
    const char* pEnd = pBegin + in_strText.size();
    if (in_strText.size() > 1 && pBegin[0] == '+' && pBegin[1] != '-') {
        ++pBegin;
    }
    double dValue = 0.0;
    const auto result = std::from_chars(pBegin, pEnd, dValue);
    if (result.ec != std::errc() || result.ptr != pEnd) {
        return std::nullopt;
    }
    return dValue;
}

std::optional<std::uint64_t> readWholeNumber(std::string_view in_strText) {
    const char* pEnd = in_strText.data() + in_strText.size();
    std::uint64_t uiValue = 0;
    const auto result = std::from_chars(in_strText.data(), pEnd, uiValue);
    if (result.ec != std::errc() || result.ptr != pEnd) {
        return std::nullopt;
    }
    return uiValue;
}

} // namespace Vxpr
