#include <velmora/math/DemodulatorAM.h>

#include <algorithm>
#include <cmath>

#include "QuadratureFilters.h"
#include "Sinusoid.h"

namespace Velmora::Math {

namespace {

// Longer windows smooth more noise, shorter ones follow faster modulation.
constexpr double reachInPeriods = 1.25;

// Shorter frames, in periods, can't hold the parabolas, or the carrier at all.
constexpr double leastPeriodsForParabolas = 1.5;
constexpr double leastPeriods = 0.5;

// The reach is bounded, but far beyond any frame.
constexpr double largestReach = 0x1p40;

// Windows of a carrier near half the sample rate would grow without limit.
constexpr double longestMirroredPeriod = 32.0;

// Above this reach the envelope is computed at fewer places than samples, and the parabolas fill
// the gaps: the cost of a sample doesn't depend on the carrier.
constexpr std::size_t reachOfEverySample = 256;

/// The samples in which the carrier and its mirror image drift apart by two turns: the carrier's
/// period, or, above a quarter of the sample rate, that of its distance to half of it.
double separatingPeriod(double in_dSampleRate, double in_dFrequency) {
    const double distance = 0.5 * in_dSampleRate - in_dFrequency;
    return in_dFrequency <= distance ? in_dSampleRate / in_dFrequency
                                     : std::min(in_dSampleRate / distance, longestMirroredPeriod);
}

double magnitudeOf(double in_dA, double in_dB) {
    const double square = in_dA * in_dA + in_dB * in_dB;
    if (square >= 0x1p-900 && square <= 0x1p1000) {
        return std::sqrt(square);
    }
    // The squares leave the range of doubles, but the magnitude doesn't.
    const double scale = square < 1.0 ? 0x1p700 : 0x1p-540;
    const double a = in_dA * scale;
    const double b = in_dB * scale;
    return std::sqrt(a * a + b * b) / scale;
}

/// The envelope at consecutive samples, each in the middle of its window, where a fit is its
/// constants alone. The samples are independent, so that vector registers change no bit.
template <std::size_t lanes>
void filterSideBySide(const double* in_pMiddle, const double* in_pCosineWeights,
                      const double* in_pSineWeights, std::size_t in_uiSize, double* out_pFirst) {
    double a[lanes] = {};
    double b[lanes] = {};
    for (std::size_t i = 0; i < in_uiSize; ++i) {
        const double* const behind = in_pMiddle + i;
        const double* const before = in_pMiddle - i;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            a[lane] += in_pCosineWeights[i] * (behind[lane] + before[lane]);
            b[lane] += in_pSineWeights[i] * (behind[lane] - before[lane]);
        }
    }
    for (std::size_t lane = 0; lane < lanes; ++lane) {
        out_pFirst[lane] = magnitudeOf(a[lane], b[lane]);
    }
}

} // namespace

bool DemodulatorAM::configure(std::size_t in_uiSampleRate, double in_dFrequency) {
    const auto sampleRate = static_cast<double>(in_uiSampleRate);
    if (in_uiSampleRate == 0 || !(in_dFrequency > 0.0) || in_dFrequency > 0.5 * sampleRate) {
        return false;
    }
    m_uiSampleRate = in_uiSampleRate;
    m_dFrequency = in_dFrequency;
    m_dPeriod = separatingPeriod(sampleRate, in_dFrequency);
    m_uiReach = static_cast<std::size_t>(std::min(reachInPeriods * m_dPeriod, largestReach));
    m_uiWindow = 0;
    return true;
}

