// What functions of a host do while a plan computes, against the walk that it replaces.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>
#include <velmora/math/xpr/Variable.h>

#include "math/xpr/PlanTwins.h"
#include "support/GraphTest.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

using Node = PlanTwins::Node;

/// Hands out its argument and does what the test says on the way.
class FunctionOnTheWay : public SingleVariableFunctionImpl,
                         public NoParamFunctionImpl,
                         public NoMemoryFunctionImpl {
public:
    FunctionOnTheWay() : SingleVariableFunctionImpl("onTheWay", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        s_OnCalculation(*in_ArgNameToDomain.begin()->second);
        out = *in_ArgNameToDomain.begin()->second;
        return true;
    }

    static std::function<void(const DoubleVector&)> s_OnCalculation;
};

std::function<void(const DoubleVector&)> FunctionOnTheWay::s_OnCalculation;

class PlanAndHostTest : public testing::TestWithParam<int> {
protected:
    static void SetUpTestSuite() {
        UserFunctionImpl<FunctionOnTheWay>::registerIn(Registry::getInstance(), "its argument");
    }

    void SetUp() override {
        FunctionOnTheWay::s_OnCalculation = [](const DoubleVector&) {};
    }

    static Node find(ScriptRun& inout_Run, const std::string& in_strName) {
        return Node(inout_Run.getEvaluator().getExpression(("s." + in_strName).c_str()));
    }

    /// What holds the vector that the input was set to.
    static Node findInput(ScriptRun& inout_Run, const std::string& in_strName) {
        return ExpressionBaseImpl::getYoungerChild(find(inout_Run, in_strName));
    }

    static void set(ScriptRun& inout_Run, const std::string& in_strName,
                    const DoubleVector& in_vValue) {
        inout_Run.getEvaluator().getVariable(("s." + in_strName).c_str())->setValue(in_vValue);
    }

    void setAll(ScriptRun& inout_Run, const DoubleVector& in_vX, const DoubleVector& in_vA) {
        set(inout_Run, "x", in_vX);
        set(inout_Run, "y", in_vX);
        set(inout_Run, "a", in_vA);
    }

    /// Does the same to both behind some frames of the first feature, so that the one that is
    /// looked at goes by the list, or by a program. An empty text if both do the same; the action
    /// returns what it saw.
    std::string compare(const std::string& in_strScript,
                        const std::vector<std::string>& in_vFeatures,
                        const std::function<std::string(ScriptRun&)>& in_Action) {
        PlanTwins twins("inputvar x\ninputvar y\ninputvar a\n" + in_strScript, in_vFeatures);
        return twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes&) {
            for (int iFrame = 0; iFrame != GetParam(); ++iFrame) {
                setAll(inout_Run, m_vOne, m_vTwo);
                find(inout_Run, in_vFeatures.front())->evaluate(m_pValue);
            }
            const std::string strResult = in_Action(inout_Run);
            SetUp();
            return strResult;
        });
    }

    const DoubleVector m_vOne{1.0};
    const DoubleVector m_vTwo{2.0};
    const DoubleVector m_vZero{0.0};
    LimitedObjPtr<DoubleVector> m_pValue;
};

// Not even if what is disturbed is all around it: a function with memory would move twice.
TEST_P(PlanAndHostTest, FunctionThatWasAskedForIsComputedOnceWhateverItDisturbs) {
    const auto evaluateFunction = [&](ScriptRun& inout_Run) {
        setAll(inout_Run, m_vTwo, m_vTwo);
        int iCalls = 0;
        FunctionOnTheWay::s_OnCalculation = [&](const DoubleVector&) {
            if (++iCalls == 1) {
                findInput(inout_Run, "x")->invalidate();
            }
        };
        const Node pFunction = ExpressionBaseImpl::getYoungerChild(find(inout_Run, "h"));
        const std::string strResult = PlanTwins::evaluate(*pFunction);
        EXPECT_EQ(iCalls, 1);
        return strResult;
    };
    EXPECT_EQ(compare("h = onTheWay(x * 2)\nr = y + a\n", {"h", "r"}, evaluateFunction), "");
}

TEST_P(PlanAndHostTest, WhatWasEvaluatedOnTheWayStaysBehindAFailure) {
    const auto evaluateAll = [&](ScriptRun& inout_Run) {
        setAll(inout_Run, m_vTwo, m_vZero);
        set(inout_Run, "y", m_vOne);
        std::string strCalls;
        FunctionOnTheWay::s_OnCalculation = [&](const DoubleVector& in_vValue) {
            strCalls += in_vValue[0] == 2.0 ? 'x' : 'y';
            if (in_vValue[0] == 2.0) {
                find(inout_Run, "m")->evaluate(m_pValue);
            }
        };
        for (const char* szFeature : {"r", "m", "g"}) {
            strCalls += PlanTwins::evaluate(*find(inout_Run, szFeature)) + ' ';
        }
        return strCalls;
    };
    EXPECT_EQ(compare("m = onTheWay(y)\nr = {onTheWay(x) / a, m}\ng = m * 2\n", {"r", "g", "m"},
                      evaluateAll),
              "");
}

