// What a plan joins of the operations on vectors, against the walk that it replaces.

#include <array>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "math/xpr/InputTwins.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

/// Two vectors, and two numbers to scale them by.
const std::vector<std::string> Inputs{"x", "y", "a", "b"};
constexpr std::size_t VectorCount = 2;

/// A script of sums and differences of scaled vectors, of which now and then a part is something
/// else: a built-in, a definition, a product of vectors, which isn't one.
class VectorScript {
public:
    explicit VectorScript(std::mt19937_64& inout_Random) : m_Random(inout_Random) {
        for (const std::string& strInput : Inputs) {
            m_strText += "inputvar " + strInput + '\n';
        }
        const std::size_t uiCount = 1 + m_Random() % 4;
        for (std::size_t ui = 0; ui != uiCount; ++ui) {
            const std::string strName = 'f' + std::to_string(ui);
            m_strText += strName + " = " + sum(m_Random() % 4) + '\n';
            m_vVectors.push_back(strName);
            m_vFeatures.push_back(strName);
        }
        m_uiVectors = uiCount;
        if (m_Random() % 2 == 0) {
            m_strText += "parts = " + concatenation() + '\n';
            m_vFeatures.push_back("parts");
        }
    }

    std::string m_strText;
    std::vector<std::string> m_vFeatures;
    /// The first features, whose results may be set as inputs: a concatenation clears its own
    /// before it asks for its parts.
    std::size_t m_uiVectors = 0;

private:
    template <class T>
    const T& oneOf(const std::vector<T>& in_vAll) {
        return in_vAll[m_Random() % in_vAll.size()];
    }

    std::string sum(std::size_t in_uiDepth) {
        if (in_uiDepth == 0) {
            const std::size_t uiKind = m_Random() % 16;
            return uiKind == 0 ? "abs(" + oneOf(m_vVectors) + ')' : oneOf(m_vVectors);
        }
        const std::string strSum =
            '(' + side(in_uiDepth) + (m_Random() % 2 == 0 ? " + " : " - ") + side(in_uiDepth) + ')';
        const std::size_t uiBehind = m_Random() % 4;
        return uiBehind < 2 ? strSum : strSum + (uiBehind == 2 ? " * " : " / ") + scalar();
    }

    std::string side(std::size_t in_uiDepth) {
        const std::string strVector = sum(m_Random() % in_uiDepth);
        const std::size_t uiKind = m_Random() % 16;
        if (uiKind < 5) {
            return scalar() + " * " + strVector;
        }
        if (uiKind < 10) {
            return strVector + " * " + scalar();
        }
        return uiKind == 10 ? strVector + " / " + scalar() : strVector;
    }

    std::string concatenation() {
        std::string strParts = "{" + sum(m_Random() % 2);
        for (std::size_t uiCount = m_Random() % 4; uiCount != 0; --uiCount) {
            const std::size_t uiKind = m_Random() % 4;
            strParts += ", " + (uiKind == 0   ? sum(m_Random() % 3)
                                : uiKind == 1 ? reduction(sum(m_Random() % 2))
                                : uiKind == 2 ? reduction(oneOf(m_vVectors))
                                              : scalar());
        }
        return strParts + '}';
    }

    std::string reduction(const std::string& in_strVector) {
        static const std::vector<std::string> s_vNames{"sum", "max", "min", "averagePower"};
        return oneOf(s_vNames) + '(' + in_strVector + ')';
    }

    std::string scalar() { return oneOf(m_vScalars); }

    std::mt19937_64& m_Random;
    std::vector<std::string> m_vVectors{"x", "y"};
    std::vector<std::string> m_vScalars{"a", "b", "2", "0.3", "(a * b)", "x", "max(y)", "sum(x)"};
};

/// Values of inputs: frames of one size for the most part, and numbers.
class Values {
public:
    explicit Values(std::mt19937_64& inout_Random) : m_Random(inout_Random) {
        std::uniform_real_distribution<double> number(-3.0, 3.0);
        const std::size_t uiSize = 2 + m_Random() % 20;
        for (DoubleVector& vFrame : m_vFrames) {
            vFrame.resize(uiSize);
            for (double& dValue : vFrame) {
                dValue = number(m_Random);
            }
        }
        m_vFrames.back().resize(uiSize - 1);
    }

