#include "ScriptNames.h"

#include <algorithm>
#include <cctype>
#include <cstddef>

namespace Velmora::Math::Xpr {

namespace {

bool isLetter(char in_c) {
    return in_c == '_' || std::isalpha(static_cast<unsigned char>(in_c)) != 0;
}

bool isLetterOrDigit(char in_c) {
    return in_c == '_' || std::isalnum(static_cast<unsigned char>(in_c)) != 0;
}

bool isBlank(char in_c) {
    return in_c == ' ' || in_c == '\t' || in_c == '\v' || in_c == '\f';
}

/// Goes over a few blanks: who looks ahead here doesn't remember how far many of them go.
const char* skipBlanks(const char* in_pText, const char* in_pEnd) {
    constexpr std::ptrdiff_t MaxBlanks = 64;
    const char* const pLimit = in_pText + std::min(in_pEnd - in_pText, MaxBlanks);
    return std::find_if_not(in_pText, pLimit, isBlank);
}

/// More blanks, a comment, or the continuation of a line.
bool mayBeginGap(const char* in_pText, const char* in_pEnd) {
    if (*in_pText == '/') {
        return in_pText + 1 != in_pEnd && (in_pText[1] == '/' || in_pText[1] == '*');
    }
    return *in_pText == '#' || *in_pText == '\\' || isBlank(*in_pText);
}

} // namespace

const char* nameEnd(const char* in_pText, const char* in_pEnd) {
    if (in_pText == in_pEnd || !isLetter(*in_pText)) {
        return in_pText;
    }
    do {
        ++in_pText;
    } while (in_pText != in_pEnd && isLetterOrDigit(*in_pText));
    return in_pText;
}

bool mayBeginCall(const char* in_pText, const char* in_pEnd) {
    while (true) {
        const char* const pNameEnd = nameEnd(in_pText, in_pEnd);
        if (pNameEnd == in_pText) {
            return in_pText != in_pEnd && mayBeginGap(in_pText, in_pEnd);
        }
        in_pText = skipBlanks(pNameEnd, in_pEnd);
        if (in_pText == in_pEnd) {
            return false;
        }
        if (*in_pText != '.') {
            return *in_pText == '(' || *in_pText == '<' || mayBeginGap(in_pText, in_pEnd);
        }
        in_pText = skipBlanks(in_pText + 1, in_pEnd);
    }
}

} // namespace Velmora::Math::Xpr
