#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace Velmora::Benchmarks {

/// A detector of voice and tones as an engineer would write it by hand: one pass over the frame for
/// all sums, then a few numbers.
class DetectorReference {
public:
    static constexpr std::size_t TONES = 4;

    /// Level, speech, and the share of each tone.
    using Results = std::array<double, 2 + TONES>;

    struct Settings {
        double m_dSampleRate;
        std::array<double, TONES> m_Frequencies;
        /// The lowest energy that counts, not in decibels.
        double m_dMinimumEnergy;
        /// The weight of the threshold where the frame's energies don't tell.
        double m_dDefaultWeight;
        unsigned m_uiFramesOn;
        unsigned m_uiFramesOff;
    };

    DetectorReference(const Settings& in_Settings, std::size_t in_uiSize);

    void compute(const double* in_pFrame, Results& out_Results);

private:
    /// Cosine and sine about the middle of the frame, where they are orthogonal.
    struct Tone {
        std::vector<double> m_vCosine;
        std::vector<double> m_vSine;
        double m_dCosineScale = 0.0;
        double m_dSineScale = 0.0;
    };
    struct Sums {
        double m_dEnergy = 0.0;
        double m_Cosine[TONES] = {};
        double m_Sine[TONES] = {};
    };

    Sums addUp(const double* in_pFrame) const;
    bool isVoice(double in_dEnergy);
    bool debounce(bool in_bVoice);

    Settings m_Settings;
    std::size_t m_uiSize;
    std::array<Tone, TONES> m_Tones;

    bool m_bFirst = true;
    double m_dLargest = 0.0;
    double m_dSmallest = 0.0;
    double m_dPreviousSmallest = 0.0;

    bool m_bOn = false;
    unsigned m_uiFramesInOther = 0;
};

} // namespace Velmora::Benchmarks
