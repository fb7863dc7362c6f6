#pragma once

#include <cstddef>

#include "Lanes.h"

namespace Velmora::Math {

/// Sums of a range whose bits depend on the values and their number alone.
///
/// The range is cut into blocks of summationBlock values. A block is summed into 32 independent
/// sums, value i of the block into sum i modulo 32, by rows of 32 and, at its end, of 16 and of 8;
/// the last seven values at most are added up one after the other. The sums, and then the blocks,
/// are added up by pairs in a binary tree; registers may be of any width without changing the order
/// of a single addition. A value takes part in at most
/// summationBlock / 32 + 9 + log2(blocks) roundings, so that the relative error (against the sum of
/// the absolute values) grows with the logarithm of the number of values. Fewer than eight values
/// are added one after the other, which is faster for the one-element vectors that most expressions
/// are.
///
/// Nothing is allocated. A sum of nothing, and one of zeros, is +0.
constexpr std::size_t summationBlock = 512;

/// What is summed.
enum class Term { Value, Square };

template <Term term>
[[gnu::always_inline]] inline double termOf(double in_dValue) {
    return term == Term::Square ? in_dValue * in_dValue : in_dValue;
}

template <Term term, std::size_t Bytes>
[[gnu::always_inline]] inline void addTerms(const double* in_pValues, Lanes<Bytes>& inout_sum) {
    Lanes<Bytes> values(in_pValues);
    if (term == Term::Square) {
        values.square();
    }
    inout_sum.add(values);
}

template <Term term>
[[gnu::always_inline]] inline double sumInTurn(const double* in_pFirst, const double* in_pLast) {
    double result = 0.0;
    for (; in_pFirst != in_pLast; ++in_pFirst) {
        result += termOf<term>(*in_pFirst);
    }
    return result;
}

/// One block of up to summationBlock values.
template <Term term, std::size_t Bytes>
[[gnu::always_inline]] inline double sumOfBlock(const double* in_pFirst, const double* in_pLast) {
    constexpr std::size_t row = Lanes<Bytes>::count;
    Lanes<Bytes> a;
    Lanes<Bytes> b;
    Lanes<Bytes> c;
    Lanes<Bytes> d;
    auto left = static_cast<std::size_t>(in_pLast - in_pFirst);
    for (; left >= 4 * row; left -= 4 * row) {
        addTerms<term>(in_pFirst, a);
        addTerms<term>(in_pFirst + row, b);
        addTerms<term>(in_pFirst + 2 * row, c);
        addTerms<term>(in_pFirst + 3 * row, d);
        in_pFirst += 4 * row;
    }
    if (left >= 2 * row) {
        addTerms<term>(in_pFirst, a);
        addTerms<term>(in_pFirst + row, b);
        in_pFirst += 2 * row;
        left -= 2 * row;
    }
    if (left >= row) {
        addTerms<term>(in_pFirst, c);
        in_pFirst += row;
    }
    a.add(b);
    c.add(d);
    a.add(c);
    return a.total() + sumInTurn<term>(in_pFirst, in_pLast);
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

/// The sum of [first, last), in registers of that many bytes.
template <Term term, std::size_t Bytes>
[[gnu::always_inline]] inline double sumOf(const double* in_pFirst, const double* in_pLast) {
    if (in_pLast - in_pFirst < static_cast<std::ptrdiff_t>(Lanes<Bytes>::count)) {
        return sumInTurn<term>(in_pFirst, in_pLast);
    }
    PairwiseSum sum;
    while (in_pLast - in_pFirst > static_cast<std::ptrdiff_t>(summationBlock)) {
        sum.add(sumOfBlock<term, Bytes>(in_pFirst, in_pFirst + summationBlock));
        in_pFirst += summationBlock;
    }
    sum.add(sumOfBlock<term, Bytes>(in_pFirst, in_pLast));
    return sum.total();
}

} // namespace Velmora::Math