    const DoubleVector& draw(std::size_t in_uiInput) {
        const std::size_t uiKind = m_Random() % 32;
        if (uiKind == 0) {
            return m_vNone;
        }
        if (uiKind == 1) {
            return m_vZero;
        }
        if (uiKind == 2) {
            return m_vFrames.back();
        }
        const bool bVector = (in_uiInput < VectorCount) != (uiKind == 3);
        return bVector ? m_vFrames[m_Random() % 3] : m_vNumbers[m_Random() % 2];
    }

private:
    std::mt19937_64& m_Random;
    DoubleVector m_vNone;
    DoubleVector m_vZero{0.0};
    std::array<DoubleVector, 2> m_vNumbers{DoubleVector{0.7}, DoubleVector{-2.3}};
    std::array<DoubleVector, 4> m_vFrames;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t SeedCount = 40;
#else
constexpr std::uint64_t SeedCount = 800;
#endif

TEST(VectorProgramTest, GivesTheFlagsAndValuesOfTheWalkInFramesThatAreAlike) {
    for (std::uint64_t uiSeed = 0; uiSeed != SeedCount; ++uiSeed) {
        std::mt19937_64 random(uiSeed);
        const VectorScript script(random);
        InputTwins twins(script.m_strText, script.m_vFeatures, Inputs);
        Values values(random);
        // The same inputs are set, and the same nodes asked for, several frames long.
        for (std::size_t uiScene = 0; uiScene != 5; ++uiScene) {
            const std::size_t uiInputs = random() % 16;
            const std::size_t uiFirst = random() % 3 == 0 ? random() : 0;
            const std::size_t uiSecond = random();
            for (std::size_t uiFrame = 0; uiFrame != 6; ++uiFrame) {
                const auto where = [&] {
                    return "seed " + std::to_string(uiSeed) + ", scene " + std::to_string(uiScene) +
                           ", frame " + std::to_string(uiFrame) + '\n' + script.m_strText;
                };
                for (std::size_t uiInput = 0; uiInput != Inputs.size(); ++uiInput) {
                    // All are set once.
                    if (uiScene == 0 || (uiInputs >> uiInput & 1) != 0) {
                        ASSERT_EQ(twins.set(uiInput, values.draw(uiInput)), "") << where();
                    }
                }
                if (random() % 16 == 0) {
                    ASSERT_EQ(twins.invalidate(random()), "") << where();
                }
                if (random() % 16 == 0) {
                    const std::size_t uiFeature = random() % script.m_uiVectors;
                    ASSERT_EQ(twins.setResult(random() % VectorCount, uiFeature), "") << where();
                }
                ASSERT_EQ(twins.evaluate(uiFirst), "") << where();
                ASSERT_EQ(twins.evaluate(uiSecond), "") << where();
            }
        }
    }
}

using Elements = std::vector<double>;

const DoubleVector vTwo{2.0};
const DoubleVector vFour{4.0};
const DoubleVector vZero{0.0};
const DoubleVector vPair{10.0, 20.0};
const DoubleVector vOther{1.0, 3.0};
const DoubleVector vTriple{1.0, 2.0, 3.0};

/// A formula over the frame and the numbers above.
struct Formula {
    const char* m_szText;
    Elements m_vExpected;
};

using VectorFormulaTest = ::testing::TestWithParam<Formula>;

TEST_P(VectorFormulaTest, IsTheSameInEveryFrame) {
    InputFeature feature(Inputs, GetParam().m_szText);
    feature.set(1, vOther);
    feature.set(2, vTwo);
    feature.set(3, vFour);
    for (int iFrame = 0; iFrame != 8; ++iFrame) {
        feature.set(0, vPair);
        ASSERT_TRUE(feature.evaluate());
        EXPECT_EQ(feature.getValue(), GetParam().m_vExpected) << iFrame;
    }
    // Of another size, and back.
    const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        feature.set(0, vTriple);
        feature.set(1, vTriple);
        ASSERT_TRUE(feature.evaluate());
        EXPECT_EQ(feature.getValue().size(), 3U);
    }
    feature.set(0, vPair);
    feature.set(1, vOther);
    ASSERT_TRUE(feature.evaluate());
    EXPECT_EQ(feature.getValue(), GetParam().m_vExpected);
    EXPECT_TRUE(log.lines().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Formulas, VectorFormulaTest,
    ::testing::Values(Formula{"x + y", {11, 23}}, Formula{"x - y", {9, 17}},
                      Formula{"a*x + y", {21, 43}}, Formula{"x - y*a", {8, 14}},
                      Formula{"x*a - b*y", {16, 28}}, Formula{"a*x + b*x", {60, 120}},
                      Formula{"(x + y)*a", {22, 46}}, Formula{"(x - y)/a", {4.5, 8.5}},
                      Formula{"a*(x*a + y)", {42, 86}}, Formula{"(x - a*y)/b", {2, 3.5}},
                      Formula{"(a*x - b*y)/a", {8, 14}}, Formula{"(x*2 + x*2)*b", {160, 320}},
                      Formula{"((a*x + b*x) - a*x)/b", {10, 20}},
                      Formula{"{min(x), max(x), sum(x)}", {10, 20, 30}},
                      Formula{"{averagePower(t), min(t), max(t)}\nt = a*x + b*y",
                              {(24. * 24. + 52. * 52.) / 2., 24, 52}},
                      Formula{"x/a + x/b", {7.5, 15}}, Formula{"x*a*b + y", {81, 163}},
                      Formula{"b*y + (x*a + y)", {25, 55}},
                      Formula{"(y + x*a) + (x - y)", {30, 60}},
                      Formula{"p + q\np = a*x\nq = p - y\nt = q * b", {39, 77}},
                      Formula{"v / a\nv = u - b*y\nu = a*x", {8, 14}}));

TEST(VectorProgramTest, DivisionByZeroLeavesTheOperatorsValueAndIsReported) {
    InputFeature feature(Inputs, "(a*x + y) / b");
    feature.set(1, vOther);
    feature.set(2, vTwo);
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        feature.set(0, vPair);
        feature.set(3, vFour);
        ASSERT_TRUE(feature.evaluate());
    }
    const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
    feature.set(0, vOther);
    feature.set(3, vZero);
    ASSERT_TRUE(feature.evaluate());
    EXPECT_EQ(feature.getValue(), (Elements{5.25, 10.75}));
    EXPECT_TRUE(
        log.contains(log4cplus::ERROR_LOG_LEVEL, "Can't do the division. Tried to divide by '0'."));
}

