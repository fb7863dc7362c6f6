#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "Lanes.h"

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
[[gnu::always_inline]] inline Extremes extremesInOrder(const double* in_pFirst,
                                                       const double* in_pLast) {
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

enum class Extreme { Smallest, Largest };

template <Extreme which, std::size_t Bytes>
[[gnu::always_inline]] inline void moveTo(const Lanes<Bytes>& in_values,
                                          Lanes<Bytes>& inout_extreme) {
    if (which == Extreme::Largest) {
        inout_extreme.raiseTo(in_values);
    } else {
        inout_extreme.lowerTo(in_values);
    }
}

template <Extreme which, std::size_t Bytes>
[[gnu::always_inline]] inline void take(const double* in_pValues, Lanes<Bytes>& inout_extreme,
                                        Lanes<Bytes>& inout_zero) {
    const Lanes<Bytes> values(in_pValues);
    moveTo<which>(values, inout_extreme);
    inout_zero.multiply(values);
}

/// One of the two, in registers of that many bytes.
///
/// Doubles are compared as such while all are finite and the extreme isn't zero: then it doesn't
/// depend on the order either. Zeros are multiplied by them, too, and stay zeros as long as the
/// values are finite: processors multiply and compare at the same time, but don't add.
template <Extreme which, std::size_t Bytes>
[[gnu::always_inline]] inline double extreme(const double* in_pFirst, const double* in_pLast) {
    constexpr std::size_t row = Lanes<Bytes>::count;
    // As many rows at a time as there are registers for.
    constexpr std::size_t ways = Bytes / 16;
    const auto inOrder = [&] {
        const Extremes both = extremesInOrder(in_pFirst, in_pLast);
        return which == Extreme::Largest ? both.largest : both.smallest;
    };
    const auto size = static_cast<std::size_t>(in_pLast - in_pFirst);
    if (size < 2 * row) {
        return inOrder();
    }
    Lanes<Bytes> extremes[ways];
    Lanes<Bytes> zeros[ways];
    std::fill_n(extremes, ways, Lanes<Bytes>(in_pFirst));
    std::size_t i = 0;
    for (; i + ways * row <= size; i += ways * row) {
        for (std::size_t way = 0; way < ways; ++way) {
            take<which>(in_pFirst + i + way * row, extremes[way], zeros[way]);
        }
    }
    for (; i + row <= size; i += row) {
        take<which>(in_pFirst + i, extremes[0], zeros[0]);
    }
    // Some values twice, which doesn't matter.
    take<which>(in_pLast - row, extremes[0], zeros[0]);
    // Not a loop, which would keep all of them in memory.
#pragma GCC unroll 4
    for (std::size_t way = 1; way < ways; ++way) {
        moveTo<which>(extremes[way], extremes[0]);
        zeros[0].add(zeros[way]);
    }
    const double result =
        which == Extreme::Largest ? extremes[0].largest() : extremes[0].smallest();
    return zeros[0].total() == 0.0 && result != 0.0 ? result : inOrder();
}

} // namespace Velmora::Math
