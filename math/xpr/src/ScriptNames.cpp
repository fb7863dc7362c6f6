#include "ScriptNames.h"

#include <cctype>

namespace Velmora::Math::Xpr {

namespace {

bool isLetter(char in_c) {
    return in_c == '_' || std::isalpha(static_cast<unsigned char>(in_c)) != 0;
}

bool isLetterOrDigit(char in_c) {
    return in_c == '_' || std::isalnum(static_cast<unsigned char>(in_c)) != 0;
}

const char* skipBlanks(const char* in_pText, const char* in_pEnd) {
    while (in_pText != in_pEnd &&
           (*in_pText == ' ' || *in_pText == '\t' || *in_pText == '\v' || *in_pText == '\f')) {
        ++in_pText;
    }
    return in_pText;
}

/// A comment, or the continuation of a line.
bool mayBeginComment(const char* in_pText, const char* in_pEnd) {
    if (*in_pText == '/') {
        return in_pText + 1 != in_pEnd && (in_pText[1] == '/' || in_pText[1] == '*');
    }
    return *in_pText == '#' || *in_pText == '\\';
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
            return in_pText != in_pEnd && mayBeginComment(in_pText, in_pEnd);
        }
        in_pText = skipBlanks(pNameEnd, in_pEnd);
        if (in_pText == in_pEnd) {
            return false;
        }
        if (*in_pText != '.') {
            return *in_pText == '(' || *in_pText == '<' || mayBeginComment(in_pText, in_pEnd);
        }
        in_pText = skipBlanks(in_pText + 1, in_pEnd);
    }
}

} // namespace Velmora::Math::Xpr
