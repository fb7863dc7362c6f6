#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Velmora::Math {

/// The largest and the smallest value of a range, found among whole numbers.
///
/// The bits of a double, read as a whole number, are in the order of the values, but for the
/// negative ones, which are the wrong way round; turned about, negative zero is next below zero.
/// What isn't a number lies above all values or below all. The extremes of whole numbers don't
/// depend on the order in which they are found, so that a compiler may keep them in as many vector
/// registers as it likes.
[[gnu::always_inline]] inline std::int64_t orderOf(double in_dValue) {
    std::int64_t bits;
    std::memcpy(&bits, &in_dValue, sizeof(bits));
    return bits ^ ((bits >> 63) & std::numeric_limits<std::int64_t>::max());
}

[[gnu::always_inline]] inline double valueOf(std::int64_t in_iOrder) {
    const std::int64_t bits =
        in_iOrder ^ ((in_iOrder >> 63) & std::numeric_limits<std::int64_t>::max());
    double value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
}

struct Extremes {
    double smallest;
    double largest;
};

/// Both are the first value that isn't a number, if there is one. The range isn't empty.
[[gnu::always_inline]] inline Extremes extremes(const double* in_pFirst, const double* in_pLast) {
    std::int64_t smallest = std::numeric_limits<std::int64_t>::max();
    std::int64_t largest = std::numeric_limits<std::int64_t>::min();
    for (const double* p = in_pFirst; p != in_pLast; ++p) {
        const std::int64_t order = orderOf(*p);
        smallest = order < smallest ? order : smallest;
        largest = order > largest ? order : largest;
    }
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (largest > orderOf(infinity) || smallest < orderOf(-infinity)) {
        const double* const pNotNumber =
            std::find_if(in_pFirst, in_pLast, [](double value) { return value != value; });
        return {*pNotNumber, *pNotNumber};
    }
    return {valueOf(smallest), valueOf(largest)};
}

} // namespace Velmora::Math
