// The plan of a sealed graph against the walk that it replaces.

#include "math/xpr/src/SealedPlan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "math/xpr/InputTwins.h"
#include "math/xpr/PlanTwins.h"
#include "math/xpr/RandomScript.h"
#include "math/xpr/ScriptRun.h"
#include "support/GraphTest.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t SeedCount = 50;
#else
constexpr std::uint64_t SeedCount = 1000;
#endif

using Node = PlanTwins::Node;

enum class Actions { OfFrames, OfAnyHost };

/// Something drawn at random, done to both graphs of a script.
class RandomSteps {
public:
    RandomSteps(const RandomScript& in_Script, std::uint64_t in_uiSeed,
                RandomScript::Failures in_eFailures, Actions in_eActions)
        : m_Random(in_uiSeed),
          m_eActions(in_eActions),
          m_Twins(RandomScript::join(in_Script.getLines()), in_Script.getFeatures()) {
        for (std::size_t uiFrame = 0; uiFrame != 6; ++uiFrame) {
            m_vFrames.push_back(ScriptRun::makeInputs(uiFrame));
        }
        if (in_eFailures == RandomScript::Failures::Some) {
            // The inputs are left, right and scalar.
            m_vFrames[1][2] = DoubleVector{0.0};
            m_vFrames[2][2] = DoubleVector{1.0, 2.0};
            m_vFrames[3][0].resize(RandomScript::FrameSize - 1);
            m_vFrames[4][2] = DoubleVector{0.0};
            m_vFrames[5][1].clear();
        }
        for (const auto& vFrame : m_vFrames) {
            for (const DoubleVector& vInput : vFrame) {
                m_vHostVectors.push_back(&vInput);
            }
        }
    }

    bool haveSameShape() const { return m_Twins.haveSameShape(); }

    /// What differs then, or an empty text.
    std::string step() {
        m_uiNode = m_Random() % m_Twins.getNodeCount();
        m_uiInput = m_Random() % 3;
        m_uiFrame = m_Random() % m_vFrames.size();
        // What isn't part of a frame is rare.
        const bool bOther = m_eActions == Actions::OfAnyHost && m_Random() % 16 == 0;
        const std::size_t uiAction = m_Random() % 10 + (bOther ? 10 : 0);
        const std::string strDifference =
            m_Twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes& in_vNodes) {
                return act(uiAction, inout_Run, in_vNodes);
            });
        return strDifference.empty() ? strDifference
                                     : "action " + std::to_string(uiAction) + " on node " +
                                           std::to_string(m_uiNode) + strDifference;
    }

private:
    std::string act(std::size_t in_uiAction, ScriptRun& inout_Run,
                    const PlanTwins::Nodes& in_vNodes) const {
        ExpressionBaseImpl& node = *in_vNodes[m_uiNode];
        const DoubleVector& vInput = m_vFrames[m_uiFrame][m_uiInput];
        if (in_uiAction < 4) {
            const std::string strName = "s." + ScriptRun::getInputNames()[m_uiInput];
            inout_Run.getEvaluator().getVariable(strName.c_str())->setValue(vInput);
        } else if (in_uiAction < 7) {
            // A feature, as a host would.
            return PlanTwins::evaluate(*in_vNodes[m_uiNode % 3 % in_vNodes.size()], m_vHostVectors);
        } else if (in_uiAction < 9) {
            return PlanTwins::evaluate(node, m_vHostVectors);
        } else if (in_uiAction < 10) {
            node.invalidate();
        } else if (in_uiAction < 16) {
            return std::to_string(node.reset());
        } else if (auto* const pVariable = dynamic_cast<Variable*>(&node); pVariable != nullptr) {
            return std::to_string(pVariable->setValue(vInput));
        }
        return std::string();
    }

    std::mt19937_64 m_Random;
    Actions m_eActions;
    PlanTwins m_Twins;
    std::vector<std::vector<DoubleVector>> m_vFrames;
    std::vector<const DoubleVector*> m_vHostVectors;
    std::size_t m_uiNode = 0;
    std::size_t m_uiInput = 0;
    std::size_t m_uiFrame = 0;
};

void compareOverSeeds(RandomScript::Failures in_eFailures, Actions in_eActions) {
    for (std::uint64_t uiSeed = 0; uiSeed != SeedCount; ++uiSeed) {
        // A condition keeps what stands above it out of the plan.
        const auto eBranches =
            uiSeed % 4 == 0 ? RandomScript::Branches::Some : RandomScript::Branches::None;
        const RandomScript script(uiSeed, in_eFailures, eBranches);
        RandomSteps steps(script, uiSeed, in_eFailures, in_eActions);
        ASSERT_TRUE(steps.haveSameShape());
        for (std::size_t uiStep = 0; uiStep != 60; ++uiStep) {
            ASSERT_EQ(steps.step(), "") << "seed " << uiSeed << ", step " << uiStep << '\n'
                                        << RandomScript::join(script.getLines());
        }
    }
}

