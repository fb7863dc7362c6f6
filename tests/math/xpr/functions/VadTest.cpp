#include <cmath>
#include <limits>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* Logger = "quillmark.math.xpr.functions.vad";
constexpr log4cplus::LogLevel Error = log4cplus::ERROR_LOG_LEVEL;
constexpr log4cplus::LogLevel Debug = log4cplus::DEBUG_LOG_LEVEL;
constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr double Inf = std::numeric_limits<double>::infinity();

BuiltIn makeVad(const ParameterValue& in_level, const ParameterValue& in_sensitivity) {
    BuiltIn vad("vad");
    vad.set("minimumEnergyDBm", in_level);
    vad.set("sensitivity", in_sensitivity);
    return vad;
}

BuiltIn makeConfiguredVad(float in_fLevel = -35.0F, int in_iSensitivity = 2) {
    BuiltIn vad = makeVad(in_fLevel, in_iSensitivity);
    EXPECT_TRUE(vad.configure());
    return vad;
}

/// The threshold that the line of the last frame tells, to the digits of the line.
double thresholdOf(const LogCapture& in_log) {
    const std::string strMessage = in_log.messages(Debug).back();
    const std::string strBefore = "since treshhold is currently ";
    return std::stod(strMessage.substr(strMessage.find(strBefore) + strBefore.size()));
}

struct Refused {
    ParameterValue level;
    ParameterValue sensitivity;
    std::string message;
};

void PrintTo(const Refused& in_refused, std::ostream* out_pStream) {
    *out_pStream << '<' << in_refused.level << ", " << in_refused.sensitivity << '>';
}

class VadRefusedTest : public ::testing::TestWithParam<Refused> {};

TEST_P(VadRefusedTest, CantBeConfiguredAndSaysWhy) {
    const LogCapture log(Logger);
    EXPECT_FALSE(makeVad(GetParam().level, GetParam().sensitivity).configure());
    EXPECT_THAT(log.messages(Error), ElementsAre(GetParam().message));
    EXPECT_EQ(log.lines().size(), 1U);
}

const std::string NoSensitivity = "Could not find parameter sensitivity in configuration";
const std::string BadSensitivity =
    "Invalid value in parameter sensitivityThis parameter must be in range [0,1,2,3,4]";
const std::string NoLevel = "Could not find parameter minimumEnergyDBm in configuration";
const std::string BadLevel = "Invalid value in parameter minimumEnergyDBmThis parameter must be "
                             "negative specified in dbov.";

INSTANTIATE_TEST_SUITE_P(
    Parameters, VadRefusedTest,
    ::testing::Values(Refused{-35.0F, ParameterValue(), NoSensitivity},
                      Refused{-35.0F, 2.0F, NoSensitivity}, Refused{-35.0F, "2", NoSensitivity},
                      Refused{-35.0F, -1, BadSensitivity}, Refused{-35.0F, 5, BadSensitivity},
                      Refused{ParameterValue(), 2, NoLevel}, Refused{-35, 2, NoLevel},
                      Refused{0.0F, 2, BadLevel}, Refused{3.5F, 2, BadLevel},
                      Refused{std::numeric_limits<float>::infinity(), 2, BadLevel},
                      Refused{std::numeric_limits<float>::quiet_NaN(), 2, BadLevel}));

TEST(VadTest, GivesNoResultBeforeItIsConfigured) {
    BuiltIn vad("vad");
    const LogCapture log(Logger);
    EXPECT_EQ(vad({{1}}), "no result");
    EXPECT_TRUE(vad.reset());
    EXPECT_EQ(vad({{1}}), "no result");
    EXPECT_EQ(log.count(Error, "Function is not configured! Please call configure() prior to "
                               "calculate()"),
              2U);
}

TEST(VadTest, GoesOnWhenALaterConfigurationFails) {
    BuiltIn vad = makeConfiguredVad();
    vad.set("minimumEnergyDBm", 1.0F);
    EXPECT_FALSE(vad.configure());
    EXPECT_EQ(vad({{1}}), "[1]");
}

TEST(VadTest, AnEmptyFrameFailsTheAssertionAndGivesNoResult) {
    const AssertionCapture assertions;
    EXPECT_EQ(makeConfiguredVad()({{}}), "no result");
    EXPECT_THAT(assertions.expressions(), ElementsAre("ite->second->average(dCurrentEnergy)"));
}

