#pragma once

#include <algorithm>
#include <cstddef>

#include "Lanes.h"

namespace Velmora::Math {

/// The inner products of a frame with the cosine, the sine and itself.
struct Correlation {
    double cosine = 0.0;
    double sine = 0.0;
    double energy = 0.0;
};

/// What is done with the samples as they are read.
struct Unscaled {
    template <class Samples>
    void operator()(Samples&) const {}
};

struct ScaledBy {
    template <std::size_t Bytes>
    [[gnu::always_inline]] void operator()(Lanes<Bytes>& inout_samples) const {
        inout_samples.multiply(m_dFactor);
    }
    void operator()(double& inout_dSample) const { inout_dSample *= m_dFactor; }

    double m_dFactor;
};

/// The cosine and the sine of a tone at the samples behind the middle of a frame.
struct ToneTables {
    const double* m_pCosine;
    const double* m_pSine;
};

/// The sums of some tones over a frame, eight at a time.
template <std::size_t Bytes, std::size_t Tones>
struct CorrelationSums {
    using Eight = Lanes<Bytes>;

    /// Takes eight samples behind the middle of the frame, and those that are as far before it.
    [[gnu::always_inline]] void add(const Eight& in_right, const Eight& in_left,
                                    const ToneTables* in_pTables, std::size_t in_uiRow) {
        // Not a loop, which would keep the sums in memory.
#pragma GCC unroll 4
        for (std::size_t tone = 0; tone < Tones; ++tone) {
            Eight sum(in_right);
            sum.add(in_left);
            sum.multiply(Eight(in_pTables[tone].m_pCosine + in_uiRow));
            m_cosines[tone].add(sum);
            Eight difference(in_right);
            difference.subtract(in_left);
            difference.multiply(Eight(in_pTables[tone].m_pSine + in_uiRow));
            m_sines[tone].add(difference);
        }
        Eight squares(in_right);
        squares.square();
        Eight squaresBefore(in_left);
        squaresBefore.square();
        squares.add(squaresBefore);
        m_energies.add(squares);
    }

    Eight m_cosines[Tones];
    Eight m_sines[Tones];
    Eight m_energies;
};

/// The last samples of a frame, fewer than eight on each side of its middle, beside zeros, which
/// leave a sum as it is.
template <std::size_t Tones>
struct LastSamples {
    static constexpr std::size_t lanes = 8;

    [[gnu::always_inline]] LastSamples(const double* in_pBehind, const double* in_pBefore,
                                       std::size_t in_uiPairs, const ToneTables* in_pTables) {
        for (std::size_t lane = 0; lane != in_uiPairs; ++lane) {
            m_right[lane] = in_pBehind[lane];
            m_left[lane] = *(in_pBefore - 1 - lane);
        }
        for (std::size_t tone = 0; tone < Tones; ++tone) {
            std::copy_n(in_pTables[tone].m_pCosine, in_uiPairs, m_tables[2 * tone]);
            std::copy_n(in_pTables[tone].m_pSine, in_uiPairs, m_tables[2 * tone + 1]);
        }
    }

    double m_right[lanes] = {};
    double m_left[lanes] = {};
    double m_tables[2 * Tones][lanes] = {};
};

/// Correlates a frame with some tones. The sums of each are the same as if it were alone.
///
/// Cosine and sine are symmetric about the middle of the frame, so that the sums and the
/// differences of the samples at equal distance from it are multiplied only once. The lanes are
/// independent sums in fixed order, whatever registers a processor has for them.
template <std::size_t Bytes, std::size_t Tones, class Scale>
[[gnu::always_inline]] inline void correlate(const double* in_pFirst, std::size_t in_uiCount,
                                             const ToneTables* in_pTables, Scale in_scale,
                                             Correlation* out_pCorrelations) {
    using Eight = Lanes<Bytes>;
    constexpr std::size_t lanes = Eight::count;
    const std::size_t pairs = in_uiCount / 2;
    const double* const behind = in_pFirst + (in_uiCount - pairs);
    const double* const before = in_pFirst + pairs;
    CorrelationSums<Bytes, Tones> sums;
    std::size_t row = 0;
    for (; row + lanes <= pairs; row += lanes) {
        Eight right(behind + row);
        Eight left = Eight::reversed(before - row - lanes);
        in_scale(right);
        in_scale(left);
        sums.add(right, left, in_pTables, row);
    }
    if (row != pairs) {
        ToneTables rest[Tones];
        for (std::size_t tone = 0; tone < Tones; ++tone) {
            rest[tone] = {in_pTables[tone].m_pCosine + row, in_pTables[tone].m_pSine + row};
        }
        const LastSamples<Tones> last(behind + row, before - row, pairs - row, rest);
        for (std::size_t tone = 0; tone < Tones; ++tone) {
            rest[tone] = {last.m_tables[2 * tone], last.m_tables[2 * tone + 1]};
        }
        Eight right(last.m_right);
        Eight left(last.m_left);
        in_scale(right);
        in_scale(left);
        sums.add(right, left, rest, 0);
    }
    double middle = 0.0;
    if (in_uiCount % 2 != 0) {
        middle = *before;
        in_scale(middle);
    }
    const double energy = sums.m_energies.total() + middle * middle;
    for (std::size_t tone = 0; tone < Tones; ++tone) {
        out_pCorrelations[tone] = {sums.m_cosines[tone].total() + middle,
                                   sums.m_sines[tone].total(), energy};
    }
}

/// The same with as many tones as there are, as many at a time as the registers hold sums for.
template <std::size_t Bytes, class Scale>
[[gnu::always_inline]] inline void
correlateAll(const double* in_pFirst, std::size_t in_uiCount, const ToneTables* in_pTables,
             std::size_t in_uiTones, Scale in_scale, Correlation* out_pCorrelations) {
    constexpr std::size_t atATime = Bytes / 16;
    std::size_t tone = 0;
    for (; tone + atATime <= in_uiTones; tone += atATime) {
        correlate<Bytes, atATime>(in_pFirst, in_uiCount, in_pTables + tone, in_scale,
                                  out_pCorrelations + tone);
    }
    for (; tone != in_uiTones; ++tone) {
        correlate<Bytes, 1>(in_pFirst, in_uiCount, in_pTables + tone, in_scale,
                            out_pCorrelations + tone);
    }
}

} // namespace Velmora::Math
