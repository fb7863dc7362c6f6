// What a plan computes of scalars alone, against the walk that it replaces.

#include <array>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "math/xpr/InputTwins.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

using Names = std::vector<std::string>;

const Names Inputs{"a", "b", "c"};

/// A script over three inputs whose nodes are all inputs, constants, variables and operators.
struct ScalarScript {
    ScalarScript(std::string in_strText, Names in_vFeatures)
        : m_strText(std::move(in_strText)), m_vFeatures(std::move(in_vFeatures)) {}

    explicit ScalarScript(std::mt19937_64& inout_Random) {
        for (const std::string& strInput : Inputs) {
            m_strText += "inputvar " + strInput + '\n';
        }
        Names vNames(Inputs);
        const std::size_t uiCount = 1 + inout_Random() % 12;
        for (std::size_t ui = 0; ui != uiCount; ++ui) {
            const auto operand = [&] {
                const std::size_t uiChoice = inout_Random() % (vNames.size() + 1);
                return uiChoice == vNames.size() ? std::string("1.5") : vNames[uiChoice];
            };
            const std::string strName = 'f' + std::to_string(ui);
            m_strText += strName + " = " + operand();
            for (std::size_t uiOperators = inout_Random() % 4; uiOperators != 0; --uiOperators) {
                m_strText += std::string(" ") + "+-*/"[inout_Random() % 4] + ' ' + operand();
            }
            m_strText += '\n';
            vNames.push_back(strName);
            m_vFeatures.push_back(strName);
        }
    }

    std::string m_strText;
    Names m_vFeatures;
};

InputTwins makeTwins(const ScalarScript& in_Script) {
    return {in_Script.m_strText, in_Script.m_vFeatures, Inputs};
}

/// Values of inputs: now and then one that can't be divided by, or has another size.
class Values {
public:
    explicit Values(std::mt19937_64& inout_Random) : m_Random(inout_Random) {}

    const DoubleVector& draw() {
        const std::size_t uiKind = m_Random() % 24;
        if (uiKind == 0) {
            return m_vZero;
        }
        return uiKind == 1 ? m_vPair : m_vOnes[m_Random() % m_vOnes.size()];
    }

private:
    std::mt19937_64& m_Random;
    DoubleVector m_vZero{0.0};
    DoubleVector m_vPair{1.25, -3.0};
    std::array<DoubleVector, 3> m_vOnes{DoubleVector{0.7}, DoubleVector{-2.3}, DoubleVector{1e9}};
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::uint64_t SeedCount = 30;
#else
constexpr std::uint64_t SeedCount = 600;
#endif

TEST(ScalarProgramTest, GivesTheFlagsAndValuesOfTheWalkInFramesThatAreAlike) {
    for (std::uint64_t uiSeed = 0; uiSeed != SeedCount; ++uiSeed) {
        std::mt19937_64 random(uiSeed);
        const ScalarScript script(random);
        InputTwins twins = makeTwins(script);
        Values values(random);
        // The same inputs are set, and the same nodes asked for, several frames long.
        for (std::size_t uiScene = 0; uiScene != 6; ++uiScene) {
            const std::size_t uiInputs = random() % 8;
            const std::size_t uiFirst = random() % 3 == 0 ? random() : 0;
            const std::size_t uiSecond = random();
            for (std::size_t uiFrame = 0; uiFrame != 5; ++uiFrame) {
                const auto where = [&] {
                    return "seed " + std::to_string(uiSeed) + ", scene " + std::to_string(uiScene) +
                           ", frame " + std::to_string(uiFrame) + '\n' + script.m_strText;
                };
                for (std::size_t uiInput = 0; uiInput != Inputs.size(); ++uiInput) {
                    // All are set once.
                    if (uiScene == 0 || (uiInputs >> uiInput & 1) != 0) {
                        ASSERT_EQ(twins.set(uiInput, values.draw()), "") << where();
                    }
                }
                if (random() % 16 == 0) {
                    ASSERT_EQ(twins.invalidate(random()), "") << where();
                }
                if (random() % 16 == 0) {
                    const std::size_t uiFeature = random() % script.m_vFeatures.size();
                    ASSERT_EQ(twins.setResult(random() % Inputs.size(), uiFeature), "") << where();
                }
                ASSERT_EQ(twins.evaluate(uiFirst), "") << where();
                ASSERT_EQ(twins.evaluate(uiSecond), "") << where();
            }
        }
    }
}

TEST(ScalarProgramTest, FailureUnderEitherProgramLeavesTheFlagsOfTheWalk) {
    InputTwins twins =
        makeTwins({"inputvar a\ninputvar b\ninputvar c\nr = 1 / a + b * c\n", {"r"}});
    const DoubleVector vZero{0.0}, vOne{1.0};
    EXPECT_EQ(twins.set(2, vOne), "");
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        EXPECT_EQ(twins.set(0, vOne) + twins.set(1, vOne) + twins.evaluate(0), "");
    }
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        EXPECT_EQ(twins.set(0, vOne) + twins.evaluate(0), "");
    }
    EXPECT_EQ(twins.set(0, vZero) + twins.evaluate(0), "");
    EXPECT_EQ(twins.set(0, vOne) + twins.evaluate(0), "");
    EXPECT_EQ(twins.set(0, vZero) + twins.set(1, vOne) + twins.evaluate(0), "");
    EXPECT_EQ(twins.set(0, vOne) + twins.evaluate(0), "");
}

