#include "Resampler.h"

#include "Failure.h"

#include <samplerate.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace Vxpr {

namespace {

/// A source that is being recorded is read in portions of 10 ms, another one in larger ones.
std::size_t choosePortion(const SampleSource& in_Source) {
    return in_Source.isLive() ? static_cast<std::size_t>(in_Source.getSampleRate()) / 100 + 1
                              : 4096;
}

} // namespace

Resampler::Resampler(SampleSource& in_Source, int in_iSampleRate)
    : m_Source(in_Source),
      m_iSampleRate(in_iSampleRate),
      m_dRatio(static_cast<double>(in_iSampleRate) / in_Source.getSampleRate()),
      m_vSource(choosePortion(in_Source)),
      m_vInput(m_vSource.size()),
      m_vOutput(4096) {
    if (src_is_valid_ratio(m_dRatio) == 0) {
        throw Failure::ofCommandLine(
            "can't resample from " + std::to_string(in_Source.getSampleRate()) + " Hz to --rate " +
            std::to_string(in_iSampleRate) + ": the rates are more than 256 times apart");
    }
    int iError = 0;
    m_pState = src_new(SRC_SINC_MEDIUM_QUALITY, 1, &iError);
    if (m_pState == nullptr) {
        throw Failure::ofData(std::string("can't resample: ") + src_strerror(iError));
    }
}

Resampler::~Resampler() {
    src_delete(m_pState);
}

std::optional<std::uint64_t> Resampler::getLength() const {
    const auto length = m_Source.getLength();
    if (!length) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(std::llround(static_cast<double>(*length) * m_dRatio));
}

void Resampler::fillInput() {
    if (m_uiInputBegin != m_uiInputEnd || m_bSourceEnded) {
        return;
    }
    m_uiInputBegin = 0;
    m_uiInputEnd = m_Source.read(m_vSource.data(), m_vSource.size());
    m_bSourceEnded = m_uiInputEnd < m_vSource.size();
    std::transform(m_vSource.begin(), m_vSource.begin() + static_cast<std::ptrdiff_t>(m_uiInputEnd),
                   m_vInput.begin(),
                   [](double in_dSample) { return static_cast<float>(in_dSample); });
}

std::size_t Resampler::read(double* out_pSamples, std::size_t in_uiCount) {
    std::size_t uiDone = 0;
    while (uiDone < in_uiCount) {
        fillInput();
        SRC_DATA data{};
        data.data_in = m_vInput.data() + m_uiInputBegin;
        data.input_frames = static_cast<long>(m_uiInputEnd - m_uiInputBegin);
        data.data_out = m_vOutput.data();
        data.output_frames = static_cast<long>(std::min(in_uiCount - uiDone, m_vOutput.size()));
        data.end_of_input = m_bSourceEnded ? 1 : 0;
        data.src_ratio = m_dRatio;
        const int iError = src_process(m_pState, &data);
        if (iError != 0) {
            throw Failure::ofData(std::string("can't resample: ") + src_strerror(iError));
        }
        m_uiInputBegin += static_cast<std::size_t>(data.input_frames_used);
        std::copy_n(m_vOutput.data(), data.output_frames_gen, out_pSamples + uiDone);
        uiDone += static_cast<std::size_t>(data.output_frames_gen);
        if (data.output_frames_gen == 0 && m_bSourceEnded && m_uiInputBegin == m_uiInputEnd) {
            break;
        }
    }
    return uiDone;
}

} // namespace Vxpr
