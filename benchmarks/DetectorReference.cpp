#include "DetectorReference.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "WideDouble.h"

namespace Velmora::Benchmarks {

namespace {

constexpr double DECAY_OF_LARGEST = 0.996;
constexpr double GROWTH_OF_SMALLEST = 1.0001;
constexpr double LEAST_WEIGHT = 0.95;
constexpr double MOST_WEIGHT = 0.999;

double toScale(const std::vector<double>& in_vTable) {
    double dSquares = 0.0;
    for (const double dValue : in_vTable) {
        dSquares += dValue * dValue;
    }
    return 1.0 / std::sqrt(dSquares);
}

} // namespace

DetectorReference::DetectorReference(const Settings& in_Settings, std::size_t in_uiSize)
    : m_Settings(in_Settings), m_uiSize(in_uiSize) {
    const double dMiddle = 0.5 * static_cast<double>(in_uiSize - 1);
    for (std::size_t uiTone = 0; uiTone != TONES; ++uiTone) {
        Tone& tone = m_Tones[uiTone];
        const double dStep =
            2.0 * M_PI * in_Settings.m_Frequencies[uiTone] / in_Settings.m_dSampleRate;
        for (std::size_t i = 0; i != in_uiSize; ++i) {
            const double dPhase = dStep * (static_cast<double>(i) - dMiddle);
            tone.m_vCosine.push_back(std::cos(dPhase));
            tone.m_vSine.push_back(std::sin(dPhase));
        }
        tone.m_dCosineScale = toScale(tone.m_vCosine);
        tone.m_dSineScale = toScale(tone.m_vSine);
    }
    m_dSmallest = m_dPreviousSmallest = in_Settings.m_dMinimumEnergy;
}

void DetectorReference::compute(const double* in_pFrame, Results& out_Results) {
    const Sums sums = addUp(in_pFrame);
    const double dPower = sums.m_dEnergy / static_cast<double>(m_uiSize);
    out_Results[0] = std::log(std::max(dPower, std::numeric_limits<double>::min()));
    out_Results[1] = debounce(isVoice(dPower)) ? 1.0 : 0.0;
    for (std::size_t uiTone = 0; uiTone != TONES; ++uiTone) {
        const double dCosine = sums.m_Cosine[uiTone] * m_Tones[uiTone].m_dCosineScale;
        const double dSine = sums.m_Sine[uiTone] * m_Tones[uiTone].m_dSineScale;
        const double dShare = (dCosine * dCosine + dSine * dSine) / sums.m_dEnergy;
        out_Results[2 + uiTone] = std::min(std::sqrt(dShare), 1.0);
    }
}

DetectorReference::Sums DetectorReference::addUp(const double* in_pFrame) const {
    Wide energy = {};
    Wide cosine[TONES] = {};
    Wide sine[TONES] = {};
    const double* cosines[TONES];
    const double* sines[TONES];
    for (std::size_t uiTone = 0; uiTone != TONES; ++uiTone) {
        cosines[uiTone] = m_Tones[uiTone].m_vCosine.data();
        sines[uiTone] = m_Tones[uiTone].m_vSine.data();
    }
    std::size_t i = 0;
    for (; i + WIDTH <= m_uiSize; i += WIDTH) {
        const Wide x = load(in_pFrame + i);
        energy += x * x;
        for (std::size_t uiTone = 0; uiTone != TONES; ++uiTone) {
            cosine[uiTone] += x * load(cosines[uiTone] + i);
            sine[uiTone] += x * load(sines[uiTone] + i);
        }
    }
    Sums sums;
    sums.m_dEnergy = Benchmarks::addUp(energy);
    for (std::size_t uiTone = 0; uiTone != TONES; ++uiTone) {
        sums.m_Cosine[uiTone] = Benchmarks::addUp(cosine[uiTone]);
        sums.m_Sine[uiTone] = Benchmarks::addUp(sine[uiTone]);
    }
    for (; i != m_uiSize; ++i) {
        sums.m_dEnergy += in_pFrame[i] * in_pFrame[i];
        for (std::size_t uiTone = 0; uiTone != TONES; ++uiTone) {
            sums.m_Cosine[uiTone] += in_pFrame[i] * cosines[uiTone][i];
            sums.m_Sine[uiTone] += in_pFrame[i] * sines[uiTone][i];
        }
    }
    return sums;
}

/// An adaptive threshold between the running extremes of the energy.
bool DetectorReference::isVoice(double in_dEnergy) {
    if (m_bFirst) {
        m_bFirst = false;
        m_dLargest = in_dEnergy;
    }
    double dGrowth = 1.0;
    if (in_dEnergy > 0.0) {
        if (in_dEnergy > m_dLargest) {
            m_dLargest = in_dEnergy;
        } else {
            m_dLargest *= DECAY_OF_LARGEST;
            if (m_dSmallest > in_dEnergy) {
                m_dSmallest = in_dEnergy;
            } else {
                dGrowth = GROWTH_OF_SMALLEST;
            }
        }
        if (m_dSmallest > m_dLargest) {
            m_dSmallest = m_Settings.m_dMinimumEnergy;
        }
    } else {
        m_dSmallest = m_Settings.m_dMinimumEnergy;
    }
    double dWeight =
        m_dLargest == 0.0 ? m_Settings.m_dDefaultWeight : (m_dLargest - m_dSmallest) / m_dLargest;
    if (dWeight > MOST_WEIGHT || dWeight < LEAST_WEIGHT) {
        dWeight = m_Settings.m_dDefaultWeight;
    }
    const bool bVoice = in_dEnergy > (1.0 - dWeight) * m_dLargest + dWeight * m_dSmallest;
    const double dSmallest = m_dSmallest;
    m_dSmallest = m_dPreviousSmallest * dGrowth;
    m_dPreviousSmallest = dSmallest;
    return bVoice;
}

bool DetectorReference::debounce(bool in_bVoice) {
    m_uiFramesInOther = in_bVoice == m_bOn ? 0 : m_uiFramesInOther + 1;
    const unsigned uiEnough = m_bOn ? m_Settings.m_uiFramesOff : m_Settings.m_uiFramesOn;
    if (m_uiFramesInOther >= uiEnough) {
        m_bOn = in_bVoice;
        m_uiFramesInOther = 0;
    }
    return m_bOn;
}

} // namespace Velmora::Benchmarks
