#include <velmora/math/SinusCorrelator.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "Correlation.h"
#include "Kernels.h"
#include "Sinusoid.h"

namespace Velmora::Math {

namespace {

// Energies between these lose nothing to underflow and don't overflow.
constexpr double smallestEnergy = 1e-250;
constexpr double largestEnergy = 1e300;

// Powers of two that bring the energy of any other finite frame between them.
constexpr double scaleUp = 0x1p800;
constexpr double scaleDown = 0x1p-600;

/// The same of a frame that has been brought to an energy that a double holds. Apart from what is
/// computed in each frame, which it would slow down.
[[gnu::noinline]] Correlation correlateScaled(double in_dScale, const double* in_pFirst,
                                              std::size_t in_uiCount, const ToneTables& in_tables) {
    constexpr std::size_t smallestRegisters = 16;
    Correlation products;
    correlateAll<smallestRegisters>(in_pFirst, in_uiCount, &in_tables, 1, ScaledBy{in_dScale},
                                    &products);
    return products;
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
    SinusCorrelator* const pThis = this;
    return computeTogether(&pThis, 1, in_pFirst, in_pLast, &out_dCorrelation);
}

bool SinusCorrelator::computeTogether(SinusCorrelator* const* in_ppCorrelators,
                                      std::size_t in_uiCorrelators, const double* in_pFirst,
                                      const double* in_pLast, double* out_pCorrelations) {
    SinusCorrelator* const* const ppEnd = in_ppCorrelators + in_uiCorrelators;
    if (!std::all_of(in_ppCorrelators, ppEnd,
                     [](const auto* in_pEach) { return in_pEach->m_uiSampleRate != 0; })) {
        return false;
    }
    const auto count = static_cast<std::size_t>(in_pLast - in_pFirst);
    if (count == 0) {
        std::fill_n(out_pCorrelations, in_uiCorrelators, 0.0);
        return true;
    }
    constexpr std::size_t atATime = 8;
    while (in_ppCorrelators != ppEnd) {
        const std::size_t tones =
            std::min(atATime, static_cast<std::size_t>(ppEnd - in_ppCorrelators));
        ToneTables tables[atATime];
        Correlation products[atATime];
        for (std::size_t tone = 0; tone != tones; ++tone) {
            tables[tone] = in_ppCorrelators[tone]->tables_i(count);
        }
        kernels().m_Correlate(in_pFirst, count, tables, tones, products);
        for (std::size_t tone = 0; tone != tones; ++tone) {
            Correlation& product = products[tone];
            if (product.energy < smallestEnergy) {
                product = correlateScaled(scaleUp, in_pFirst, count, tables[tone]);
            } else if (product.energy > largestEnergy) {
                product = correlateScaled(scaleDown, in_pFirst, count, tables[tone]);
            }
            *out_pCorrelations++ = in_ppCorrelators[tone]->shareOf_i(product);
        }
        in_ppCorrelators += tones;
    }
    return true;
}

inline ToneTables SinusCorrelator::tables_i(std::size_t in_uiCount) {
    if (in_uiCount != m_uiCount) {
        prepare_i(in_uiCount);
    }
    const Basis& basis = m_bases[in_uiCount % 2];
    return {basis.m_vCosine.begin(), basis.m_vSine.begin()};
}

inline double SinusCorrelator::shareOf_i(const Correlation& in_products) const {
    if (in_products.energy == 0.0) {
        return 0.0;
    }
    if (!std::isfinite(in_products.energy)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double cosine = in_products.cosine * m_dCosineScale;
    const double sine = in_products.sine * m_dSineScale;
    return std::min(std::sqrt((cosine * cosine + sine * sine) / in_products.energy), 1.0);
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
    const Kernels::OfAll pSumOfSquares = kernels().m_SumOfSquares;
    m_dCosineScale =
        reciprocalNorm(2.0 * pSumOfSquares(cosine, cosine + pairs) + static_cast<double>(odd));
    m_dSineScale = reciprocalNorm(2.0 * pSumOfSquares(sine, sine + pairs));
    m_uiCount = in_uiCount;
}

} // namespace Velmora::Math