TEST(VadTest, DecidesByTheMeanOfTheFrame) {
    EXPECT_EQ(makeConfiguredVad()({{0.004, -0.004}}), "[0]");
    EXPECT_EQ(makeConfiguredVad()({{1, 1, -1, 1}}), "[1]");
}

// The whole of a first frame: max = 1 * 0.996, weight = (0.996 - 0.001) / 0.996,
// threshold = (1 - weight) * 0.996 + weight * 0.001.
TEST(VadTest, TellsEnergyAndThresholdOfAFrameOfVoice) {
    BuiltIn vad = makeConfiguredVad(-35.0F, 2);
    const LogCapture log(Logger);
    EXPECT_EQ(vad({{1.0}}), "[1]");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].level, Debug);
    EXPECT_THAT(log.lines()[0].message,
                HasSubstr("FunctionVad::calculate : Marking frame with Energy 1 as voice since "
                          "treshhold is currently 0.00199"));
    EXPECT_NEAR(thresholdOf(log), 0.002, 1e-5);
}

TEST(VadTest, TellsEnergyAndThresholdOfAFrameOfSilence) {
    BuiltIn vad = makeConfiguredVad(-35.0F, 2);
    const LogCapture log(Logger);
    EXPECT_EQ(vad({{0.0}}), "[0]");
    EXPECT_THAT(log.messages(Debug),
                ElementsAre("FunctionVad::calculate : Marking frame with Energy 0 as silence since "
                            "treshhold is currently 0.0009745"));
}

TEST(VadTest, TracesEachFrame) {
    BuiltIn vad = makeConfiguredVad();
    const LogCapture log(Logger, log4cplus::TRACE_LOG_LEVEL);
    vad({{1.0}});
    EXPECT_EQ(log.count(log4cplus::TRACE_LOG_LEVEL, "FunctionVad::calculate"), 2U);
}

TEST(VadTest, OnlyZerosAreSilence) {
    BuiltIn vad = makeConfiguredVad();
    const AssertionCapture assertions;
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(vad({{0, 0, 0}}), "[0]");
    }
    EXPECT_THAT(assertions.expressions(), IsEmpty());
}

/// The weight that a silent first frame shows: its threshold is the weight times the floor.
class VadSensitivityTest : public ::testing::TestWithParam<std::pair<int, double>> {};

