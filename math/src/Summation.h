#pragma once

#include <cstddef>

namespace Velmora::Math {

/// Sums of a range whose bits depend on the values and their number alone.
///
/// The range is cut into blocks of summationBlock values. A block is summed into summationLanes
/// independent sums, value i of the block into lane i modulo the number of lanes; a compiler may
/// keep the lanes in vector registers of any width without changing the order of a single
/// addition. The lanes, and then the blocks, are added up by pairs in a binary tree. A value takes
/// part in at most summationBlock / summationLanes + log2(summationLanes) + log2(blocks) + 1
/// roundings, so that the relative error (against the sum of the absolute values) grows with the
/// logarithm of the number of values. Fewer than half as many values as lanes are added one after
/// the other, which is faster for the one-element vectors that most expressions are.
///
/// Nothing is allocated. A sum of nothing, and one of zeros, is +0.
constexpr std::size_t summationLanes = 16;
constexpr std::size_t summationBlock = 128;

/// The lanes' total, added up by neighbouring pairs.
[[gnu::always_inline]] inline double sumOfLanes(const double* in_pLanes) {
    double level[summationLanes / 2];
    for (std::size_t i = 0; i < summationLanes / 2; ++i) {
        level[i] = in_pLanes[2 * i] + in_pLanes[2 * i + 1];
    }
    for (std::size_t width = summationLanes / 4; width != 0; width /= 2) {
        for (std::size_t i = 0; i < width; ++i) {
            level[i] = level[2 * i] + level[2 * i + 1];
        }
    }
    return level[0];
}

/// One block of up to summationBlock values.
template <class Term>
[[gnu::always_inline]] inline double sumOfBlock(const double* in_pFirst, std::size_t in_uiCount,
                                                Term in_term) {
    double lanes[summationLanes] = {};
    std::size_t row = 0;
    for (; row + summationLanes <= in_uiCount; row += summationLanes) {
        for (std::size_t lane = 0; lane < summationLanes; ++lane) {
            lanes[lane] += in_term(in_pFirst[row + lane]);
        }
    }
    for (std::size_t lane = 0; row + lane < in_uiCount; ++lane) {
        lanes[lane] += in_term(in_pFirst[row + lane]);
    }
    return sumOfLanes(lanes);
}

/// Adds up partial sums by pairs, as a binary counter carries: partial sums of equal weight are
/// added as soon as both are there.
class PairwiseSum {
public:
    [[gnu::always_inline]] void add(double in_dPartial) {
        std::size_t level = 0;
        for (std::size_t bits = m_uiCount; (bits & 1) != 0; bits >>= 1) {
            in_dPartial = m_partials[level++] + in_dPartial;
        }
        m_partials[level] = in_dPartial;
        ++m_uiCount;
    }

    [[gnu::always_inline]] double total() const {
        double result = 0.0;
        std::size_t level = 0;
        for (std::size_t bits = m_uiCount; bits != 0; bits >>= 1, ++level) {
            if ((bits & 1) != 0) {
                result = m_partials[level] + result;
            }
        }
        return result;
    }

private:
    double m_partials[8 * sizeof(std::size_t)];
    std::size_t m_uiCount = 0;
};

template <class Term>
[[gnu::always_inline]] inline double sumOf(const double* in_pFirst, const double* in_pLast,
                                           Term in_term) {
    if (in_pLast - in_pFirst < static_cast<std::ptrdiff_t>(summationLanes / 2)) {
        double result = 0.0;
        for (; in_pFirst != in_pLast; ++in_pFirst) {
            result += in_term(*in_pFirst);
        }
        return result;
    }
    PairwiseSum sum;
    while (in_pFirst != in_pLast) {
        const auto left = static_cast<std::size_t>(in_pLast - in_pFirst);
        const std::size_t count = left < summationBlock ? left : summationBlock;
        sum.add(sumOfBlock(in_pFirst, count, in_term));
        in_pFirst += count;
    }
    return sum.total();
}

/// The sum of [first, last).
[[gnu::always_inline]] inline double sum(const double* in_pFirst, const double* in_pLast) {
    return sumOf(in_pFirst, in_pLast, [](double value) { return value; });
}

/// The sum of the squares of [first, last).
[[gnu::always_inline]] inline double sumOfSquares(const double* in_pFirst, const double* in_pLast) {
    return sumOf(in_pFirst, in_pLast, [](double value) { return value * value; });
}

} // namespace Velmora::Math
