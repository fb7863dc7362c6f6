#pragma once

#include <string>
#include <vector>

namespace Vxpr::TestSupport {

/// A sinusoid.
std::vector<double> makeTone(double in_dFrequency, double in_dAmplitude, int in_iSampleRate,
                             std::size_t in_uiSamples);

/// How a sound file is written.
struct WaveFormat {
    int m_iFormat = 0; ///< as libsndfile has it; 0 is a WAV file of 16 bits
    int m_iSampleRate = 8000;
    int m_iChannels = 1;
};

/// Writes interleaved samples to a sound file.
void writeWave(const std::string& in_strPath, const std::vector<double>& in_vSamples,
               const WaveFormat& in_Format = {});

/// The samples as they come without a header, 16 bits, little-endian.
std::string toRaw(const std::vector<double>& in_vSamples);

} // namespace Vxpr::TestSupport
