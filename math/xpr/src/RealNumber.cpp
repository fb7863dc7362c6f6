#include "RealNumber.h"

#include <cstdlib>
#include <string>

#include <clocale>

namespace Velmora::Math::Xpr {

namespace {

bool isDigit(char in_c) {
    return in_c >= '0' && in_c <= '9';
}

const char* skipSign(const char* in_p, const char* in_pLast) {
    return in_p != in_pLast && (*in_p == '+' || *in_p == '-') ? in_p + 1 : in_p;
}

const char* skipDigits(const char* in_p, const char* in_pLast) {
    while (in_p != in_pLast && isDigit(*in_p)) {
        ++in_p;
    }
    return in_p;
}

// The process's locale may write a comma for the point.
locale_t plainLocale() {
    static const locale_t s_locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return s_locale;
}

} // namespace

RealNumber RealNumber::match(const char* in_pFirst, const char* in_pLast) {
    const char* pWhole = skipSign(in_pFirst, in_pLast);
    const char* p = skipDigits(pWhole, in_pLast);
    bool bDigits = p != pWhole;
    RealNumber number;
    if (p != in_pLast && *p == '.') {
        const char* pFraction = p + 1;
        const char* pEnd = skipDigits(pFraction, in_pLast);
        bDigits = bDigits || pEnd != pFraction;
        number.m_bPointOrExponent = true;
        p = pEnd;
    }
    if (!bDigits) {
        return RealNumber();
    }
    if (p != in_pLast && (*p == 'e' || *p == 'E')) {
        const char* pExponent = skipSign(p + 1, in_pLast);
        p = skipDigits(pExponent, in_pLast);
        if (p == pExponent) {
            return RealNumber();
        }
        number.m_bPointOrExponent = true;
    }
    number.m_uiLength = static_cast<std::size_t>(p - in_pFirst);
    return number;
}

double RealNumber::value(const char* in_pFirst, const char* in_pLast) {
    return strtod_l(std::string(in_pFirst, in_pLast).c_str(), nullptr, plainLocale());
}

} // namespace Velmora::Math::Xpr