/// Sets, frame by frame, what a node has handed out as one input, and a frame as the other.
void expectSameWithResult(const std::string& in_strScript, std::size_t in_uiNode,
                          std::size_t in_uiInput) {
    InputTwins twins(in_strScript, {"r"}, Inputs);
    ASSERT_EQ(twins.set(0, vPair) + twins.set(1, vOther), "");
    ASSERT_EQ(twins.set(2, vTwo) + twins.set(3, vFour), "");
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        ASSERT_EQ(twins.evaluate(0), "");
        ASSERT_EQ(twins.setResult(in_uiInput, in_uiNode), "");
        ASSERT_EQ(twins.set(1 - in_uiInput, iFrame % 2 == 0 ? vPair : vOther), "");
    }
    ASSERT_EQ(twins.evaluate(0), "");
}

// One by one, an operator would read what the one ahead of it has just made.
TEST(VectorProgramTest, AnyResultMayBeSetAsAnInput) {
    for (const char* szFormula :
         {"a*x + b*y", "a*x - y", "x + b*y", "(a*x - b*y) / a", "{a, x, y}", "{x, a, x, y}"}) {
        const std::string strScript =
            std::string("inputvar x\ninputvar y\ninputvar a\ninputvar b\nr = ") + szFormula + '\n';
        const std::size_t uiNodes = InputTwins(strScript, {"r"}, Inputs).getNodeCount();
        for (std::size_t uiNode = 0; uiNode != uiNodes; ++uiNode) {
            SCOPED_TRACE(szFormula + (' ' + std::to_string(uiNode)));
            expectSameWithResult(strScript, uiNode, 0);
            expectSameWithResult(strScript, uiNode, 1);
        }
    }
}

// A concatenation clears its result before it reads this part.
TEST(VectorProgramTest, ConcatenationOfAnEmptyPartAndItsOwnResultIsEmpty) {
    const DoubleVector vNone;
    InputTwins twins("inputvar x\ninputvar y\nr = {x, y}\n", {"r"}, {"x", "y"});
    ASSERT_EQ(twins.set(0, vNone), "");
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        ASSERT_EQ(twins.set(1, vPair), "");
        ASSERT_EQ(twins.evaluate(0), "");
    }
    ASSERT_EQ(twins.setResult(1, 0), "");
    ASSERT_EQ(twins.evaluate(0), "");
}

TEST(VectorProgramTest, ConcatenationFollowsTheSizesOfItsParts) {
    InputFeature feature(Inputs, "{a, x, sum(y), y}");
    feature.set(2, vTwo);
    feature.set(3, vFour);
    for (int iFrame = 0; iFrame != 12; ++iFrame) {
        // Of one size in all, of which another share is one part's, every second time.
        const bool bOther = iFrame > 5 && iFrame % 2 != 0;
        feature.set(0, bOther ? vTriple : vPair);
        feature.set(1, bOther ? vOther : vTriple);
        ASSERT_TRUE(feature.evaluate());
        EXPECT_EQ(feature.getValue(),
                  bOther ? (Elements{2, 1, 2, 3, 4, 1, 3}) : (Elements{2, 10, 20, 6, 1, 2, 3}));
    }
    feature.set(0, vFour);
    ASSERT_TRUE(feature.evaluate());
    EXPECT_EQ(feature.getValue(), (Elements{2, 4, 4, 1, 3}));
    feature.set(1, vTwo);
    feature.set(0, vTriple);
    ASSERT_TRUE(feature.evaluate());
    EXPECT_EQ(feature.getValue(), (Elements{2, 1, 2, 3, 2, 2}));
}

TEST(VectorProgramTest, NothingAllocatesBehindTheFirstFrame) {
    InputFeature feature(Inputs, "((a*x + b*x) - a*y) / b + abs({y, y, a}[2, 0] * b)");
    feature.set(3, vTwo);
    expectNoAllocations(feature, vPair, vOther, vOther, vTwo);
}

} // namespace