// One by one, an operator that is computed later reads what has just been made.
TEST(ScalarProgramTest, AnyResultMayBeSetAsAnInput) {
    const DoubleVector vOne{1.0}, vTwo{2.0};
    const ScalarScript script("inputvar a\ninputvar b\ninputvar c\n"
                              "p = a * b\nq = p - c\nr = p + c * 3 - q\n",
                              {"r", "p", "q"});
    for (std::size_t uiFeature = 0; uiFeature != script.m_vFeatures.size(); ++uiFeature) {
        InputTwins twins = makeTwins(script);
        ASSERT_EQ(twins.set(0, vOne) + twins.set(1, vTwo) + twins.set(2, vTwo), "");
        for (int iFrame = 0; iFrame != 6; ++iFrame) {
            ASSERT_EQ(twins.evaluate(0), "");
            ASSERT_EQ(twins.setResult(2, uiFeature), "");
            ASSERT_EQ(twins.set(0, iFrame % 2 == 0 ? vOne : vTwo), "");
        }
        ASSERT_EQ(twins.evaluate(0), "") << uiFeature;
    }
}

TEST(ScalarProgramTest, ChainOfNamesHandsOutTheInputOfEachFrame) {
    InputTwins twins =
        makeTwins({"inputvar a\ninputvar b\ninputvar c\nf0 = a\nf1 = f0\nf2 = f1\nf3 = f2\n"
                   "f4 = f3\nf5 = f4\nf6 = f5\n",
                   {"f6", "f3"}});
    const DoubleVector vOne{1.0}, vTwo{2.0};
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        EXPECT_EQ(twins.set(0, iFrame % 2 == 0 ? vOne : vTwo), "");
        EXPECT_EQ(twins.evaluate(0), "");
        EXPECT_EQ(twins.evaluate(1), "");
    }
}

InputFeature makeFeature(const std::string& in_strFormula) {
    return InputFeature(Inputs, in_strFormula);
}

const DoubleVector vTwo{2.0};
const DoubleVector vThree{3.0};
const DoubleVector vZero{0.0};
const DoubleVector vPair{10.0, 20.0};

using Elements = std::vector<double>;

TEST(ScalarProgramTest, ValuesFollowTheInputsFromFrameToFrame) {
    InputFeature feature = makeFeature("(a + b) * (a - c) / b");
    feature.set(1, vTwo);
    feature.set(2, vThree);
    for (int iFrame = 0; iFrame != 8; ++iFrame) {
        const DoubleVector vA{static_cast<double>(iFrame)};
        feature.set(0, vA);
        ASSERT_TRUE(feature.evaluate());
        EXPECT_EQ(feature.getValue(), (Elements{(iFrame + 2.0) * (iFrame - 3.0) / 2.0}));
    }
}

TEST(ScalarProgramTest, InputThatIsNotSetAnewIsReadFromItsLastVector) {
    InputFeature feature = makeFeature("a * b + c");
    feature.set(1, vTwo);
    feature.set(2, vThree);
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        feature.set(0, iFrame % 2 == 0 ? vTwo : vThree);
        ASSERT_TRUE(feature.evaluate());
        EXPECT_EQ(feature.getValue(), (Elements{iFrame % 2 == 0 ? 7.0 : 9.0}));
    }
    feature.set(1, vThree);
    ASSERT_TRUE(feature.evaluate());
    feature.set(0, vTwo);
    ASSERT_TRUE(feature.evaluate());
    EXPECT_EQ(feature.getValue(), (Elements{9.0}));
}

TEST(ScalarProgramTest, InputMayGrowToAVectorAndBack) {
    InputFeature feature = makeFeature("a * b");
    feature.set(1, vTwo);
    for (int iRound = 0; iRound != 3; ++iRound) {
        for (int iFrame = 0; iFrame != 4; ++iFrame) {
            feature.set(0, vThree);
            ASSERT_TRUE(feature.evaluate());
            EXPECT_EQ(feature.getValue(), (Elements{6.0}));
        }
        feature.set(0, vPair);
        ASSERT_TRUE(feature.evaluate());
        EXPECT_EQ(feature.getValue(), (Elements{20.0, 40.0}));
    }
}

TEST(ScalarProgramTest, DivisionByZeroLeavesTheOperatorsValueAndIsReported) {
    InputFeature feature = makeFeature("(a + c) / b");
    feature.set(2, vThree);
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        feature.set(0, vThree);
        feature.set(1, vTwo);
        ASSERT_TRUE(feature.evaluate());
    }
    const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
    feature.set(0, vTwo);
    feature.set(1, vZero);
    ASSERT_TRUE(feature.evaluate());
    EXPECT_EQ(feature.getValue(), (Elements{3.0}));
    EXPECT_TRUE(
        log.contains(log4cplus::ERROR_LOG_LEVEL, "Can't do the division. Tried to divide by '0'."));
}

TEST(ScalarProgramTest, NothingAllocatesBehindTheFirstFrame) {
    InputFeature feature = makeFeature("(a + b) * (a - c) / b + a");
    expectNoAllocations(feature, vTwo, vThree, vTwo, vThree);
}

} // namespace