TEST(SealedPlanTest, GivesTheFlagsAndValuesOfTheWalk) {
    compareOverSeeds(RandomScript::Failures::None, Actions::OfFrames);
}

TEST(SealedPlanTest, GivesTheFlagsAndValuesOfTheWalkWhereOperatorsFail) {
    compareOverSeeds(RandomScript::Failures::Some, Actions::OfFrames);
}

TEST(SealedPlanTest, GivesTheFlagsAndValuesOfTheWalkWhateverTheHostDoes) {
    compareOverSeeds(RandomScript::Failures::Some, Actions::OfAnyHost);
}

TEST(SealedPlanTest, WhoReadsTheLogSeesInputsReadInTheOrderOfTheWalk) {
    PlanTwins twins("inputvar a\ninputvar b\ninputvar c\nq = b - a\nr = {a + b, 1 / a + c}\n",
                    {"q", "r"});
    const DoubleVector vOne{1.0};
    const DoubleVector vTwo{2.0};
    const DoubleVector vZero{0.0};
    const auto evaluateFrame = [&](int in_iFrame, const DoubleVector& in_vA, bool in_bLogged) {
        return twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes& in_vNodes) {
            const LogCapture log(in_bLogged ? Testing::DomainValueLogger : "nobody",
                                 log4cplus::DEBUG_LOG_LEVEL);
            const DoubleVector* const pOther = in_iFrame % 2 == 0 ? &vOne : &vTwo;
            inout_Run.getEvaluator().getVariable("s.a")->setValue(in_vA);
            inout_Run.getEvaluator().getVariable("s.b")->setValue(*pOther);
            inout_Run.getEvaluator().getVariable("s.c")->setValue(vTwo);
            std::string strSeen;
            for (const std::size_t uiNode : {1U, 0U}) {
                strSeen += PlanTwins::evaluate(*in_vNodes[uiNode]) + '\n';
            }
            for (const std::string& strLine : log.messages(log4cplus::DEBUG_LOG_LEVEL)) {
                const std::size_t uiValue = strLine.find(" val=");
                strSeen += uiValue == std::string::npos ? "" : strLine.substr(uiValue) + '\n';
            }
            return strSeen;
        });
    };
    for (int iFrame = 0; iFrame != 12; ++iFrame) {
        ASSERT_EQ(evaluateFrame(iFrame, vOne, iFrame % 4 > 1), "") << iFrame;
    }
    EXPECT_EQ(evaluateFrame(0, vZero, true), "");
    EXPECT_EQ(evaluateFrame(1, vTwo, true), "");
}

TEST(SealedPlanTest, FewReadersFarApartAreToldOfAChangeEach) {
    std::string strScript = "inputvar x\ninputvar z\nf0 = x * 2 + 1\nf1 = x + 3 - x * 4\n";
    for (int i = 2; i != 400; ++i) {
        strScript += 'f' + std::to_string(i) + " = z * " + std::to_string(i) + " + 1\n";
    }
    strScript += "g0 = x * 5 + f0\ng1 = x - 6 + g0\n";
    InputTwins twins(strScript, {"f0", "f1", "g0", "g1", "f7"}, {"x", "z"});
    const DoubleVector vOne{1.0};
    const DoubleVector vTwo{2.0};
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        ASSERT_EQ(twins.set(0, iFrame % 2 == 0 ? vOne : vTwo), "");
        ASSERT_EQ(twins.set(1, vTwo), "");
        for (std::size_t uiFeature = 0; uiFeature != 5; ++uiFeature) {
            ASSERT_EQ(twins.evaluate(uiFeature), "") << iFrame << ' ' << uiFeature;
        }
    }
}

TEST(SealedPlanTest, ReaderOfAFailedNodeKeepsItsValueWhateverElseIsComputedBeforeIt) {
    PlanTwins twins("inputvar a\ninputvar b\nr = 1 / a + b\n", {"r"});
    const DoubleVector vZero{0.0}, vTwo{2.0}, vFour{4.0};
    const auto set = [&](const char* in_szName, const DoubleVector& in_vValue) {
        EXPECT_EQ(twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes&) {
            inout_Run.getEvaluator().getVariable(in_szName)->setValue(in_vValue);
            return std::string();
        }),
                  "");
    };
    const auto evaluate = [&] {
        std::string strResult;
        EXPECT_EQ(twins.doToBoth([&](ScriptRun&, const PlanTwins::Nodes& in_vNodes) {
            return strResult = PlanTwins::evaluate(*in_vNodes.front());
        }),
                  "");
        return strResult;
    };
    set("s.a", vTwo);
    set("s.b", vTwo);
    EXPECT_EQ(evaluate(), "1 [2.5]");
    // The division fails, then the other input is computed, and at last the sum over both.
    set("s.a", vZero);
    set("s.b", vFour);
    EXPECT_EQ(evaluate(), "1 [4.5]");
    // What is new ends at the division, which wasn't valid.
    set("s.a", vFour);
    EXPECT_EQ(evaluate(), "1 [4.5]");
    set("s.b", vTwo);
    EXPECT_EQ(evaluate(), "1 [2.25]");
}

