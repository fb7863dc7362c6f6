#include "WaveFile.h"

#include <sndfile.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace Vxpr::TestSupport {

std::vector<double> makeTone(double in_dFrequency, double in_dAmplitude, int in_iSampleRate,
                             std::size_t in_uiSamples) {
    std::vector<double> vSamples(in_uiSamples);
    const double dStep = 2.0 * std::acos(-1.0) * in_dFrequency / in_iSampleRate;
    for (std::size_t uiSample = 0; uiSample < in_uiSamples; ++uiSample) {
        vSamples[uiSample] = in_dAmplitude * std::sin(dStep * static_cast<double>(uiSample));
    }
    return vSamples;
}

void writeWave(const std::string& in_strPath, const std::vector<double>& in_vSamples,
               const WaveFormat& in_Format) {
    SF_INFO info{};
    info.format = in_Format.m_iFormat != 0 ? in_Format.m_iFormat : SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    info.samplerate = in_Format.m_iSampleRate;
    info.channels = in_Format.m_iChannels;
    SNDFILE* pFile = sf_open(in_strPath.c_str(), SFM_WRITE, &info);
    if (pFile == nullptr) {
        throw std::runtime_error(sf_strerror(nullptr));
    }
    sf_write_double(pFile, in_vSamples.data(), static_cast<sf_count_t>(in_vSamples.size()));
    sf_close(pFile);
}

std::string toRaw(const std::vector<double>& in_vSamples) {
    std::string strBytes;
    for (const double dSample : in_vSamples) {
        const auto uiBits = static_cast<std::uint16_t>(std::lround(dSample * 32767.0));
        strBytes.push_back(static_cast<char>(uiBits & 0xff));
        strBytes.push_back(static_cast<char>(uiBits >> 8));
    }
    return strBytes;
}

} // namespace Vxpr::TestSupport