TEST_P(PlanAndHostTest, FailureOnTheWayIsReportedOnce) {
    const auto evaluateSum = [&](ScriptRun& inout_Run) {
        setAll(inout_Run, m_vTwo, m_vZero);
        FunctionOnTheWay::s_OnCalculation = [&](const DoubleVector&) {
            find(inout_Run, "m")->evaluate(m_pValue);
        };
        return PlanTwins::evaluate(*find(inout_Run, "r"));
    };
    EXPECT_EQ(compare("k = 1 / a\nm = k + y\nr = onTheWay(x) + m\n", {"r", "m", "k"}, evaluateSum),
              "");
}

// The function becomes valid above what it has invalidated: a change of x doesn't climb to it.
TEST_P(PlanAndHostTest, PlanStepsAsideForWhatIsInvalidatedAndEvaluatedOnTheWay) {
    const auto evaluateFrames = [&](ScriptRun& inout_Run) {
        setAll(inout_Run, m_vTwo, m_vTwo);
        FunctionOnTheWay::s_OnCalculation = [&](const DoubleVector&) {
            findInput(inout_Run, "x")->invalidate();
            find(inout_Run, "m")->evaluate(m_pValue);
        };
        std::string strResult = PlanTwins::evaluate(*find(inout_Run, "r"));
        FunctionOnTheWay::s_OnCalculation = [](const DoubleVector&) {};
        findInput(inout_Run, "x")->evaluate(m_pValue);
        set(inout_Run, "x", m_vZero);
        return strResult + ' ' + PlanTwins::evaluate(*find(inout_Run, "r"));
    };
    EXPECT_EQ(compare("r = onTheWay(x * 2)\nm = y * a + 1\n", {"r", "m"}, evaluateFrames), "");
}

TEST_P(PlanAndHostTest, PlanStepsAsideForWhatIsInvalidatedInTheRecursion) {
    const auto evaluateFrames = [&](ScriptRun& inout_Run) {
        setAll(inout_Run, m_vTwo, m_vTwo);
        FunctionOnTheWay::s_OnCalculation = [&](const DoubleVector&) {
            findInput(inout_Run, "x")->invalidate();
        };
        std::string strResult;
        {
            // Inputs are read in their turn then.
            const LogCapture log(Testing::DomainValueLogger, log4cplus::TRACE_LOG_LEVEL);
            strResult = PlanTwins::evaluate(*find(inout_Run, "r"));
        }
        FunctionOnTheWay::s_OnCalculation = [](const DoubleVector&) {};
        findInput(inout_Run, "x")->evaluate(m_pValue);
        set(inout_Run, "x", m_vZero);
        return strResult + ' ' + PlanTwins::evaluate(*find(inout_Run, "r"));
    };
    EXPECT_EQ(compare("r = onTheWay(x * y)\n", {"r"}, evaluateFrames), "");
}

INSTANTIATE_TEST_SUITE_P(WarmUp, PlanAndHostTest, testing::Values(0, 1, 6));

// A part that is too long on its own leaves a result of its length behind.
TEST(PlanAndLimitTest, ConcatenationIsRefusedAboveItsLimitInEveryFrame) {
    DoubleVector vTooLong;
    vTooLong.resize(OperatorConcatenate::MaxConcatenation + 1);
    DoubleVector vLongest;
    vLongest.resize(OperatorConcatenate::MaxConcatenation);
    const DoubleVector vNone, vOne{1.0};
    PlanTwins twins("inputvar x\ninputvar y\nr = {x, y}\n", {"r"});
    EXPECT_EQ(twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes& in_vNodes) {
        std::string strResults;
        const auto evaluateFrame = [&](const DoubleVector& in_vX, const DoubleVector& in_vY) {
            inout_Run.getEvaluator().getVariable("s.x")->setValue(in_vX);
            inout_Run.getEvaluator().getVariable("s.y")->setValue(in_vY);
            LimitedObjPtr<DoubleVector> pValue;
            strResults += in_vNodes[0]->evaluate(pValue) ? '1' : '0';
        };
        evaluateFrame(vOne, vOne);
        evaluateFrame(vTooLong, vNone);
        // Until all is well again.
        for (int iRound = 0; iRound != 3; ++iRound) {
            for (const Node& pNode : in_vNodes) {
                pNode->invalidate();
            }
            LimitedObjPtr<DoubleVector> pValue;
            inout_Run.getEvaluator().getVariable("s.x")->evaluate(pValue);
            inout_Run.getEvaluator().getVariable("s.y")->evaluate(pValue);
        }
        evaluateFrame(vLongest, vOne);
        return strResults;
    }),
              "");
}

} // namespace
