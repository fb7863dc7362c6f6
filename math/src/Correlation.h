#pragma once

#include <cstddef>

namespace Velmora::Math {

/// The inner products of a frame with the cosine, the sine and itself.
struct Correlation {
    double cosine = 0.0;
    double sine = 0.0;
    double energy = 0.0;
};

/// Cosine and sine are symmetric about the middle of the frame, so that the sums and the
/// differences of the samples at equal distance from it are multiplied only once. The lanes are
/// independent sums in fixed order, whatever registers a compiler uses for them.
template <class Scale>
[[gnu::always_inline]] inline Correlation correlate(const double* in_pFirst, std::size_t in_uiCount,
                                                    const double* in_pCosine,
                                                    const double* in_pSine, Scale in_scale) {
    constexpr std::size_t lanes = 8;
    double cosine[lanes] = {};
    double sine[lanes] = {};
    double energy[lanes] = {};

    const std::size_t pairs = in_uiCount / 2;
    const double* const behind = in_pFirst + (in_uiCount - pairs);
    const double* const before = in_pFirst + pairs;
    const auto add = [&](std::size_t i, std::size_t lane) __attribute__((always_inline)) {
        const double right = in_scale(behind[i]);
        const double left = in_scale(*(before - 1 - i));
        cosine[lane] += (right + left) * in_pCosine[i];
        sine[lane] += (right - left) * in_pSine[i];
        energy[lane] += right * right + left * left;
    };
    std::size_t row = 0;
    for (; row + lanes <= pairs; row += lanes) {
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            add(row + lane, lane);
        }
    }
    for (std::size_t lane = 0; row + lane < pairs; ++lane) {
        add(row + lane, lane);
    }
    for (std::size_t width = lanes / 2; width != 0; width /= 2) {
        for (std::size_t lane = 0; lane < width; ++lane) {
            cosine[lane] += cosine[lane + width];
            sine[lane] += sine[lane + width];
            energy[lane] += energy[lane + width];
        }
    }

    Correlation result{cosine[0], sine[0], energy[0]};
    if (in_uiCount % 2 != 0) {
        const double middle = in_scale(*before);
        result.cosine += middle;
        result.energy += middle * middle;
    }
    return result;
}

} // namespace Velmora::Math
