// Does examples/scripts/vad.xpr find the speech that was labelled by eye?

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "Detector.h"
#include "Prompts.h"

namespace Velmora::Testing {
namespace {

using Recordings::Signal;

constexpr std::size_t FrameSize = 160;

/// What was marked as speech, of the frames that lie wholly in a labelled stretch.
struct Tally {
    void add(bool in_bSpeech, bool in_bMarked) {
        (in_bSpeech ? m_uiSpeech : m_uiSilence) += 1;
        (in_bSpeech ? m_uiSpeechMarked : m_uiSilenceMarked) += in_bMarked ? 1 : 0;
    }
    double speechFound() const {
        return static_cast<double>(m_uiSpeechMarked) / static_cast<double>(m_uiSpeech);
    }
    double silenceMarked() const {
        return static_cast<double>(m_uiSilenceMarked) / static_cast<double>(m_uiSilence);
    }

    std::size_t m_uiSpeech = 0;
    std::size_t m_uiSpeechMarked = 0;
    std::size_t m_uiSilence = 0;
    std::size_t m_uiSilenceMarked = 0;
};

/// Everything but the labels of a prompt is left out: the borders of speech are a matter of taste.
void compare(const Prompt& in_Prompt, const std::vector<double>& in_vMarks, Tally& inout_Tally) {
    for (std::size_t ui = 0; ui != in_vMarks.size(); ++ui) {
        const std::size_t uiStart = ui * FrameSize;
        for (const Label& label : in_Prompt.m_vLabels) {
            if (uiStart >= Signal::countSamples(label.m_dStart) &&
                uiStart + FrameSize <= Signal::countSamples(label.m_dEnd)) {
                inout_Tally.add(label.m_bSpeech, in_vMarks[ui] != 0.0);
            }
        }
    }
}

struct Setting {
    double m_dRatio = 0.0;
    double m_dGain = 1.0;
};

class VoiceActivityPromptsTest : public ::testing::TestWithParam<Setting> {};

TEST_P(VoiceActivityPromptsTest, SpeechIsFoundAndSilenceIsNotMarked) {
    Detector detector("vad", {"speech"});
    Tally all;
    std::uint64_t uiSeed = 0;
    for (const Prompt& prompt : listPrompts()) {
        Signal signal = prompt.m_Signal;
        signal.mixNoise(Recordings::noisePower(prompt.speechPower(), GetParam().m_dRatio),
                        ++uiSeed);
        signal.scale(GetParam().m_dGain);
        Tally one;
        const std::vector<double> vMarks = detector.runOne(signal);
        compare(prompt, vMarks, one);
        compare(prompt, vMarks, all);
        EXPECT_GE(one.speechFound(), 0.95) << prompt.m_strName;
    }
    // Some prompts have few pauses: they count together.
    ASSERT_GT(all.m_uiSilence, 150U);
    EXPECT_GE(all.speechFound(), 0.95);
    EXPECT_LE(all.silenceMarked(), 0.05);
}

INSTANTIATE_TEST_SUITE_P(Noise, VoiceActivityPromptsTest,
                         ::testing::Values(Setting{30.0, 1.0}, Setting{15.0, 1.0},
                                           Setting{30.0, 0.1}, Setting{15.0, 0.1}),
                         [](const auto& in_info) {
                             return std::to_string(std::lround(in_info.param.m_dRatio)) +
                                    (in_info.param.m_dGain < 1.0 ? "dBSoft" : "dB");
                         });

double shareOfMarks(const std::vector<double>& in_vMarks) {
    const auto iMarks = std::count(in_vMarks.begin(), in_vMarks.end(), 1.0);
    return static_cast<double>(iMarks) / static_cast<double>(in_vMarks.size());
}

TEST(VoiceActivityTest, AMinuteOfNoiseIsNoSpeech) {
    Detector detector("vad", {"speech"});
    for (const double dPower : {1e-6, 1e-4, 1e-3}) {
        Signal noise;
        noise.addSilence(60.0);
        noise.mixNoise(dPower, 7);
        EXPECT_LE(shareOfMarks(detector.runOne(noise)), 0.05) << dPower;
    }
}

TEST(VoiceActivityTest, DigitalSilenceIsNoSpeech) {
    Detector detector("vad", {"speech"});
    Signal silence;
    silence.addSilence(5.0);
    EXPECT_EQ(shareOfMarks(detector.runOne(silence)), 0.0);
}

TEST(VoiceActivityTest, TheHangoverKeepsAPauseOfFourFramesAndEndsOnTheFifth) {
    Detector detector("vad", {"speech"});
    const double dFrame = static_cast<double>(FrameSize) / Signal::SampleRate;
    Signal signal;
    signal.addSilence(10 * dFrame);
    signal.addTones({{500.0, 0.3, 0.0}}, 5 * dFrame);
    signal.addSilence(4 * dFrame);
    signal.addTones({{500.0, 0.3, 0.0}}, 5 * dFrame);
    signal.addSilence(10 * dFrame);
    signal.mixNoise(1e-6, 3);
    std::string strMarks;
    for (const double dMark : detector.runOne(signal)) {
        strMarks += dMark == 1.0 ? '1' : '0';
    }
    EXPECT_EQ(strMarks, "0000000000"
                        "11111111111111"
                        "1111000000");
}

TEST(VoiceActivityTest, SpeechBehindAMinuteOfNoiseIsFound) {
    Detector detector("vad", {"speech"});
    const Prompt& prompt = listPrompts().front();
    Signal signal;
    signal.addSilence(60.0);
    signal.addSamples(prompt.m_Signal.samples());
    signal.mixNoise(Recordings::noisePower(prompt.speechPower(), 15.0), 5);
    std::vector<double> vMarks = detector.runOne(signal);
    vMarks.erase(vMarks.begin(), vMarks.begin() + 3000);
    Tally tally;
    compare(prompt, vMarks, tally);
    EXPECT_GE(tally.speechFound(), 0.95);
    EXPECT_LE(tally.silenceMarked(), 0.05);
}

} // namespace
} // namespace Velmora::Testing
