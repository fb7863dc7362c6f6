// The recordings that the detectors are tried on.

#include <gtest/gtest.h>

#include <cmath>

#include <recordings/SoundFile.h>
#include <recordings/Telephone.h>

#include "Prompts.h"
#include "support/TempDirectory.h"

namespace Velmora::Testing {
namespace {

using namespace Recordings;

/// A number that stands for the samples (FNV-1a over their bytes).
std::uint64_t hashOf(const Signal& in_Signal) {
    std::uint64_t uiHash = 14695981039346656037U;
    for (const short iSample : in_Signal.quantized()) {
        const auto uiSample = static_cast<std::uint16_t>(iSample);
        for (const unsigned uiByte : {uiSample & 0xffU, unsigned(uiSample) >> 8}) {
            uiHash = (uiHash ^ uiByte) * 1099511628211U;
        }
    }
    return uiHash;
}

Signal makeEverything() {
    Signal signal;
    for (const char* pKey = DialKeys; *pKey != '\0'; ++pKey) {
        addKey(signal, *pKey, Dialling());
    }
    for (const Cadence& cadence : listCadences()) {
        addCadence(signal, cadence, {CadenceFrequency, 0.3, 0.125}, 0.3, 6.0);
    }
    signal.addModulated({{1000.0, 0.5, 0.0}, 3.0, 0.8, 0.1}, 1.0);
    signal.mixNoise(noisePower(signal.power(), 15.0), 42);
    return signal;
}

TEST(SignalTest, IsTheSameOnEveryMachine) {
    EXPECT_EQ(hashOf(makeEverything()), 15259305206597027399U);
}

TEST(SignalTest, TonesAreSines) {
    Signal signal;
    signal.addTones({{440.0, 0.5, 0.0}, {3999.0, 0.25, 0.3}}, 10.0);
    const double dTurn = 2.0 * std::acos(-1.0);
    for (std::size_t ui = 0; ui < signal.samples().size(); ui += 97) {
        const double dTime = static_cast<double>(ui) / Signal::SampleRate;
        EXPECT_NEAR(signal.samples()[ui],
                    0.5 * std::sin(dTurn * 440.0 * dTime) +
                        0.25 * std::sin(dTurn * (3999.0 * dTime + 0.3)),
                    1e-6);
    }
}

TEST(SignalTest, RatiosAreThoseOfDecibels) {
    for (const double dDecibels : {-60.0, -15.0, -0.5, 0.0, 3.0, 15.0, 30.0, 100.0}) {
        const double dExpected = std::pow(10.0, dDecibels / 10.0);
        EXPECT_NEAR(ratioOf(dDecibels) / dExpected, 1.0, 1e-9) << dDecibels;
    }
}

TEST(SignalTest, NoiseHasItsPowerAndNoMean) {
    Signal noise;
    noise.addSilence(60.0);
    noise.mixNoise(0.01, 9);
    EXPECT_NEAR(noise.power(), 0.01, 0.0001);
    double dSum = 0.0;
    for (const double dSample : noise.samples()) {
        dSum += dSample;
    }
    EXPECT_NEAR(dSum / static_cast<double>(noise.samples().size()), 0.0, 0.001);
}

TEST(SignalTest, AnotherSeedIsAnotherNoise) {
    Signal first;
    first.addSilence(0.1);
    Signal second = first;
    first.mixNoise(0.01, 1);
    second.mixNoise(0.01, 2);
    EXPECT_NE(hashOf(first), hashOf(second));
}

TEST(SignalTest, SamplesBeyondFullScaleAreClipped) {
    Signal signal;
    signal.addSamples({2.0, -2.0, 0.5, 0.0});
    EXPECT_EQ(signal.quantized(), (std::vector<short>{32767, -32768, 16384, 0}));
}

TEST(SignalTest, ACadenceGoesOnFromAnyPlaceWithinIt) {
    const Tone tone{CadenceFrequency, 0.5, 0.25};
    Signal signal;
    addCadence(signal, {"", {0.5, 0.25}}, tone, 0.625, 1.0);
    ASSERT_EQ(signal.samples().size(), 8000U);
    const auto isOn = [&](double in_dTime) {
        Signal part;
        const auto iFirst = static_cast<std::ptrdiff_t>(Signal::countSamples(in_dTime));
        const auto ite = signal.samples().begin() + iFirst;
        part.addSamples({ite, ite + 160});
        return part.power() > 0.01;
    };
    EXPECT_FALSE(isOn(0.1));
    EXPECT_TRUE(isOn(0.13));
    EXPECT_TRUE(isOn(0.6));
    EXPECT_FALSE(isOn(0.63));
    EXPECT_FALSE(isOn(0.85));
    EXPECT_TRUE(isOn(0.88));
}

TEST(SignalTest, WhatIsNoKeyAddsNothing) {
    Signal signal;
    EXPECT_FALSE(addKey(signal, 'x', Dialling()));
    EXPECT_FALSE(addKey(signal, '\0', Dialling()));
    EXPECT_TRUE(signal.samples().empty());
}

TEST(SignalTest, AFileHoldsTheRoundedSamples) {
    const TempDirectory directory;
    const std::string strPath = directory.path("keys.wav");
    Signal signal;
    addKey(signal, '5', Dialling());
    writeSound(strPath, signal);
    EXPECT_EQ(readSound(strPath).quantized(), signal.quantized());
    EXPECT_THROW(readSound(strPath + "x"), std::runtime_error);
}

TEST(PromptsTest, LabelsAreInOrderWithinTheirRecordings) {
    for (const Prompt& prompt : listPrompts()) {
        double dBefore = 0.0;
        for (const Label& label : prompt.m_vLabels) {
            EXPECT_GE(label.m_dStart, dBefore) << prompt.m_strName;
            dBefore = label.m_dEnd;
        }
        EXPECT_LE(Signal::countSamples(dBefore), prompt.m_Signal.samples().size())
            << prompt.m_strName;
    }
}

} // namespace
} // namespace Velmora::Testing