void setInputs(ScriptRun& inout_Run, const DoubleVector& in_vA, const DoubleVector& in_vB) {
    inout_Run.getEvaluator().getVariable("s.a")->setValue(in_vA);
    inout_Run.getEvaluator().getVariable("s.b")->setValue(in_vB);
}

TEST(SealedPlanTest, VariableThatTheWalkDoesNotComeToBehindAFailureHasNoValue) {
    PlanTwins twins("inputvar a\ninputvar b\nu = 1 / a\nr = u * {1 / b, sum(u)}\n", {"r", "u"});
    const DoubleVector vZero{0.0}, vOne{1.0}, vTwo{2.0};
    const auto computeFrame = [&](const DoubleVector& in_vA, const DoubleVector& in_vB) {
        return twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes& in_vNodes) {
            setInputs(inout_Run, in_vA, in_vB);
            in_vNodes.front()->invalidate();
            return PlanTwins::evaluate(*in_vNodes.front());
        });
    };
    // 1 / b fails in the very first frame, ahead of the second use of u.
    EXPECT_EQ(computeFrame(vTwo, vZero), "");
    EXPECT_EQ(computeFrame(vZero, vOne), "");
    EXPECT_EQ(computeFrame(vTwo, vTwo), "");
    EXPECT_EQ(computeFrame(vZero, vTwo), "");
}

TEST(SealedPlanTest, FailureInAFrameOfWhichInputsAreLoggedIsKnownInTheNext) {
    PlanTwins twins("inputvar a\ninputvar b\nm = 1 / a + b\ns = m * 2 + b * 3\n", {"m", "s"});
    const DoubleVector vZero{0.0}, vOne{1.0}, vTwo{2.0};
    const auto computeFrame = [&](const DoubleVector& in_vA, const DoubleVector& in_vB) {
        return twins.doToBoth([&](ScriptRun& inout_Run, const PlanTwins::Nodes& in_vNodes) {
            setInputs(inout_Run, in_vA, in_vB);
            std::string strSeen;
            {
                const LogCapture log(Testing::DomainValueLogger, log4cplus::DEBUG_LOG_LEVEL);
                strSeen = PlanTwins::evaluate(*in_vNodes[0]);
            }
            // m is valid above a division that isn't: nobody asks for that again.
            return strSeen + PlanTwins::evaluate(*in_vNodes[1]);
        });
    };
    EXPECT_EQ(computeFrame(vOne, vOne), "");
    EXPECT_EQ(computeFrame(vZero, vTwo), "");
    EXPECT_EQ(computeFrame(vTwo, vOne), "");
}

/// Every definition uses the one before twice; the first adds vectors of two sizes.
std::string doublingOverAFailure(int in_iLines) {
    std::string strText = "inputvar x\nv0 = x + {1, 2}\n";
    for (int iLine = 1; iLine <= in_iLines; ++iLine) {
        const std::string strBefore = 'v' + std::to_string(iLine - 1);
        strText += 'v' + std::to_string(iLine) + " = " + strBefore + " + " + strBefore + '\n';
    }
    return strText;
}

TEST(SealedPlanTest, FailureBelowManyPathsIsTriedForEachReaderUpToALimit) {
    const DoubleVector vOne{1.0}, vPair{1.0, 1.0};
    for (const int iLines : {8, 40}) {
        const std::string strLast = 'v' + std::to_string(iLines);
        ScriptRun run(doublingOverAFailure(iLines), {strLast}, true);
        const Handle<Variable> pX = run.getEvaluator().getVariable("s.x");
        const Handle<Expression> pLast = run.getEvaluator().getExpression(("s." + strLast).c_str());
        DoubleVector vResult;
        pX->setValue(vOne);
        {
            const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
            EXPECT_FALSE(pLast->evaluate(vResult));
            // One for each failure: 2^9 - 1, or the limit, and then one more of each operator; and
            // the line of the feature that has no value.
            EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL), iLines == 8 ? 512u : 1066u);
        }
        pX->setValue(vPair);
        // What is new ends at what failed.
        Handle<ExpressionBaseImpl>(pLast)->invalidate();
        ASSERT_TRUE(pLast->evaluate(vResult));
        EXPECT_EQ(std::vector<double>(vResult.begin(), vResult.end()),
                  (std::vector<double>{std::ldexp(2.0, iLines), std::ldexp(3.0, iLines)}));
    }
}

} // namespace