bool DemodulatorAM::compute(const double* in_pFirst, const double* in_pLast, double* out_pFirst,
                            double* out_pLast) {
    if (m_uiSampleRate == 0 || in_pLast - in_pFirst != out_pLast - out_pFirst) {
        return false;
    }
    const auto count = static_cast<std::size_t>(in_pLast - in_pFirst);
    const std::size_t window = std::min(2 * m_uiReach + 1, count);
    if (static_cast<double>(window) < leastPeriods * m_dPeriod) {
        std::transform(in_pFirst, in_pLast, out_pFirst,
                       [](double value) { return std::fabs(value); });
        return true;
    }
    if (window != m_uiWindow) {
        prepare_i(window);
    }
    if (window == count) {
        evaluate_i(in_pFirst, 0, count, out_pFirst);
        return true;
    }

    const std::size_t reach = m_uiReach;
    const std::size_t behindMiddles = count - reach;
    evaluate_i(in_pFirst, 0, reach, out_pFirst);
    if (reach <= reachOfEverySample) {
        filter_i(in_pFirst + reach, behindMiddles - reach, out_pFirst + reach);
    } else {
        const std::size_t step = reach / (reachOfEverySample / 2);
        for (std::size_t middle = reach; middle < behindMiddles; middle += step) {
            const std::size_t length = std::min(step, behindMiddles - middle);
            evaluate_i(in_pFirst + (middle - reach), reach, reach + length, out_pFirst + middle);
        }
    }
    evaluate_i(in_pLast - window, reach + 1, window, out_pFirst + behindMiddles);
    return true;
}

void DemodulatorAM::prepare_i(std::size_t in_uiWindow) {
    makeQuadratureFilters(Sinusoid(m_uiSampleRate, m_dFrequency), in_uiWindow,
                          static_cast<double>(in_uiWindow) >= leastPeriodsForParabolas * m_dPeriod,
                          m_vFilters);
    m_uiWindow = in_uiWindow;
}

DemodulatorAM::Fit DemodulatorAM::fit_i(const double* in_pWindow) const {
    const std::size_t size = quadratureRowSize(m_uiWindow);
    const double* const behind = in_pWindow + m_uiWindow / 2;
    const double* const before = in_pWindow + (m_uiWindow - 1) / 2;
    double coefficients[QuadratureRows] = {};
    for (std::size_t i = 0; i < size; ++i) {
        const double sum = behind[i] + *(before - i);
        const double difference = behind[i] - *(before - i);
        const double* weight = m_vFilters.begin() + i;
        coefficients[CosineConstant] += weight[CosineConstant * size] * sum;
        coefficients[SineConstant] += weight[SineConstant * size] * difference;
        coefficients[CosineLinear] += weight[CosineLinear * size] * difference;
        coefficients[SineLinear] += weight[SineLinear * size] * sum;
        coefficients[CosineSquare] += weight[CosineSquare * size] * sum;
        coefficients[SineSquare] += weight[SineSquare * size] * difference;
    }
    return {{coefficients[CosineConstant], coefficients[CosineLinear], coefficients[CosineSquare]},
            {coefficients[SineConstant], coefficients[SineLinear], coefficients[SineSquare]}};
}

void DemodulatorAM::evaluate_i(const double* in_pWindow, std::size_t in_uiFrom, std::size_t in_uiTo,
                               double* out_pFrom) const {
    const Fit fit = fit_i(in_pWindow);
    const double unit = static_cast<double>(m_uiWindow + 1);
    const double middle = static_cast<double>(m_uiWindow - 1);
    for (std::size_t place = in_uiFrom; place < in_uiTo; ++place) {
        const double u = (2.0 * static_cast<double>(place) - middle) / unit;
        const double a = fit.m_dCosine[0] + u * (fit.m_dCosine[1] + u * fit.m_dCosine[2]);
        const double b = fit.m_dSine[0] + u * (fit.m_dSine[1] + u * fit.m_dSine[2]);
        *out_pFrom++ = magnitudeOf(a, b);
    }
}

void DemodulatorAM::filter_i(const double* in_pMiddle, std::size_t in_uiCount,
                             double* out_pFirst) const {
    constexpr std::size_t lanes = 8;
    const std::size_t size = quadratureRowSize(m_uiWindow);
    const double* const cosineWeights = m_vFilters.begin() + CosineConstant * size;
    const double* const sineWeights = m_vFilters.begin() + SineConstant * size;
    std::size_t i = 0;
    for (; i + lanes <= in_uiCount; i += lanes) {
        filterSideBySide<lanes>(in_pMiddle + i, cosineWeights, sineWeights, size, out_pFirst + i);
    }
    for (; i < in_uiCount; ++i) {
        filterSideBySide<1>(in_pMiddle + i, cosineWeights, sineWeights, size, out_pFirst + i);
    }
}

} // namespace Velmora::Math
