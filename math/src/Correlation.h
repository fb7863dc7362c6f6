#pragma once

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

/// Cosine and sine are symmetric about the middle of the frame, so that the sums and the
/// differences of the samples at equal distance from it are multiplied only once. The lanes are
/// independent sums in fixed order, whatever registers a processor has for them.
template <std::size_t Bytes, class Scale>
[[gnu::always_inline]] inline Correlation correlate(const double* in_pFirst, std::size_t in_uiCount,
                                                    const double* in_pCosine,
                                                    const double* in_pSine, Scale in_scale) {
    using Eight = Lanes<Bytes>;
    constexpr std::size_t lanes = Eight::count;
    const std::size_t pairs = in_uiCount / 2;
    const double* const behind = in_pFirst + (in_uiCount - pairs);
    const double* const before = in_pFirst + pairs;
    Eight cosines;
    Eight sines;
    Eight energies;
    std::size_t row = 0;
    for (; row + lanes <= pairs; row += lanes) {
        Eight right(behind + row);
        Eight left = Eight::reversed(before - row - lanes);
        in_scale(right);
        in_scale(left);
        Eight sum(right);
        sum.add(left);
        sum.multiply(Eight(in_pCosine + row));
        cosines.add(sum);
        Eight difference(right);
        difference.subtract(left);
        difference.multiply(Eight(in_pSine + row));
        sines.add(difference);
        right.square();
        left.square();
        right.add(left);
        energies.add(right);
    }
    if (row != pairs) {
        double cosine[lanes];
        double sine[lanes];
        double energy[lanes];
        cosines.store(cosine);
        sines.store(sine);
        energies.store(energy);
        for (std::size_t lane = 0; row + lane < pairs; ++lane) {
            double right = behind[row + lane];
            double left = *(before - 1 - row - lane);
            in_scale(right);
            in_scale(left);
            cosine[lane] += (right + left) * in_pCosine[row + lane];
            sine[lane] += (right - left) * in_pSine[row + lane];
            energy[lane] += right * right + left * left;
        }
        cosines = Eight(cosine);
        sines = Eight(sine);
        energies = Eight(energy);
    }

    Correlation result{cosines.total(), sines.total(), energies.total()};
    if (in_uiCount % 2 != 0) {
        double middle = *before;
        in_scale(middle);
        result.cosine += middle;
        result.energy += middle * middle;
    }
    return result;
}

} // namespace Velmora::Math
