// What can't be computed in its first frame gives false and says where it stands, in a graph that
// is sealed and in one that isn't.

#include <velmora/math/xpr/Evaluator.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <tuple>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "math/xpr/ParsedScript.h"
#include "math/xpr/src/FailedTries.h"
#include "support/AssertionCapture.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {
namespace {

using ::testing::Contains;
using Testing::position;
using Testing::scriptsIn;

/// A script "s" whose last line defines an x that can't be computed.
struct Failing {
    const char* m_szName;
    const char* m_szScript;
};

class EvaluationFailureTest : public ::testing::TestWithParam<std::tuple<bool, Failing>> {
protected:
    /// With or without `reconfigureExpressions`, whatever that says.
    void evaluate(bool in_bConfigure) {
        const Failing& failing = std::get<1>(GetParam());
        std::istringstream script("inputvar a\ninputvar none\n" + std::string(failing.m_szScript) +
                                  "\n");
        Evaluator evaluator;
        ASSERT_TRUE(evaluator.configure(scriptsIn("none"), TSHandle<VirtualFileSystem>()));
        ASSERT_TRUE(evaluator.addScript(script, "s"));
        ASSERT_TRUE(evaluator.link(std::get<0>(GetParam())));
        if (in_bConfigure) {
            evaluator.reconfigureExpressions();
        }
        const DoubleVector vNone;
        evaluator.getVariable("s.none")->setValue(vNone);
        const Handle<Expression> pExpression = evaluator.getExpression("s.x");

        const AssertionCapture assertions;
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        DoubleVector vValue;
        vValue.push_back(42);
        EXPECT_FALSE(pExpression->evaluate(vValue));
        ASSERT_EQ(vValue.size(), 1U);
        EXPECT_EQ(vValue[0], 42);
        const std::string strScript(failing.m_szScript);
        const auto iLine = std::count(strScript.begin(), strScript.end(), '\n') + 3;
        EXPECT_THAT(
            log.messages(log4cplus::ERROR_LOG_LEVEL),
            Contains(position(static_cast<int>(iLine), 1) + ":no value to compute from: s.x"));
    }
};

using FirstFrameTest = EvaluationFailureTest;

TEST_P(FirstFrameTest, GivesFalseAndSaysWhere) {
    evaluate(true);
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, FirstFrameTest,
    ::testing::Combine(
        ::testing::Bool(),
        ::testing::Values(
            Failing{"VariableOfAFailure", "y = a / 0\nx = y + 1"},
            Failing{"LeftOperand", "x = a / 0 + 1"}, Failing{"RightOperand", "x = 1 - a / 0"},
            Failing{"SlicedOperand", "x = (a / 0)[0]"}, Failing{"IndexOutOfRange", "x = a[1] + 1"},
            Failing{"ConditionFails", "x = if(a[7], 1, 2)"},
            Failing{"EmptyCondition", "x = if(none, 1, 2)"},
            Failing{"ArgumentOfABuiltIn", "x = sum(a / 0)"},
            Failing{"ScriptFunctionOfAFailure", "f(u, v) = u / v\nx = sum(f(a, 0))"},
            Failing{"SecondArgument", "x = isGreater(a, a / 0)"},
            Failing{"LaterOperandOfAConcatenation", "x = {a, a / 0}"},
            Failing{"PeakAtTheLowerBorder", "x = centralFrequency(0, {1,2,3})"},
            Failing{"PeakAtTheUpperBorder", "x = centralFrequency(2, {1,2,3})"},
            Failing{"SpectrumTooShort", "x = centralFrequency(1, a)"},
            Failing{"NoPeak", "x = centralFrequency(none, {1,2,3})"},
            Failing{"MinimumOfNothing", "x = min(none)"},
            Failing{"WindowOfNoSize", "x = slidingWindow<0>(a)"},
            Failing{"WindowOfMoreThanAnIntHolds", "x = slidingWindow<2147483648>(a)"},
            Failing{"TapeTooLongToPad", "x = tappedDelay<2147483647, 0, 1>(a)"},
            Failing{"DebounceOfMoreThanAnIntHolds", "x = debounce<2147483648>(a)"},
            Failing{"DecisionOfMoreThanAnIntHolds", "x = debounceOnOff<2147483648, 3>(a)"},
            Failing{"TapeOfMoreThanAnIntHolds", "x = tappedDelay<2147483648, 0, \"\">(a)"},
            Failing{"DemodulatorWithoutARate", "x = amDemodulate<0, 100>(a)"},
            Failing{"CorrelatorWithoutARate", "x = sinusCorrelate<0, 100>(a)"},
            Failing{"CorrelatorAboveHalfTheRate", "x = sinusCorrelate<8000, 5000>(a)"},
            Failing{"DetectorOfAPositiveLevel", "x = vad<5.0, 1>(a)"},
            Failing{"DetectorOfNoSensitivity", "x = vad<-50.0, 5>(a)"},
            Failing{"EnergyWithoutARate", "x = energy<0>(a)"})),
    [](const auto& in_Info) {
        return std::string(std::get<1>(in_Info.param).m_szName) +
               (std::get<0>(in_Info.param) ? "Sealed" : "");
    });

using UnconfiguredTest = EvaluationFailureTest;

TEST_P(UnconfiguredTest, GivesFalseAndSaysWhere) {
    evaluate(false);
}

INSTANTIATE_TEST_SUITE_P(
    Functions, UnconfiguredTest,
    ::testing::Combine(::testing::Bool(),
                       ::testing::Values(Failing{"amDemodulate", "x = amDemodulate<8000, 100>(a)"},
                                         Failing{"debounce", "x = debounce<3>(a)"},
                                         Failing{"debounceOnOff", "x = debounceOnOff<3, 3>(a)"},
                                         Failing{"energy", "x = energy<8000>(a)"},
                                         Failing{"sinusCorrelate",
                                                 "x = sinusCorrelate<8000, 100>(a)"},
                                         Failing{"slidingWindow", "x = slidingWindow<3>(a)"},
                                         Failing{"tappedDelay", "x = tappedDelay<3, 0, 1>(a)"},
                                         Failing{"vad", "x = vad<-50.0, 1>(a)"})),
    [](const auto& in_Info) {
        return std::string(std::get<1>(in_Info.param).m_szName) +
               (std::get<0>(in_Info.param) ? "Sealed" : "");
    });

TEST(FailedTriesTest, WhatSucceedsIsNoFailureHoweverMuchThereIs) {
    // A condition keeps the plan away from what stands above it.
    std::string strScript = "inputvar z\nv0 = if(1, 1, 2)\n";
    const std::size_t uiCount = FailedTries::MaxForEachReader + 100;
    for (std::size_t ui = 1; ui != uiCount; ++ui) {
        strScript += "v" + std::to_string(ui) + " = v" + std::to_string(ui - 1) + " + 1\n";
    }
    const std::string strQuotient = "v" + std::to_string(uiCount - 1) + " / z";
    std::istringstream script(strScript + "q = " + strQuotient + "\nx = (q + 1) + (q + 2)\n");
    Evaluator evaluator;
    ASSERT_TRUE(evaluator.configure(scriptsIn("none"), TSHandle<VirtualFileSystem>()));
    ASSERT_TRUE(evaluator.addScript(script, "s"));
    ASSERT_TRUE(evaluator.link(true));
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    DoubleVector vValue;
    EXPECT_FALSE(evaluator.getExpression("s.x")->evaluate(vValue));
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "Tried to divide by '0'."), 2U)
        << "each reader has a try";
}

} // namespace
} // namespace Velmora::Math::Xpr
