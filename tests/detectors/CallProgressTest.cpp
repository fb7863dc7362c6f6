// Does examples/scripts/progress.xpr tell dial tone, busy and ringback apart?

#include <gtest/gtest.h>

#include <cmath>

#include <recordings/Telephone.h>

#include "Detector.h"
#include "Prompts.h"
#include "RandomNumbers.h"

namespace Velmora::Testing {
namespace {

using namespace Recordings;

constexpr std::size_t FramesPerSecond = 50;
constexpr double NoiseRatio = 15.0;

/// The names of what is found on each frame, joined by "+".
std::vector<std::string> statesOf(Detector& inout_Detector, const Signal& in_Signal) {
    std::vector<std::string> vStates;
    for (const Detector::Row& row : inout_Detector.run(in_Signal)) {
        std::string strState;
        for (std::size_t ui = 0; ui != listCadences().size(); ++ui) {
            if (row[ui].front() != 0.0) {
                strState += (strState.empty() ? "" : "+") + listCadences()[ui].m_strName;
            }
        }
        vStates.push_back(strState);
    }
    return vStates;
}

/// What is told, in its order, and anew only when something else has been told in between.
std::string changesIn(const std::vector<std::string>& in_vStates) {
    std::string strChanges;
    std::string strBefore;
    for (const std::string& strState : in_vStates) {
        if (strState != strBefore && !strState.empty()) {
            strChanges += (strChanges.empty() ? "" : " ") + strState;
            strBefore = strState;
        }
    }
    return strChanges;
}

Detector makeDetector() {
    std::vector<std::string> vNames;
    for (const Cadence& cadence : listCadences()) {
        vNames.push_back(cadence.m_strName);
    }
    return Detector("progress", vNames);
}

/// A call begins anywhere within the cadence. Exchanges are off by 5 % in time, 10 Hz in frequency.
Signal makeCall(Cadence in_Cadence, std::uint64_t in_uiSeed) {
    RandomNumbers random(in_uiSeed);
    for (double& dSeconds : in_Cadence.m_vSeconds) {
        dSeconds *= random.between(0.95, 1.05);
    }
    const Tone tone{CadenceFrequency + random.between(-10.0, 10.0), random.between(0.02, 0.4),
                    random.between(0.0, 1.0)};
    Signal signal;
    addCadence(signal, in_Cadence, tone, random.between(0.0, 5.0), 20.0);
    signal.mixNoise(noisePower(0.5 * tone.m_dAmplitude * tone.m_dAmplitude, NoiseRatio), in_uiSeed);
    return signal;
}

struct Expectation {
    std::size_t m_uiCadence = 0; ///< in the list
    /// From here on every frame must tell it.
    double m_dSeconds = 0.0;
};

class CallProgressTest : public ::testing::TestWithParam<Expectation> {};

TEST_P(CallProgressTest, IsFoundInNoiseAndTakenForNothingElse) {
    Detector detector = makeDetector();
    const Cadence& cadence = listCadences()[GetParam().m_uiCadence];
    const auto uiFirst = static_cast<std::size_t>(
        std::lround(GetParam().m_dSeconds * static_cast<double>(FramesPerSecond)));
    for (std::uint64_t uiSeed = 1; uiSeed <= 10; ++uiSeed) {
        const auto vStates = statesOf(detector, makeCall(cadence, uiSeed));
        EXPECT_EQ(changesIn(vStates), cadence.m_strName) << "seed " << uiSeed;
        for (std::size_t ui = uiFirst; ui < vStates.size(); ++ui) {
            ASSERT_EQ(vStates[ui], cadence.m_strName) << "seed " << uiSeed << ", frame " << ui;
        }
    }
}

// A ringback that begins with its pause has its second burst after nine seconds.
INSTANTIATE_TEST_SUITE_P(Each, CallProgressTest,
                         ::testing::Values(Expectation{0, 2.1}, Expectation{1, 4.5},
                                           Expectation{2, 11.2}),
                         [](const auto& in_info) {
                             return listCadences()[in_info.param.m_uiCadence].m_strName;
                         });

TEST(CallProgressSequenceTest, ACallIsToldFromItsBeginningToItsEnd) {
    Detector detector = makeDetector();
    const Tone tone{CadenceFrequency, 0.1, 0.0};
    Signal signal;
    addCadence(signal, listCadences()[0], tone, 0.0, 5.0);
    signal.addSilence(4.0);
    addCadence(signal, listCadences()[2], tone, 0.0, 21.0);
    signal.addSamples(listPrompts().front().m_Signal.samples());
    addCadence(signal, listCadences()[1], tone, 0.0, 8.0);
    signal.mixNoise(noisePower(0.005, NoiseRatio), 3);
    EXPECT_EQ(changesIn(statesOf(detector, signal)), "dial ringback busy");
}

TEST(CallProgressSequenceTest, SpeechIsNone) {
    Detector detector = makeDetector();
    EXPECT_EQ(changesIn(statesOf(detector, joinPrompts())), "");
}

TEST(CallProgressSequenceTest, NoiseAndSilenceAreNone) {
    Detector detector = makeDetector();
    Signal signal;
    signal.addSilence(15.0);
    EXPECT_EQ(changesIn(statesOf(detector, signal)), "");
    signal.mixNoise(0.01, 4);
    EXPECT_EQ(changesIn(statesOf(detector, signal)), "");
}

TEST(CallProgressSequenceTest, OtherCadencesAndFrequenciesAreNone) {
    Detector detector = makeDetector();
    const Tone tone{CadenceFrequency, 0.2, 0.0};
    const auto statesOfCadence = [&](const std::vector<double>& in_vSeconds, const Tone& in_Tone) {
        Signal signal;
        addCadence(signal, {"", in_vSeconds}, in_Tone, 0.0, 20.0);
        return changesIn(statesOf(detector, signal));
    };
    // Congestion, a single beep, a slow and a quick beeper, and a tone too short for a dial tone.
    EXPECT_EQ(statesOfCadence({0.25, 0.25}, tone), "");
    EXPECT_EQ(statesOfCadence({1.0, 20.0}, tone), "");
    EXPECT_EQ(statesOfCadence({1.0, 1.0}, tone), "");
    EXPECT_EQ(statesOfCadence({0.1, 0.4}, tone), "");
    EXPECT_EQ(statesOfCadence({1.8, 20.0}, tone), "");
    EXPECT_EQ(statesOfCadence({0.5, 0.5}, {500.0, 0.2, 0.0}), "");
    EXPECT_EQ(statesOfCadence({20.0, 1.0}, {350.0, 0.2, 0.0}), "");
}

} // namespace
} // namespace Velmora::Testing
