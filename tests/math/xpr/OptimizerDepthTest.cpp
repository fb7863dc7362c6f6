// Deep graphs and graphs of many paths go through every stage of the pipeline, on threads with
// little stack.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <string>

#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/GraphTest.h"
#include "support/LinkBench.h"
#include "support/StackThread.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

constexpr std::size_t SmallStack = std::size_t(256) << 10;
constexpr std::size_t UsualStack = std::size_t(8) << 20;

/// Definitions of x0 to x(n - 1) made line by line, in the order of their numbers or the reverse.
class Definitions {
public:
    using Line = std::function<std::string(std::size_t in_uiIndex)>;

    Definitions(std::size_t in_uiCount, const Line& in_Line) : m_uiCount(in_uiCount) {
        Texts vLines;
        for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
            const std::string strLine = name(ui) + " = " + in_Line(ui) + "\n";
            m_strForward += strLine;
            vLines.push_back(strLine);
        }
        for (auto ite = vLines.rbegin(); ite != vLines.rend(); ++ite) {
            m_strBackward += *ite;
        }
    }

    static std::string name(std::size_t in_uiIndex) { return "x" + std::to_string(in_uiIndex); }

    std::string script(bool in_bReverse) const {
        return in_bReverse ? m_strBackward + "inputvar a\ninputvar b\n"
                           : "inputvar a\ninputvar b\n" + m_strForward;
    }

    std::size_t count() const { return m_uiCount; }

private:
    std::size_t m_uiCount;
    std::string m_strForward;
    std::string m_strBackward;
};

/// A stack and an order of the lines.
struct Way {
    std::size_t m_uiStack;
    bool m_bReverse;
};

/// The value of the definition of that number for inputs a and b.
using Expected = std::function<double(std::size_t in_uiIndex, double in_dA, double in_dB)>;

class OptimizerDepthTest : public GraphTest, public ::testing::WithParamInterface<Way> {
protected:
    /// Loads the definitions, links, configures, evaluates frames, resets and destroys, all on one
    /// thread.
    static void runOptimised(const Definitions& in_Definitions, const Expected& in_Expected) {
        runOnStack(GetParam().m_uiStack, [&] {
            Evaluator evaluator;
            load(evaluator, in_Definitions, true);
            computeFrames(evaluator, in_Definitions.count(), in_Expected);
        });
    }

    /// The same in both modes, and with a copy.
    static void runInEveryMode(const Definitions& in_Definitions, const Expected& in_Expected) {
        runOnStack(GetParam().m_uiStack, [&] {
            for (const bool bOptimise : {false, true}) {
                Evaluator evaluator;
                load(evaluator, in_Definitions, bOptimise);
                computeFrames(evaluator, in_Definitions.count(), in_Expected);
                Evaluator copy(evaluator);
                computeFrames(copy, in_Definitions.count(), in_Expected);
            }
        });
    }

    static Definitions newDifferences(std::size_t in_uiCount) {
        return Definitions(in_uiCount, [](std::size_t in_uiIndex) -> std::string {
            if (in_uiIndex < 2) {
                return in_uiIndex == 0 ? "a" : "b";
            }
            return Definitions::name(in_uiIndex - 1) + " - " + Definitions::name(in_uiIndex - 2);
        });
    }

    /// The differences come round after six.
    static double difference(std::size_t in_uiIndex, double in_dA, double in_dB) {
        const double adCycle[] = {in_dA, in_dB, in_dB - in_dA, -in_dA, -in_dB, in_dA - in_dB};
        return adCycle[in_uiIndex % 6];
    }

private:
    static void load(Evaluator& inout_Evaluator, const Definitions& in_Definitions,
                     bool in_bOptimise) {
        ASSERT_TRUE(inout_Evaluator.configure(scriptsIn("none"), {}));
        std::istringstream stream(in_Definitions.script(GetParam().m_bReverse));
        ASSERT_TRUE(inout_Evaluator.addScript(stream, "s"));
        ASSERT_TRUE(inout_Evaluator.link(in_bOptimise));
        ASSERT_TRUE(inout_Evaluator.reconfigureExpressions());
    }

    static void computeFrames(Evaluator& inout_Evaluator, std::size_t in_uiCount,
                              const Expected& in_Expected) {
        DoubleVector vA{0.0}, vB{0.0};
        for (const double dA : {3.0, -1.5}) {
            vA[0] = dA;
            vB[0] = dA + 2.0;
            ASSERT_TRUE(inout_Evaluator.getVariable("s.a")->setValue(vA));
            ASSERT_TRUE(inout_Evaluator.getVariable("s.b")->setValue(vB));
            // The deepest first, and then what it has computed on the way.
            for (const std::size_t uiIndex :
                 {in_uiCount - 1, in_uiCount - 2, in_uiCount / 2, std::size_t(1), std::size_t(0)}) {
                const std::string strName = "s." + Definitions::name(uiIndex);
                const Handle<Expression> pExpression =
                    inout_Evaluator.getExpression(strName.c_str());
                EXPECT_EQ(evaluated(*pExpression), Values{in_Expected(uiIndex, vA[0], vB[0])})
                    << strName;
            }
        }
        const std::string strLast = "s." + Definitions::name(in_uiCount - 1);
        EXPECT_TRUE(inout_Evaluator.getExpression(strLast.c_str())->reset());
    }
};

TEST_P(OptimizerDepthTest, DefinitionsThatUseTheOneBeforeTwice) {
    for (const std::size_t uiLines : {10U, 20U, 40U}) {
        const Definitions doublings(uiLines + 1, [](std::size_t in_uiIndex) -> std::string {
            if (in_uiIndex == 0) {
                return "a";
            }
            const std::string strBefore = Definitions::name(in_uiIndex - 1);
            return strBefore + " + " + strBefore;
        });
        runInEveryMode(doublings, [](std::size_t in_uiIndex, double in_dA, double) {
            return std::ldexp(in_dA, static_cast<int>(in_uiIndex));
        });
    }
}

TEST_P(OptimizerDepthTest, TenThousandDefinitionsThatUseTheTwoBefore) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "deeper than the thread sanitizer follows";
#endif
    runOptimised(newDifferences(10000), difference);
}

TEST_P(OptimizerDepthTest, ThousandDefinitionsThatUseTheTwoBeforeInEveryMode) {
    runInEveryMode(newDifferences(1000), difference);
}

TEST_P(OptimizerDepthTest, ThousandsOfDefinitionsThatEachAddACallThatIsMerged) {
    const Definitions sums(3000, [](std::size_t in_uiIndex) -> std::string {
        return in_uiIndex == 0 ? "sum(a)" : Definitions::name(in_uiIndex - 1) + " + sum(a)";
    });
    runOptimised(sums, [](std::size_t in_uiIndex, double in_dA, double) {
        return in_dA * static_cast<double>(in_uiIndex + 1);
    });
}

INSTANTIATE_TEST_SUITE_P(Ways, OptimizerDepthTest,
                         ::testing::Values(Way{UsualStack, false}, Way{UsualStack, true},
                                           Way{SmallStack, false}, Way{SmallStack, true}),
                         [](const auto& in_Info) {
                             const Way& way = in_Info.param;
                             return std::string(way.m_uiStack == SmallStack ? "SmallStack"
                                                                            : "UsualStack") +
                                    (way.m_bReverse ? "InReverse" : "InOrder");
                         });

} // namespace

} // namespace Velmora::Math::Xpr
