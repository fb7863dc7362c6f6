#include <velmora/math/SinusCorrelator.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "Sinusoid.h"
#include "Summation.h"

namespace Velmora::Math {

namespace {

// Energies between these lose nothing to underflow and don't overflow.
constexpr double smallestEnergy = 1e-250;
constexpr double largestEnergy = 1e300;

// Powers of two that bring the energy of any other finite frame between them.
constexpr double scaleUp = 0x1p800;
constexpr double scaleDown = 0x1p-600;

/// The inner products of a frame with the cosine, the sine and itself.
struct Products {
    double cosine = 0.0;
    double sine = 0.0;
    double energy = 0.0;
};

/// Cosine and sine are symmetric about the middle of the frame, so that the sums and the
/// differences of the samples at equal distance from it are multiplied only once. The lanes are
/// independent sums in fixed order, whatever registers a compiler uses for them.
template <class Scale>
Products productsOf(const double* in_pFirst, std::size_t in_uiCount, const double* in_pCosine,
                    const double* in_pSine, Scale in_scale) {
    constexpr std::size_t lanes = 8;
    double cosine[lanes] = {};
    double sine[lanes] = {};
    double energy[lanes] = {};

    const std::size_t pairs = in_uiCount / 2;
    const double* const behind = in_pFirst + (in_uiCount - pairs);
    const double* const before = in_pFirst + pairs;
    const auto add = [&](std::size_t i, std::size_t lane) {
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

    Products result{cosine[0], sine[0], energy[0]};
    if (in_uiCount % 2 != 0) {
        const double middle = in_scale(*before);
        result.cosine += middle;
        result.energy += middle * middle;
    }
    return result;
}

double reciprocalNorm(double in_dSquaredNorm) {
    return in_dSquaredNorm > 0.0 ? 1.0 / std::sqrt(in_dSquaredNorm) : 0.0;
}

} // namespace

bool SinusCorrelator::configure(std::size_t in_uiSampleRate, double in_dFrequency) {
    if (in_uiSampleRate == 0 || !(in_dFrequency > 0.0) ||
        in_dFrequency > 0.5 * static_cast<double>(in_uiSampleRate)) {
        return false;
    }
    m_uiSampleRate = in_uiSampleRate;
    m_dFrequency = in_dFrequency;
    m_uiCount = 0;
    for (Basis& basis : m_bases) {
        basis.m_vCosine.clear();
        basis.m_vSine.clear();
    }
    return true;
}

bool SinusCorrelator::compute(const double* const& in_pFirst, const double* const& in_pLast,
                              double& out_dCorrelation) {
    if (m_uiSampleRate == 0) {
        return false;
    }
    const auto count = static_cast<std::size_t>(in_pLast - in_pFirst);
    if (count == 0) {
        out_dCorrelation = 0.0;
        return true;
    }
    if (count != m_uiCount) {
        prepare_i(count);
    }
    const Basis& basis = m_bases[count % 2];
    const auto productsScaledBy = [&](auto in_scale) {
        return productsOf(in_pFirst, count, basis.m_vCosine.begin(), basis.m_vSine.begin(),
                          in_scale);
    };

    Products products = productsScaledBy([](double value) { return value; });
    if (products.energy < smallestEnergy) {
        products = productsScaledBy([](double value) { return value * scaleUp; });
    } else if (products.energy > largestEnergy) {
        products = productsScaledBy([](double value) { return value * scaleDown; });
    }
    if (products.energy == 0.0) {
        out_dCorrelation = 0.0;
        return true;
    }
    if (!std::isfinite(products.energy)) {
        out_dCorrelation = std::numeric_limits<double>::quiet_NaN();
        return true;
    }
    const double cosine = products.cosine * m_dCosineScale;
    const double sine = products.sine * m_dSineScale;
    out_dCorrelation = std::min(std::sqrt((cosine * cosine + sine * sine) / products.energy), 1.0);
    return true;
}

void SinusCorrelator::prepare_i(std::size_t in_uiCount) {
    const std::size_t odd = in_uiCount % 2;
    const std::size_t pairs = in_uiCount / 2;
    Basis& basis = m_bases[odd];
    const std::size_t known = basis.m_vSine.size();
    if (known < pairs) {
        const Sinusoid sinusoid(m_uiSampleRate, m_dFrequency);
        // The sine's size tells how far the tables reach: it grows last, and never before both fit.
        basis.m_vCosine.resize(pairs);
        basis.m_vSine.resize(pairs);
        for (std::size_t i = known; i < pairs; ++i) {
            const SinusoidValue value = sinusoid.at(2 * i + 1 + odd);
            basis.m_vCosine[i] = value.cosine;
            basis.m_vSine[i] = value.sine;
        }
    }
    const double* const cosine = basis.m_vCosine.begin();
    const double* const sine = basis.m_vSine.begin();
    m_dCosineScale =
        reciprocalNorm(2.0 * sumOfSquares(cosine, cosine + pairs) + static_cast<double>(odd));
    m_dSineScale = reciprocalNorm(2.0 * sumOfSquares(sine, sine + pairs));
    m_uiCount = in_uiCount;
}

} // namespace Velmora::Math
