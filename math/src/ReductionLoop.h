#pragma once

#include <cstddef>

#include <velmora/math/Reductions.h>

#include "Extremes.h"
#include "Lanes.h"
#include "Summation.h"

namespace Velmora::Math {

/// A set of kinds of reductions is a number, with a bit for each.
constexpr std::size_t ReductionSets = std::size_t(1) << Reductions::KindCount;

constexpr std::size_t placeOf(Reductions::Kind in_eKind) {
    return static_cast<std::size_t>(in_eKind);
}

constexpr std::size_t setOf(Reductions::Kind in_eKind) {
    return std::size_t(1) << placeOf(in_eKind);
}

/// One of four rows of partial results, which several chains of operations hide the time of each
/// behind.
template <std::size_t uiSet, std::size_t uiBytes>
class ReductionRow {
public:
    static constexpr bool has(Reductions::Kind in_eKind) { return (uiSet & setOf(in_eKind)) != 0; }

    /// The extremes begin with elements of the range, whichever.
    [[gnu::always_inline]] explicit ReductionRow(const double* in_pElements)
        : m_largest(in_pElements), m_smallest(in_pElements) {}

    [[gnu::always_inline]] void clearSums() {
        m_sum = Lanes<uiBytes>();
        m_squares = Lanes<uiBytes>();
    }

    [[gnu::always_inline]] void take(const double* in_pElements, const Lanes<uiBytes>& in_ones) {
        Lanes<uiBytes> values(in_pElements);
        takeExtremes(values);
        if constexpr (has(Reductions::Kind::Sum)) {
            m_sum.add(values);
        }
        if constexpr (has(Reductions::Kind::AveragePower)) {
            values.square();
            m_squares.addMultiplied(values, in_ones);
        }
    }

    [[gnu::always_inline]] void takeExtremes(const Lanes<uiBytes>& in_values) {
        if constexpr (has(Reductions::Kind::Max)) {
            m_largest.raiseTo(in_values);
        }
        if constexpr (has(Reductions::Kind::Min)) {
            m_smallest.lowerTo(in_values);
        }
    }

    [[gnu::always_inline]] void addSums(const ReductionRow& in_other) {
        m_sum.add(in_other.m_sum);
        m_squares.add(in_other.m_squares);
    }

    [[gnu::always_inline]] void joinExtremes(const ReductionRow& in_other) {
        m_largest.raiseTo(in_other.m_largest);
        m_smallest.lowerTo(in_other.m_smallest);
    }

    Lanes<uiBytes> m_sum;
    Lanes<uiBytes> m_squares;
    Lanes<uiBytes> m_largest;
    Lanes<uiBytes> m_smallest;
};

/// The order of the additions is that of Summation.h, and the extremes are those of Extremes.h,
/// which depend on no order while all elements are finite, as they are when their sum is.
template <std::size_t uiSet, std::size_t uiBytes>
class ReductionPass {
public:
    [[gnu::always_inline]] ReductionPass(const double* in_pFirst, const double* in_pLast)
        : m_pFirst(in_pFirst),
          m_pLast(in_pLast),
          m_a(in_pFirst),
          m_b(in_pFirst),
          m_c(in_pFirst),
          m_d(in_pFirst) {}

    [[gnu::always_inline]] void run(Reductions::Results& out_Results) {
        const double* pBlock = m_pFirst;
        while (m_pLast - pBlock > static_cast<std::ptrdiff_t>(summationBlock)) {
            takeBlock(pBlock, pBlock + summationBlock);
            pBlock += summationBlock;
        }
        takeBlock(pBlock, m_pLast);
        // Some elements twice, which doesn't matter.
        m_a.takeExtremes(Lanes<uiBytes>(m_pLast - Lanes<uiBytes>::count));
        m_a.joinExtremes(m_b);
        m_c.joinExtremes(m_d);
        m_a.joinExtremes(m_c);
        report(out_Results);
    }

private:
    using Row = ReductionRow<uiSet, uiBytes>;
    using Kind = Reductions::Kind;

