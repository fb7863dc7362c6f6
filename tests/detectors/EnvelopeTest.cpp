// Does examples/scripts/envelope.xpr follow a carrier's amplitude?

#include <gtest/gtest.h>

#include <cmath>

#include "Detector.h"

namespace Velmora::Testing {
namespace {

using Recordings::ModulatedTone;
using Recordings::Signal;

constexpr std::size_t FrameSize = 160;
constexpr std::size_t FirstInner = 8;
constexpr double Seconds = 2.0;
constexpr double Carrier = 1000.0;

const std::vector<double> Rates{0.5, 2.0, 7.0, 20.0, 50.0, 90.0};
const std::vector<double> Depths{0.0, 0.1, 0.5, 0.9, 1.0};

std::vector<ModulatedTone> listTones() {
    std::vector<ModulatedTone> vTones;
    for (const double dRate : Rates) {
        for (const double dDepth : Depths) {
            const double dPhase = 0.1 * static_cast<double>(vTones.size());
            vTones.push_back({{Carrier, 0.4, dPhase}, dRate, dDepth, 0.7 * dPhase});
        }
    }
    return vTones;
}

/// The tone without noise, or with noise so many decibels below its mean power.
Signal makeSignal(const ModulatedTone& in_Tone, double in_dRatio = 0.0) {
    Signal signal;
    signal.addModulated(in_Tone, Seconds);
    if (in_dRatio > 0.0) {
        signal.mixNoise(Recordings::noisePower(signal.power(), in_dRatio), 11);
    }
    return signal;
}

/// The root of the mean square of the errors of `inner`, as a share of the unmodulated amplitude.
double errorOf(Detector& inout_Detector, const ModulatedTone& in_Tone, const Signal& in_Signal) {
    double dSquares = 0.0;
    std::size_t uiCount = 0;
    std::size_t uiStart = FirstInner;
    for (const Detector::Row& row : inout_Detector.run(in_Signal)) {
        for (std::size_t ui = 0; ui != row[0].size(); ++ui) {
            const double dError = row[0][ui] - Recordings::envelopeAt(in_Tone, uiStart + ui);
            dSquares += dError * dError;
        }
        EXPECT_EQ(row[0].size(), FrameSize - 2 * FirstInner);
        uiCount += row[0].size();
        uiStart += FrameSize;
    }
    return std::sqrt(dSquares / static_cast<double>(uiCount)) / in_Tone.m_Carrier.m_dAmplitude;
}

std::string describe(const ModulatedTone& in_Tone) {
    return std::to_string(in_Tone.m_dRate) + " Hz, depth " + std::to_string(in_Tone.m_dDepth);
}

TEST(EnvelopeTest, FollowsEveryModulationWithinOnePercent) {
    Detector detector("envelope", {"inner"});
    for (const ModulatedTone& tone : listTones()) {
        EXPECT_LE(errorOf(detector, tone, makeSignal(tone)), 0.01) << describe(tone);
    }
}

TEST(EnvelopeTest, FollowsEveryModulationInNoiseWithinThreePercent) {
    Detector detector("envelope", {"inner"});
    for (const ModulatedTone& tone : listTones()) {
        EXPECT_LE(errorOf(detector, tone, makeSignal(tone, 30.0)), 0.03) << describe(tone);
    }
}

TEST(EnvelopeTest, StrengthIsTheMiddleOfASlowSwingWithinFivePercent) {
    Detector detector("envelope", {"strength"});
    for (const ModulatedTone& tone : listTones()) {
        if (tone.m_dRate > 10.0) {
            continue;
        }
        const std::vector<double> vStrengths = detector.runOne(makeSignal(tone, 30.0));
        for (std::size_t ui = 0; ui != vStrengths.size(); ++ui) {
            const double dExpected = Recordings::envelopeAt(tone, ui * FrameSize + FrameSize / 2);
            ASSERT_NEAR(vStrengths[ui], dExpected, 0.05 * tone.m_Carrier.m_dAmplitude)
                << describe(tone) << ", frame " << ui;
        }
    }
}

TEST(EnvelopeTest, DepthIsThatOfTheModulation) {
    Detector detector("envelope", {"depth"});
    for (const ModulatedTone& tone : listTones()) {
        if (tone.m_dRate < 1.0 || tone.m_dRate > 10.0) {
            continue;
        }
        const std::vector<double> vDepths = detector.runOne(makeSignal(tone, 30.0));
        for (std::size_t ui = 50; ui != vDepths.size(); ++ui) {
            ASSERT_NEAR(vDepths[ui], tone.m_dDepth, 0.05) << describe(tone) << ", frame " << ui;
        }
    }
}

TEST(EnvelopeTest, SilenceHasNeitherStrengthNorDepth) {
    Detector detector("envelope", {"strength", "depth"});
    Signal silence;
    silence.addSilence(1.0);
    for (const Detector::Row& row : detector.run(silence)) {
        EXPECT_EQ(row, (Detector::Row{{0.0}, {0.0}}));
    }
}

} // namespace
} // namespace Velmora::Testing
