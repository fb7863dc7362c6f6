#include "tools/vxpr/Resampler.h"

#include "WaveFile.h"
#include "tools/vxpr/Failure.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Vxpr {

namespace {

class Samples : public SampleSource {
public:
    Samples(std::vector<double> in_vSamples, int in_iSampleRate, bool in_bLive = false)
        : m_vSamples(std::move(in_vSamples)), m_iSampleRate(in_iSampleRate), m_bLive(in_bLive) {}

    std::size_t read(double* out_pSamples, std::size_t in_uiCount) override {
        const std::size_t uiRead = std::min(in_uiCount, m_vSamples.size() - m_uiPosition);
        std::copy_n(m_vSamples.data() + m_uiPosition, uiRead, out_pSamples);
        m_uiPosition += uiRead;
        return uiRead;
    }
    int getSampleRate() const override { return m_iSampleRate; }
    std::optional<std::uint64_t> getLength() const override { return m_vSamples.size(); }
    bool isLive() const override { return m_bLive; }

private:
    std::vector<double> m_vSamples;
    int m_iSampleRate;
    bool m_bLive;
    std::size_t m_uiPosition = 0;
};

std::vector<double> resample(Samples& inout_Source, int in_iSampleRate) {
    Resampler resampler(inout_Source, in_iSampleRate);
    std::vector<double> vSamples(1 << 20);
    vSamples.resize(resampler.read(vSamples.data(), vSamples.size()));
    return vSamples;
}

} // namespace

TEST(ResamplerTest, ASinusoidKeepsItsFrequencyItsAmplitudeAndItsPhase) {
    for (const int iFrom : {4000, 11025, 16000, 44100}) {
        Samples source(TestSupport::makeTone(1000.0, 0.5, iFrom, static_cast<std::size_t>(iFrom)),
                       iFrom);
        const std::vector<double> vResult = resample(source, 8000);
        const std::vector<double> vExpected = TestSupport::makeTone(1000.0, 0.5, 8000, 8000);
        ASSERT_NEAR(static_cast<double>(vResult.size()), 8000.0, 1.0) << iFrom;
        for (std::size_t uiSample = 500; uiSample < 7500; ++uiSample) {
            ASSERT_NEAR(vResult[uiSample], vExpected[uiSample], 1e-4) << iFrom << ", " << uiSample;
        }
    }
}

TEST(ResamplerTest, WhatTheNewRateCantHoldIsTakenAway) {
    Samples source(TestSupport::makeTone(6000.0, 0.5, 16000, 16000), 16000);
    const std::vector<double> vResult = resample(source, 8000);
    // The sudden start and end of the sound are heard, whatever its frequency.
    for (std::size_t uiSample = 200; uiSample + 200 < vResult.size(); ++uiSample) {
        ASSERT_NEAR(vResult[uiSample], 0.0, 1e-5) << uiSample;
    }
}

TEST(ResamplerTest, ALiveSoundGivesTheSameSamples) {
    const std::vector<double> vTone = TestSupport::makeTone(1000.0, 0.5, 16000, 20000);
    Samples stored(vTone, 16000, false);
    Samples live(vTone, 16000, true);
    EXPECT_EQ(resample(stored, 8000), resample(live, 8000));
}

TEST(ResamplerTest, RatesThatAreTooFarApartAreRefused) {
    Samples source({}, 8000);
    EXPECT_THROW(Resampler(source, 8000 * 300), Failure);
}

TEST(ResamplerTest, TheLengthFollowsTheRate) {
    Samples source(std::vector<double>(16000), 16000);
    EXPECT_EQ(Resampler(source, 8000).getLength(), 8000U);
}

} // namespace Vxpr