    [[gnu::always_inline]] void takeBlock(const double* in_pFirst, const double* in_pLast) {
        constexpr std::size_t row = Lanes<uiBytes>::count;
        const Lanes<uiBytes> ones = Lanes<uiBytes>::filledWith(1.0);
        m_a.clearSums();
        m_b.clearSums();
        m_c.clearSums();
        m_d.clearSums();
        auto left = static_cast<std::size_t>(in_pLast - in_pFirst);
        for (; left >= 4 * row; left -= 4 * row) {
            m_a.take(in_pFirst, ones);
            m_b.take(in_pFirst + row, ones);
            m_c.take(in_pFirst + 2 * row, ones);
            m_d.take(in_pFirst + 3 * row, ones);
            in_pFirst += 4 * row;
        }
        if (left >= 2 * row) {
            m_a.take(in_pFirst, ones);
            m_b.take(in_pFirst + row, ones);
            in_pFirst += 2 * row;
            left -= 2 * row;
        }
        if (left >= row) {
            m_c.take(in_pFirst, ones);
            in_pFirst += row;
        }
        m_a.addSums(m_b);
        m_c.addSums(m_d);
        m_a.addSums(m_c);
        if constexpr (Row::has(Kind::Sum)) {
            m_sum.add(m_a.m_sum.total() + sumInTurn<Term::Value>(in_pFirst, in_pLast));
        }
        if constexpr (Row::has(Kind::AveragePower)) {
            m_squares.add(m_a.m_squares.total() + sumInTurn<Term::Square>(in_pFirst, in_pLast));
        }
    }

    [[gnu::always_inline]] void report(Reductions::Results& out_Results) const {
        double dSum = 0.0;
        if constexpr (Row::has(Kind::AveragePower)) {
            dSum = m_squares.total();
            out_Results[placeOf(Kind::AveragePower)] =
                dSum / static_cast<double>(m_pLast - m_pFirst);
        }
        if constexpr (Row::has(Kind::Sum)) {
            dSum = m_sum.total();
            out_Results[placeOf(Kind::Sum)] = dSum;
        }
        const bool bFinite = dSum - dSum == 0.0;
        if constexpr (Row::has(Kind::Max)) {
            const double dLargest = m_a.m_largest.largest();
            out_Results[placeOf(Kind::Max)] =
                bFinite && dLargest != 0.0 ? dLargest : extremesInOrder(m_pFirst, m_pLast).largest;
        }
        if constexpr (Row::has(Kind::Min)) {
            const double dSmallest = m_a.m_smallest.smallest();
            out_Results[placeOf(Kind::Min)] = bFinite && dSmallest != 0.0
                                                  ? dSmallest
                                                  : extremesInOrder(m_pFirst, m_pLast).smallest;
        }
    }

    const double* m_pFirst;
    const double* m_pLast;
    Row m_a;
    Row m_b;
    Row m_c;
    Row m_d;
    PairwiseSum m_sum;
    PairwiseSum m_squares;
};

/// Each with a pass of its own.
template <std::size_t uiSet, std::size_t uiBytes>
[[gnu::always_inline]] inline void reduceOneByOne(const double* in_pFirst, const double* in_pLast,
                                                  Reductions::Results& out_Results) {
    using Kind = Reductions::Kind;
    using Row = ReductionRow<uiSet, uiBytes>;
    if constexpr (Row::has(Kind::Sum)) {
        out_Results[placeOf(Kind::Sum)] = sumOf<Term::Value, uiBytes>(in_pFirst, in_pLast);
    }
    if constexpr (Row::has(Kind::AveragePower)) {
        out_Results[placeOf(Kind::AveragePower)] =
            sumOf<Term::Square, uiBytes>(in_pFirst, in_pLast) /
            static_cast<double>(in_pLast - in_pFirst);
    }
    if constexpr (Row::has(Kind::Max)) {
        out_Results[placeOf(Kind::Max)] = extreme<Extreme::Largest, uiBytes>(in_pFirst, in_pLast);
    }
    if constexpr (Row::has(Kind::Min)) {
        out_Results[placeOf(Kind::Min)] = extreme<Extreme::Smallest, uiBytes>(in_pFirst, in_pLast);
    }
}

/// Is there enough to do in one pass, and are there registers for it? Extremes alone lack the sum
/// that tells whether all is finite.
template <std::size_t uiSet, std::size_t uiBytes>
constexpr bool isOnePass() {
    using Kind = Reductions::Kind;
    constexpr bool bSeveral = (uiSet & (uiSet - 1)) != 0;
    constexpr bool bSums = (uiSet & (setOf(Kind::Sum) | setOf(Kind::AveragePower))) != 0;
    return uiBytes == 64 && bSeveral && bSums;
}

/// The loop, compiled for the processor of the function that it is inlined into.
template <std::size_t uiSet, std::size_t uiBytes>
[[gnu::always_inline]] inline void reduce(const double* in_pFirst, const double* in_pLast,
                                          Reductions::Results& out_Results) {
    if constexpr (isOnePass<uiSet, uiBytes>()) {
        if (in_pLast - in_pFirst >= static_cast<std::ptrdiff_t>(2 * Lanes<uiBytes>::count)) {
            ReductionPass<uiSet, uiBytes>(in_pFirst, in_pLast).run(out_Results);
            return;
        }
    }
    reduceOneByOne<uiSet, uiBytes>(in_pFirst, in_pLast, out_Results);
}

} // namespace Velmora::Math
