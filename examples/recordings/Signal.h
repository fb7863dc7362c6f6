#pragma once

#include <cstdint>
#include <vector>

namespace Recordings {

/// A sinusoid. Its amplitude is 1 at full scale, its phase counts in turns.
struct Tone {
    double m_dFrequency = 0.0;
    double m_dAmplitude = 0.0;
    double m_dPhase = 0.0;
};

/// A carrier of this amplitude on average, that swings by `m_dDepth` of it `m_dRate` times a
/// second.
struct ModulatedTone {
    Tone m_Carrier;
    double m_dRate = 0.0;
    double m_dDepth = 0.0;
    double m_dRatePhase = 0.0;
};

/// One channel of samples from -1 to 1 at 8000 Hz, in the making.
///
/// The same calls give the same samples on every machine: nothing but additions,
/// multiplications and square roots is used, and a generator of random numbers that the language
/// defines to the bit.
class Signal {
public:
    static constexpr int SampleRate = 8000;

    /// The number of samples in a time, rounded to the nearest.
    static std::size_t countSamples(double in_dSeconds);

    void addSilence(double in_dSeconds);
    /// Appends the sum of the tones.
    void addTones(const std::vector<Tone>& in_vTones, double in_dSeconds);
    void addModulated(const ModulatedTone& in_Tone, double in_dSeconds);
    void addSamples(const std::vector<double>& in_vSamples);

    /// Multiplies every sample.
    void scale(double in_dFactor);
    /// Adds white noise of a normal distribution, of this mean power, to every sample there is.
    void mixNoise(double in_dPower, std::uint64_t in_uiSeed);

    /// The mean of the squares; 0 without samples.
    double power() const;
    const std::vector<double>& samples() const { return m_vSamples; }

    /// The samples as a file of 16 bits holds them, clipped at full scale.
    std::vector<short> quantized() const;

private:
    std::vector<double> m_vSamples;
};

/// The envelope of a modulated tone at a sample, counted from the tone's first.
double envelopeAt(const ModulatedTone& in_Tone, std::size_t in_uiSample);

/// The ratio of two powers that are so many decibels apart.
double ratioOf(double in_dDecibels);

/// The power of the noise in which a signal of this power stands at that ratio.
inline double noisePower(double in_dSignalPower, double in_dDecibels) {
    return in_dSignalPower / ratioOf(in_dDecibels);
}

} // namespace Recordings
