#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "math/xpr/src/functions/math/FeaturePrefix.h"
#include "math/xpr/src/functions/math/FunctionSlidingWindow.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {
namespace {

using Math::SignalFeature;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

struct Example {
    std::string function;
    Values input;
    std::string result;
};

void PrintTo(const Example& in_example, std::ostream* out_pStream) {
    *out_pStream << in_example.function << ::testing::PrintToString(in_example.input);
}

class StatelessFunctionTest : public ::testing::TestWithParam<Example> {};

TEST_P(StatelessFunctionTest, ComputesEachFrameOnItsOwn) {
    BuiltIn function(GetParam().function);
    EXPECT_EQ(function({GetParam().input}), GetParam().result);
    function({{1, 2, 3, 4}});
    EXPECT_EQ(function({GetParam().input}), GetParam().result);
    EXPECT_TRUE(function.reset());
    EXPECT_EQ(function({GetParam().input}), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(
    Examples, StatelessFunctionTest,
    ::testing::Values(Example{"sizeOf", {}, "[0]"}, Example{"sizeOf", {7, 8, 9}, "[3]"},
                      Example{"sizeOf", {Nan}, "[1]"}, Example{"sum", {}, "[0]"},
                      Example{"sum", {1, 2, 3.5}, "[6.5]"}, Example{"sum", {1, Nan}, "[nan]"},
                      Example{"abs", {}, "[]"}, Example{"abs", {-2, -0.0, Nan}, "[2 0 nan]"},
                      Example{"min", {}, "no result"}, Example{"min", {3, -1, 2}, "[-1]"},
                      Example{"min", {3, Nan, -2}, "[nan]"}, Example{"max", {}, "no result"},
                      Example{"max", {3, -1, 2}, "[3]"}, Example{"max", {3, Nan, 5}, "[nan]"},
                      Example{"indexOfMax", {}, "no result"},
                      Example{"indexOfMax", {0, 5, 2, 5}, "[1]"},
                      Example{"indexOfMax", {0, 5, Nan}, "[2]"}, Example{"log", {}, "[]"},
                      Example{"log", {1, -1}, "[0 nan]"},
                      Example{"log", {0.0, -0.0}, "[-708.3964185322641 -708.3964185322641]"}));

TEST(FunctionAveragePowerTest, IsTheMeanOfTheSquares) {
    const AssertionCapture assertions;
    EXPECT_EQ(BuiltIn("averagePower")({{1, -1, 2, -2}}), "[2.5]");
    EXPECT_EQ(BuiltIn("averagePower")({{Nan}}), "[nan]");
    EXPECT_THAT(assertions.expressions(), IsEmpty());
}

TEST(FunctionAveragePowerTest, AnEmptyFrameFailsTheAssertionAndGivesNoResult) {
    const AssertionCapture assertions;
    EXPECT_EQ(BuiltIn("averagePower")({{}}), "no result");
    EXPECT_THAT(assertions.expressions(),
                ElementsAre("in_ArgNameToDomain.begin()->second->averagePower(dAveragePower)"));
}

TEST(FeatureBackedFunctionsTest, LogNothing) {
    const AssertionCapture assertions;
    for (std::size_t i = 0; i < 14; ++i) {
        BuiltIn function = builtInSettings()[i].make();
        for (const Values& frame : {Values{}, Values{1, Nan}}) {
            function.feed({frame});
            const LogCapture log("", log4cplus::INFO_LOG_LEVEL);
            function.evaluate();
            EXPECT_THAT(log.lines(), IsEmpty()) << builtInSettings()[i];
        }
    }
}

TEST(FunctionDeltaTest, IsTheChangeSinceTheFrameBefore) {
    BuiltIn delta("delta");
    EXPECT_EQ(delta({{5, 7}}), "[0 0]");
    EXPECT_EQ(delta({{6, 5}}), "[1 -2]");
    EXPECT_EQ(delta({{1, 2, 3}}), "[0 0 0]");
    EXPECT_EQ(delta({{2, 2, 2}}), "[1 0 -1]");
    EXPECT_EQ(delta({{}}), "[]");
    EXPECT_EQ(delta({{2, 2, 2}}), "[0 0 0]");
}

TEST(FunctionDeltaTest, TheFrameAfterAResetIsLikeTheFirst) {
    BuiltIn delta("delta");
    delta({{5}});
    EXPECT_TRUE(delta.reset());
    EXPECT_EQ(delta({{8}}), "[0]");
    EXPECT_EQ(delta({{9}}), "[1]");
}

TEST(FunctionEnergyTest, IsTheSumOfTheSquaresOverTheSampleRate) {
    BuiltIn energy("energy");
    energy.set("signalfeature.SampleRate", 100);
    ASSERT_TRUE(energy.configure());
    EXPECT_EQ(energy({{3, 4}}), "[0.25]");
    EXPECT_EQ(energy({{}}), "[0]");
    energy.set("signalfeature.SampleRate", 12.5F);
    ASSERT_TRUE(energy.configure());
    EXPECT_EQ(energy({{3, 4}}), "[2]");
}

TEST(FunctionEnergyTest, KeepsItsSampleRateOnReset) {
    BuiltIn energy = builtInSettings()[8].make();
    EXPECT_TRUE(energy.reset());
    EXPECT_EQ(energy({{80, 0}}), "[0.8]");
}

TEST(FunctionSlidingWindowTest, GivesTheLastValuesOldestFirst) {
    BuiltIn window("slidingWindow");
    window.set("slidingwindow.WindowSize", 3);
    ASSERT_TRUE(window.configure());
    EXPECT_EQ(window({{1, 2}}), "[1 2]");
    EXPECT_EQ(window({{}}), "[1 2]");
    EXPECT_EQ(window({{3, 4}}), "[2 3 4]");
    EXPECT_TRUE(window.reset());
    EXPECT_EQ(window({{5}}), "[5]");
}

TEST(FunctionSlidingWindowTest, TwoNodesHaveSeparateWindows) {
    BuiltIn first = builtInSettings()[9].make();
    BuiltIn second = builtInSettings()[9].make();
    EXPECT_EQ(first({{1}}), "[1]");
    EXPECT_EQ(second({{2}}), "[2]");
    EXPECT_EQ(first({{3}}), "[1 3]");
}

TEST(FunctionTappedDelayTest, PadsInFront) {
    BuiltIn tape("tappedDelay");
    tape.set("tappeddelay.TapeSize", 5);
    tape.set("tappeddelay.IncludeUsedTapeSizeInOutput", "true");
    tape.set("tappeddelay.PaddingValues", "8, 9");
    ASSERT_TRUE(tape.configure());
    EXPECT_EQ(tape({{1, 2}}), "[2 8 9 8 1 2]");
    EXPECT_EQ(tape({{3, 4, 5, 6}}), "[5 2 3 4 5 6]");
}

TEST(FunctionTappedDelayTest, ResetKeepsTheConfiguration) {
    BuiltIn tape("tappedDelay");
    tape.set("tappeddelay.TapeSize", 2);
    tape.set("tappeddelay.IncludeUsedTapeSizeInOutput", 1);
    tape.set("tappeddelay.PaddingValues", 7);
    ASSERT_TRUE(tape.configure());
    EXPECT_EQ(tape({{1, 2}}), "[2 1 2]");
    EXPECT_TRUE(tape.reset());
    EXPECT_EQ(tape({{3}}), "[1 7 3]");
}

TEST(FunctionDebounceTest, HoldsAFrameBackUntilItIsSteady) {
    BuiltIn debounce = builtInSettings()[11].make();
    EXPECT_EQ(debounce({{1}}), "[1]");
    EXPECT_EQ(debounce({{2}}), "[1]");
    EXPECT_EQ(debounce({{2}}), "[2]");
    EXPECT_EQ(debounce({{3}}), "[2]");
    EXPECT_TRUE(debounce.reset());
    EXPECT_EQ(debounce({{3}}), "[3]");
}

TEST(FunctionDebounceOnOffTest, SwitchesOnWhatLasts) {
    BuiltIn debounce = builtInSettings()[12].make();
    EXPECT_EQ(debounce({{0}}), "[0]");
    EXPECT_EQ(debounce({{5}}), "[1]");
    EXPECT_EQ(debounce({{0}}), "[1]");
    EXPECT_EQ(debounce({{0}}), "[0]");
    EXPECT_EQ(debounce({{}}), "no result");
    EXPECT_EQ(debounce({{Nan}}), "[1]");
    EXPECT_TRUE(debounce.reset());
    EXPECT_EQ(debounce({{0}}), "[0]");
}

struct BadParameter {
    std::string function;
    std::string key;
    ParameterValue value;
};

void PrintTo(const BadParameter& in_bad, std::ostream* out_pStream) {
    *out_pStream << in_bad.key << " = " << in_bad.value;
}

class BadFeatureParameterTest : public ::testing::TestWithParam<BadParameter> {};

TEST_P(BadFeatureParameterTest, FailsTheConfigurationOfTheNode) {
    const LogCapture log;
    BuiltIn function(GetParam().function);
    function.set(GetParam().key, GetParam().value);
    EXPECT_FALSE(function.configure());
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("failed to configure function: " + GetParam().function));
    EXPECT_EQ(function({{1}}), "no result");
}

INSTANTIATE_TEST_SUITE_P(
    Values, BadFeatureParameterTest,
    ::testing::Values(BadParameter{"energy", "signalfeature.SampleRate", 0},
                      BadParameter{"energy", "signalfeature.SampleRate", "8000"},
                      BadParameter{"slidingWindow", "slidingwindow.WindowSize", 0},
                      BadParameter{"slidingWindow", "slidingwindow.WindowSize", 2.0F},
                      BadParameter{"tappedDelay", "tappeddelay.TapeSize", -1},
                      BadParameter{"tappedDelay", "tappeddelay.PaddingValues", "1 x"},
                      BadParameter{"tappedDelay", "tappeddelay.IncludeUsedTapeSizeInOutput", "yes"},
                      BadParameter{"debounce", "debounce.DebounceValue", -1},
                      BadParameter{"debounceOnOff", "debounceonoff.DebounceOnValue", -1},
                      BadParameter{"debounceOnOff", "debounceonoff.DebounceOffValue", 0.5F}));

TEST(FeaturePrefixTest, IsTheTypeInLowerCaseBuiltOnce) {
    EXPECT_EQ(Math::Xpr::featurePrefix<SignalFeature::SlidingWindow>(), "slidingwindow.");
    EXPECT_EQ(Math::Xpr::featurePrefix<SignalFeature::TappedDelay>(), "tappeddelay.");
    EXPECT_EQ(Math::Xpr::featurePrefix<SignalFeature::Debounce>(), "debounce.");
    EXPECT_EQ(Math::Xpr::featurePrefix<SignalFeature::DebounceOnOff>(), "debounceonoff.");
    EXPECT_EQ(&Math::Xpr::featurePrefix<SignalFeature::Debounce>(),
              &Math::Xpr::featurePrefix<SignalFeature::Debounce>());
}

TEST(FunctionSlidingWindowTest, AppendsItsParameterNamesAtEachCall) {
    Math::Xpr::FunctionSlidingWindow function;
    std::vector<std::string> vNames;
    function.getParameterNames(vNames);
    function.getParameterNames(vNames);
    EXPECT_THAT(vNames, ElementsAre("slidingwindow.WindowSize", "slidingwindow.WindowSize"));
}

} // namespace
} // namespace Velmora::Testing
