// Does examples/scripts/dtmf.xpr hear every key, and no key where there is none?

#include <gtest/gtest.h>

#include <cmath>

#include <recordings/Telephone.h>

#include "Detector.h"
#include "Prompts.h"
#include "RandomNumbers.h"

namespace Velmora::Testing {
namespace {

using Recordings::Dialling;
using Recordings::Signal;

constexpr Framing Overlapping{160, 80};
constexpr double NoiseRatio = 15.0;

/// The keys that come out one behind the other.
std::string keysIn(Detector& inout_Detector, const Signal& in_Signal) {
    std::string strKeys;
    double dBefore = 0.0;
    for (const double dKey : inout_Detector.runOne(in_Signal)) {
        if (dKey != dBefore && dKey != 0.0) {
            strKeys += Recordings::DialKeys[static_cast<int>(dKey) - 1];
        }
        dBefore = dKey;
    }
    return strKeys;
}

/// A sequence of ten keys such as the worst of the senders makes that must be understood: tones and
/// pauses from 50 ms on, frequencies off by up to 1.5 %, one tone up to 4 dB above the other.
struct Sequence {
    explicit Sequence(std::uint64_t in_uiSeed) {
        RandomNumbers random(in_uiSeed);
        Dialling dialling;
        dialling.m_dDetuning = random.between(0.985, 1.015);
        const double dRowPower = Recordings::ratioOf(random.between(-29.0, -11.0));
        const double dColumnPower = dRowPower * Recordings::ratioOf(random.between(-4.0, 4.0));
        dialling.m_dRowAmplitude = std::sqrt(2.0 * dRowPower);
        dialling.m_dColumnAmplitude = std::sqrt(2.0 * dColumnPower);
        m_Signal.addSilence(random.between(0.05, 0.1));
        for (int i = 0; i < 10; ++i) {
            dialling.m_dToneSeconds = random.between(0.05, 0.12);
            dialling.m_dPauseSeconds = random.between(0.05, 0.12);
            m_strKeys += Recordings::DialKeys[random.below(16)];
            Recordings::addKey(m_Signal, m_strKeys.back(), dialling);
        }
        m_Signal.mixNoise(Recordings::noisePower(dRowPower + dColumnPower, NoiseRatio), in_uiSeed);
    }

    std::string m_strKeys;
    Signal m_Signal;
};

TEST(DtmfTest, EveryKeyOfAHundredSequencesInNoiseIsFoundOnce) {
    Detector detector("dtmf", {"key"}, Overlapping);
    for (std::uint64_t uiSeed = 1; uiSeed <= 100; ++uiSeed) {
        const Sequence sequence(uiSeed);
        EXPECT_EQ(keysIn(detector, sequence.m_Signal), sequence.m_strKeys) << "seed " << uiSeed;
    }
}

TEST(DtmfTest, EachKeyHasItsNumber) {
    Detector detector("dtmf", {"key"}, Overlapping);
    Signal signal;
    signal.addSilence(0.1);
    for (const char* pKey = Recordings::DialKeys; *pKey != '\0'; ++pKey) {
        ASSERT_TRUE(Recordings::addKey(signal, *pKey, Dialling()));
    }
    EXPECT_EQ(keysIn(detector, signal), "123A456B789C*0#D");
}

TEST(DtmfTest, AKeyHeldForLongIsOneKeyAndTwoPressesAreTwo) {
    Detector detector("dtmf", {"key"}, Overlapping);
    Dialling dialling;
    Signal signal;
    signal.addSilence(0.1);
    dialling.m_dToneSeconds = 2.0;
    Recordings::addKey(signal, '5', dialling);
    dialling.m_dToneSeconds = dialling.m_dPauseSeconds = 0.05;
    Recordings::addKey(signal, '7', dialling);
    Recordings::addKey(signal, '7', dialling);
    EXPECT_EQ(keysIn(detector, signal), "577");
}

TEST(DtmfTest, SpeechHasNoKeys) {
    Detector detector("dtmf", {"key"}, Overlapping);
    const Signal speech = joinPrompts();
    ASSERT_GE(speech.samples().size(), Signal::countSamples(60.0));
    EXPECT_EQ(keysIn(detector, speech), "");
}

TEST(DtmfTest, NoiseAndSilenceHaveNoKeys) {
    Detector detector("dtmf", {"key"}, Overlapping);
    Signal signal;
    signal.addSilence(5.0);
    EXPECT_EQ(keysIn(detector, signal), "");
    signal.mixNoise(0.01, 1);
    EXPECT_EQ(keysIn(detector, signal), "");
}

TEST(DtmfTest, OneToneIsNoKey) {
    Detector detector("dtmf", {"key"}, Overlapping);
    for (const double dFrequency : {697.0, 770.0, 852.0, 941.0, 1209.0, 1336.0, 1477.0, 1633.0}) {
        Signal signal;
        signal.addTones({{dFrequency, 0.2, 0.0}}, 0.5);
        EXPECT_EQ(keysIn(detector, signal), "") << dFrequency;
    }
}

TEST(DtmfTest, DialToneAndTonesBetweenTheKeysAreNoKeys) {
    Detector detector("dtmf", {"key"}, Overlapping);
    for (const double dFrequency : {350.0, 425.0, 620.0, 1050.0, 1800.0, 2100.0}) {
        Signal signal;
        signal.addTones({{dFrequency, 0.2, 0.0}, {dFrequency + 90.0, 0.2, 0.0}}, 0.5);
        EXPECT_EQ(keysIn(detector, signal), "") << dFrequency;
    }
}

} // namespace
} // namespace Velmora::Testing
