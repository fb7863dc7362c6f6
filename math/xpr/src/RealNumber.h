#pragma once

#include <cstddef>

namespace Velmora::Math::Xpr {

/// The spelling of real numbers in scripts: an optional sign, digits, an optional point and digits,
/// an optional exponent. There are digits ahead of the point or behind it.
struct RealNumber {
    /// How many characters at the start of the text are a number, 0 if none: also where the letter
    /// of an exponent has no digits behind it.
    std::size_t m_uiLength = 0;
    /// Whether the number has a point or an exponent.
    bool m_bPointOrExponent = false;

    static RealNumber match(const char* in_pFirst, const char* in_pLast);

    /// The double nearest to the number, infinite beyond the largest. The text is the number.
    static double value(const char* in_pFirst, const char* in_pLast);
};

} // namespace Velmora::Math::Xpr
