#pragma once

#include "SampleSource.h"

#include <memory>
#include <vector>

struct SRC_STATE_tag;

namespace Vxpr {

/// A source at another sample rate, band-limited, without delay and with about 120 dB between the
/// sound and what the conversion adds to it.
class Resampler : public SampleSource {
public:
    /// in_Source must outlive the resampler. Throws a Failure if the rates are too far apart.
    Resampler(SampleSource& in_Source, int in_iSampleRate);
    ~Resampler() override;
    Resampler(const Resampler&) = delete;
    Resampler& operator=(const Resampler&) = delete;

    std::size_t read(double* out_pSamples, std::size_t in_uiCount) override;
    int getSampleRate() const override { return m_iSampleRate; }
    std::optional<std::uint64_t> getLength() const override;
    bool isLive() const override { return m_Source.isLive(); }

private:
    void fillInput();

    SampleSource& m_Source;
    int m_iSampleRate;
    double m_dRatio;
    SRC_STATE_tag* m_pState = nullptr;
    std::vector<double> m_vSource;
    std::vector<float> m_vInput;
    std::size_t m_uiInputBegin = 0;
    std::size_t m_uiInputEnd = 0;
    bool m_bSourceEnded = false;
    std::vector<float> m_vOutput;
};

} // namespace Vxpr
