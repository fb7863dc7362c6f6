#include "Signal.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace Recordings {

namespace {

constexpr double halfPi = 1.5707963267948966;

/// The sine of an angle in turns: its series on a quarter of a turn, to 1e-11. The system's own
/// sine differs from machine to machine in its last bit.
double sineOf(double in_dTurns) {
    double turns = in_dTurns - std::floor(in_dTurns);
    double sign = 1.0;
    if (turns >= 0.5) {
        turns -= 0.5;
        sign = -1.0;
    }
    const double x = 4.0 * halfPi * std::min(turns, 0.5 - turns);
    double sum = 0.0;
    for (int power = 17; power >= 3; power -= 2) {
        sum = (1.0 - sum) * x * x / (power * (power - 1));
    }
    return sign * x * (1.0 - sum);
}

/// The phase of a tone at a sample, in turns. It is counted in whole parts of a turn, so that it is
/// exact however long the tone is.
double phaseAt(double in_dFrequency, double in_dPhase, std::size_t in_uiSample) {
    constexpr std::uint64_t turn = std::uint64_t(1) << 40;
    const auto step = static_cast<std::uint64_t>(
        std::llround(in_dFrequency / Signal::SampleRate * static_cast<double>(turn)));
    return in_dPhase + static_cast<double>(step * in_uiSample % turn) / static_cast<double>(turn);
}

} // namespace

std::size_t Signal::countSamples(double in_dSeconds) {
    return static_cast<std::size_t>(std::llround(in_dSeconds * SampleRate));
}

void Signal::addSilence(double in_dSeconds) {
    m_vSamples.resize(m_vSamples.size() + countSamples(in_dSeconds), 0.0);
}

void Signal::addTones(const std::vector<Tone>& in_vTones, double in_dSeconds) {
    const std::size_t count = countSamples(in_dSeconds);
    for (std::size_t i = 0; i < count; ++i) {
        double sum = 0.0;
        for (const Tone& tone : in_vTones) {
            sum += tone.m_dAmplitude * sineOf(phaseAt(tone.m_dFrequency, tone.m_dPhase, i));
        }
        m_vSamples.push_back(sum);
    }
}

void Signal::addModulated(const ModulatedTone& in_Tone, double in_dSeconds) {
    const std::size_t count = countSamples(in_dSeconds);
    const Tone& carrier = in_Tone.m_Carrier;
    for (std::size_t i = 0; i < count; ++i) {
        m_vSamples.push_back(envelopeAt(in_Tone, i) *
                             sineOf(phaseAt(carrier.m_dFrequency, carrier.m_dPhase, i)));
    }
}

void Signal::addSamples(const std::vector<double>& in_vSamples) {
    m_vSamples.insert(m_vSamples.end(), in_vSamples.begin(), in_vSamples.end());
}

void Signal::scale(double in_dFactor) {
    for (double& sample : m_vSamples) {
        sample *= in_dFactor;
    }
}

void Signal::mixNoise(double in_dPower, std::uint64_t in_uiSeed) {
    std::mt19937_64 random(in_uiSeed);
    const double deviation = std::sqrt(in_dPower);
    for (double& sample : m_vSamples) {
        // Twelve uniform numbers add up to a variance of one.
        double sum = -6.0;
        for (int i = 0; i < 12; ++i) {
            sum += static_cast<double>(random() >> 11) * 0x1p-53;
        }
        sample += deviation * sum;
    }
}

double Signal::power() const {
    double sum = 0.0;
    for (const double sample : m_vSamples) {
        sum += sample * sample;
    }
    return m_vSamples.empty() ? 0.0 : sum / static_cast<double>(m_vSamples.size());
}

std::vector<short> Signal::quantized() const {
    std::vector<short> result;
    result.reserve(m_vSamples.size());
    for (const double sample : m_vSamples) {
        const double value = std::floor(sample * 32768.0 + 0.5);
        result.push_back(static_cast<short>(std::clamp(value, -32768.0, 32767.0)));
    }
    return result;
}

double envelopeAt(const ModulatedTone& in_Tone, std::size_t in_uiSample) {
    const double swing = sineOf(phaseAt(in_Tone.m_dRate, in_Tone.m_dRatePhase, in_uiSample));
    return in_Tone.m_Carrier.m_dAmplitude * (1.0 + in_Tone.m_dDepth * swing);
}

double ratioOf(double in_dDecibels) {
    // exp(x) as the 1024th power of exp(x / 1024), for the same bits everywhere.
    const double x = in_dDecibels * 0.23025850929940458 / 1024.0;
    double result = 1.0;
    for (int term = 8; term >= 1; --term) {
        result = 1.0 + result * x / term;
    }
    for (int i = 0; i < 10; ++i) {
        result *= result;
    }
    return result;
}

} // namespace Recordings
