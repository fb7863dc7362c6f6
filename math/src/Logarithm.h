#pragma once

#include <cstdint>
#include <cstring>
#include <limits>

namespace Velmora::Math {

/// The natural logarithm of a positive, finite double, within 0.7 units in the last place. Only
/// additions, multiplications and one division, in fixed order: the same bits everywhere.
///
/// With x = 2^k * (1 + f), 1 + f between sqrt(1/2) and sqrt(2), and s = f / (2 + f):
/// ln(1 + f) = 2 artanh(s) = 2 s + s R, R = 2/3 s^2 + 2/5 s^4 + 2/7 s^6 + ...
/// Since 2 s = f - s f and s f = f^2/2 - s f^2/2, ln(1 + f) = f - f^2/2 + s (f^2/2 + R). The two
/// large terms are kept with what their difference loses in rounding, so that only the small last
/// term adds an error of its own. With |s| < 0.1716 the terms from s^22 on are below the rounding.
inline double naturalLogarithm(double in_dValue) {
    // ln 2 in two parts. The first has trailing zero bits enough for its product with k to be
    // exact.
    constexpr double ln2High = 0x1.62e42feep-1;
    constexpr double ln2Low = 0x1.a39ef35793c76p-33;
    constexpr std::uint64_t mantissaBits = 52;
    constexpr std::uint64_t mantissaMask = (std::uint64_t{1} << mantissaBits) - 1;
    constexpr std::uint64_t sqrtHalf = 0x3fe6a09e667f3bcd;

    std::int64_t exponent = 0;
    if (in_dValue < std::numeric_limits<double>::min()) {
        in_dValue *= 0x1p54;
        exponent = -54;
    }
    std::uint64_t bits = 0;
    std::memcpy(&bits, &in_dValue, sizeof(bits));
    // Counting from sqrt(1/2) puts the mantissa's range where it is wanted.
    const std::uint64_t shifted = bits - sqrtHalf;
    exponent += static_cast<std::int64_t>(shifted) >> mantissaBits;
    bits = (shifted & mantissaMask) + sqrtHalf;
    double mantissa = 0.0;
    std::memcpy(&mantissa, &bits, sizeof(mantissa));

    const double f = mantissa - 1.0;
    const double s = f / (2.0 + f);
    const double z = s * s;
    const double z2 = z * z;
    const double z4 = z2 * z2;
    const double series = ((2.0 / 3 + z * (2.0 / 5)) + z2 * (2.0 / 7 + z * (2.0 / 9))) +
                          z4 * (((2.0 / 11 + z * (2.0 / 13)) + z2 * (2.0 / 15 + z * (2.0 / 17))) +
                                z4 * (2.0 / 19 + z * (2.0 / 21)));
    const double r = z * series;
    const double halfSquare = 0.5 * f * f;
    // Half as many bits of f have an exact square.
    std::memcpy(&bits, &f, sizeof(bits));
    bits &= ~std::uint64_t{0x7ffffff};
    double fHigh = 0.0;
    std::memcpy(&fHigh, &bits, sizeof(fHigh));
    const double halfSquareHigh = 0.5 * fHigh * fHigh;
    const double halfSquareLow = 0.5 * (f - fHigh) * (f + fHigh);
    const double large = f - halfSquareHigh;
    const double lostByLarge = (f - large) - halfSquareHigh;

    const auto k = static_cast<double>(exponent);
    const double power = k * ln2High;
    const double sum = power + large;
    // The power is 0 or the larger term.
    const double lostBySum = k == 0.0 ? 0.0 : (power - sum) + large;
    return sum + (lostBySum + (lostByLarge - halfSquareLow + (s * (halfSquare + r) + k * ln2Low)));
}

} // namespace Velmora::Math