TEST_P(VadSensitivityTest, HasItsDefaultWeight) {
    BuiltIn vad = makeConfiguredVad(-9.0F, GetParam().first);
    const LogCapture log(Logger);
    vad({{0.0}});
    EXPECT_DOUBLE_EQ(thresholdOf(log), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Weights, VadSensitivityTest,
                         ::testing::Values(std::pair(0, 0.999), std::pair(1, 0.98675),
                                           std::pair(2, 0.9745), std::pair(3, 0.96225),
                                           std::pair(4, 0.95)));

/// The floor that a silent first frame shows.
class VadFloorTest : public ::testing::TestWithParam<std::pair<float, double>> {};

TEST_P(VadFloorTest, MovesInWholeDecades) {
    BuiltIn vad = makeConfiguredVad(GetParam().first, 4);
    const LogCapture log(Logger);
    vad({{0.0}});
    EXPECT_DOUBLE_EQ(thresholdOf(log) / 0.95, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(
    Levels, VadFloorTest,
    ::testing::Values(std::pair(-0.5F, 1.0), std::pair(-5.0F, 1.0), std::pair(-9.99F, 1.0),
                      std::pair(-10.0F, 0.1), std::pair(-35.0F, 0.001), std::pair(-35.5F, 0.001),
                      std::pair(-39.9F, 0.001), std::pair(-3100.0F, 0.0), std::pair(-1e30F, 0.0),
                      std::pair(-std::numeric_limits<float>::infinity(), 0.0)));

TEST(VadTest, ThresholdFollowsTheRunningExtremes) {
    BuiltIn vad = makeConfiguredVad(-35.0F, 2);
    const LogCapture log(Logger);
    // The default weight applies: the range is too narrow.
    EXPECT_EQ(vad({{0.01}}), "[1]");
    EXPECT_NEAR(thresholdOf(log), 0.0255 * 0.00996 + 0.9745 * 0.001, 1e-8);
    // A new maximum of 1: the weight is 0.999, so the default applies again.
    EXPECT_EQ(vad({{1.0}}), "[1]");
    EXPECT_NEAR(thresholdOf(log), 0.001 + 0.999 * 0.0010001, 1e-5);
    // Below the minimum: the minimum is the frame's energy.
    EXPECT_EQ(vad({{0.0001}}), "[0]");
    EXPECT_NEAR(thresholdOf(log), 0.0255 * 0.996 + 0.9745 * 0.0001, 1e-6);
}

TEST(VadTest, AFrameOfZeroEnergyPutsTheMinimumBackToTheFloor) {
    BuiltIn vad = makeConfiguredVad(-35.0F, 2);
    vad({{1.0}});
    vad({{0.00001}});
    vad({{0.00001}});
    const LogCapture log(Logger);
    vad({{0.0}});
    // The maximum has decayed on three frames.
    EXPECT_NEAR(thresholdOf(log), 0.001 * 1.999, 2e-5);
}

TEST(VadTest, ResetRestartsTheDetectorAndKeepsItsConfiguration) {
    BuiltIn vad = makeConfiguredVad(-45.0F, 3);
    BuiltIn fresh = makeConfiguredVad(-45.0F, 3);
    for (const double energy : {5.0, 0.5, 0.00002, 3.0}) {
        vad({{energy}});
    }
    EXPECT_TRUE(vad.reset());
    for (const double energy : {0.0005, 0.1, 0.01, 0.00003, 0.00001, 0.5, 0.003}) {
        LogCapture log(Logger);
        const std::string strDecision = vad({{energy}});
        const double dThreshold = thresholdOf(log);
        EXPECT_EQ(strDecision, fresh({{energy}}));
        EXPECT_EQ(dThreshold, thresholdOf(log));
    }
}

TEST(VadTest, ACopyGoesOnWithTheMemoryOfItsSource) {
    BuiltIn source = makeConfiguredVad();
    source({{1.0}});
    source({{0.5}});
    BuiltIn copy = source.copy();
    for (const double energy : {0.001, 0.002, 0.3, 0.0001}) {
        EXPECT_EQ(copy({{energy}}), source({{energy}}));
    }
}

TEST(VadTest, GoesOnAfterAnInfiniteFrame) {
    const AssertionCapture assertions;
    BuiltIn vad = makeConfiguredVad();
    EXPECT_EQ(vad({{Inf}}), "[0]");
    EXPECT_EQ(vad({{1.0}}), "[0]");
    EXPECT_EQ(assertions.count("m_dLamda < 1.0"), 2U);
    EXPECT_TRUE(vad.reset());
    EXPECT_EQ(vad({{1.0}}), "[1]");
    EXPECT_EQ(assertions.count(), 2U);
}

TEST(VadTest, ANaNIsSilenceAndPutsTheMinimumBack) {
    const AssertionCapture assertions;
    BuiltIn vad = makeConfiguredVad();
    EXPECT_EQ(vad({{1.0}}), "[1]");
    EXPECT_EQ(vad({{Nan}}), "[0]");
    EXPECT_EQ(vad({{1.0}}), "[1]");
    EXPECT_THAT(assertions.expressions(), IsEmpty());
}

TEST(VadTest, AFirstNaNFailsTheAssertionUntilReset) {
    const AssertionCapture assertions;
    BuiltIn vad = makeConfiguredVad();
    EXPECT_EQ(vad({{Nan}}), "[0]");
    EXPECT_EQ(vad({{1.0}}), "[0]");
    EXPECT_THAT(assertions.expressions(), ElementsAre("m_dLamda < 1.0", "m_dLamda < 1.0"));
    EXPECT_TRUE(vad.reset());
    EXPECT_EQ(vad({{1.0}}), "[1]");
}

TEST(VadTest, AFloorOfZeroFailsTheAssertionAndStillDecides) {
    const AssertionCapture assertions;
    BuiltIn vad = makeConfiguredVad(-3100.0F);
    EXPECT_EQ(vad({{1.0}}), "[1]");
    EXPECT_THAT(assertions.expressions(), ElementsAre("m_dLamda < 1.0"));
}

} // namespace
} // namespace Velmora::Testing
