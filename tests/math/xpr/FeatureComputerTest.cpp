#include <velmora/math/xpr/FeatureComputer.h>

#include <filesystem>
#include <memory>

#include <gmock/gmock.h>

#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/ComputerBench.h"
#include "support/AllocationCounter.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {

namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* OwnTwice =
    "m_bSharedEvaluator || (!m_bSharedEvaluator && m_pEvaluator.isNull())";
constexpr const char* NotLinked =
    "m_bLinked && \"please call link() prio to call getExpression()\"";
constexpr const char* AddToLinked =
    "!m_bLinked && \"evaluator contains linked expressions.  Can't \" \"add expression to "
    "evaluator when the evaluator \" \"when the eveluator contains linked expressions.\"";

const std::string Script = "level = 3 + 4\n"
                           "other = level * 2\n";

class FeatureComputerTest : public Testing::ComputerBench {
protected:
    FeatureComputerTest()
        : ComputerBench({{"./s.xpr", Script},
                         {"./dir/s.xpr", "level = 1\n"},
                         {".//abs/s.xpr", "level = 2\n"},
                         {"./broken.xpr", "level = (\n"},
                         {"./dangling.xpr", "level = nowhere.value\n"},
                         {"./refused.xpr", "level = slidingWindow<0>(1)\n"},
                         {"./memory.xpr", "level = slidingWindow<3>(1)\n"},
                         {"./twice.xpr.xpr", "level = 5\n"},
                         {"scripts/s.xpr", Script},
                         {"scripts/broken.xpr", "level = (\n"},
                         {"scripts/input.xpr", "inputvar frame\n"
                                               "smallest = min(frame)\n"
                                               "total = sum(frame) + energy<8000>(frame)\n"
                                               "window = slidingWindow<3>(frame)\n"}}) {}

    /// A computer of a linked shared evaluator with the script "input".
    std::unique_ptr<FeatureComputer> makeShared(Evaluator& inout_Evaluator,
                                                const char* in_szFeature) {
        auto pComputer = std::make_unique<FeatureComputer>(in_szFeature);
        EXPECT_TRUE(configure(inout_Evaluator));
        EXPECT_TRUE(pComputer->setEvaluator(&inout_Evaluator));
        EXPECT_TRUE(pComputer->setXprFilename("input", m_pFileSystem));
        EXPECT_TRUE(finish(inout_Evaluator));
        m_Log.clear();
        return pComputer;
    }
};

TEST_F(FeatureComputerTest, OneCallSetsUpAnEvaluatorOfItsOwn) {
    FeatureComputer computer("level");
    EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_EQ(compute(computer), "[7]");
    EXPECT_THAT(computerLines(DEBUG_LOG_LEVEL),
                ElementsAre("Creating evaluator for Xpr::FeatureComputer",
                            "XprFeatureComputer: Feature level=[7]"));
    EXPECT_THAT(errorLines(), IsEmpty());
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerTest, AnEvaluatorOfItsOwnIsOptimizedAndItsFunctionsReadTheirParameters) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("memory", m_pFileSystem));
    EXPECT_TRUE(m_Log.contains(DEBUG_LOG_LEVEL, "optimizing the expressions..."));
    EXPECT_TRUE(m_Log.contains(DEBUG_LOG_LEVEL, "reconfiguring expression: memory.level"));
    EXPECT_EQ(compute(computer), "[1]");
}

TEST_F(FeatureComputerTest, AnEvaluatorOfItsOwnDiesWithTheComputer) {
    const auto mapBefore = liveBlocks();
    {
        FeatureComputer computer("level");
        ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
        ASSERT_EQ(compute(computer), "[7]");
        EXPECT_EQ(MemAccounts::get("Evaluator").liveBlocks, 1u);
    }
    EXPECT_EQ(liveBlocks(), mapBefore);
}

TEST_F(FeatureComputerTest, ScriptsOfAnEvaluatorOfItsOwnAreSoughtBelowTheWorkingDirectory) {
    const struct {
        const char* m_szName;
        const char* m_szPath;
        const char* m_szValue;
    } cases[] = {
        {"s", "./s.xpr", "[7]"},
        {"dir/s", "./dir/s.xpr", "[1]"},
        {"/abs/s", ".//abs/s.xpr", "[2]"},
    };
    for (const auto& [szName, szPath, szValue] : cases) {
        SCOPED_TRACE(szName);
        FeatureComputer computer("level");
        EXPECT_TRUE(computer.setXprFilename(szName, m_pFileSystem));
        EXPECT_THAT(takeAskedPaths(), ElementsAre(szPath));
        EXPECT_EQ(compute(computer), szValue);
    }
}

TEST_F(FeatureComputerTest, ANullFileSystemStandsForTheFilesOfTheMachine) {
    const TempDirectory directory;
    directory.write("s.xpr", "level = 11\n");
    const std::string strName = std::filesystem::relative(directory.path("s")).string();
    FeatureComputer computer("level");
    EXPECT_TRUE(computer.setXprFilename(strName.c_str(), TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(compute(computer), "[11]");
}

TEST_F(FeatureComputerTest, AScriptThatCantBeSetUpIsReportedAndTheSecondCallFailsAnAssertion) {
    for (const char* szName : {"missing", "broken", "dangling", "refused", ""}) {
        SCOPED_TRACE(szName);
        m_Assertions.clear();
        m_Log.clear();
        FeatureComputer computer("level");
        EXPECT_FALSE(computer.setXprFilename(szName, m_pFileSystem));
        EXPECT_GE(m_Log.count(ERROR_LOG_LEVEL), 1u);
        EXPECT_EQ(m_Assertions.count(), 0u);

        EXPECT_FALSE(computer.setXprFilename("s", m_pFileSystem));
        EXPECT_THAT(m_Assertions.expressions(), ElementsAre(OwnTwice));
    }
}

TEST_F(FeatureComputerTest, FunctionsReadTheirParametersEvenIfLinkingFailed) {
    FeatureComputer computer("level");
    EXPECT_FALSE(computer.setXprFilename("dangling", m_pFileSystem));
    EXPECT_TRUE(m_Log.contains(DEBUG_LOG_LEVEL, "reconfiguring expression: dangling.level"));
}

TEST_F(FeatureComputerTest, ASecondScriptForAnEvaluatorOfItsOwnIsRefusedAndTheFirstStays) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_FALSE(computer.setXprFilename("dir/s", m_pFileSystem));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre(OwnTwice));
    EXPECT_EQ(compute(computer), "[7]");
}

TEST_F(FeatureComputerTest, ASharedEvaluatorBehindOneOfItsOwnIsRefused) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_FALSE(computer.setEvaluator(&evaluator));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("m_pEvaluator.isNull()"));
    EXPECT_EQ(compute(computer), "[7]");
}

TEST_F(FeatureComputerTest, ASecondSharedEvaluatorIsRefused) {
    Evaluator evaluator;
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setEvaluator(&evaluator));
    EXPECT_FALSE(computer.setEvaluator(&evaluator));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("m_pEvaluator.isNull()"));
}

TEST_F(FeatureComputerTest, AScriptForASharedEvaluatorIsAddedAtOnceAndLinkedByItsOwner) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    FeatureComputer level("level");
    FeatureComputer other("other");
    EXPECT_TRUE(level.setEvaluator(&evaluator));
    EXPECT_THAT(takeAskedPaths(), IsEmpty());
    EXPECT_TRUE(level.setXprFilename("s", m_pFileSystem));
    EXPECT_THAT(takeAskedPaths(), ElementsAre("scripts/s.xpr"));
    EXPECT_TRUE(other.setEvaluator(&evaluator));
    EXPECT_TRUE(other.setXprFilename("s", m_pFileSystem));
    EXPECT_FALSE(m_Log.contains(DEBUG_LOG_LEVEL, "linking the expressions..."));
    EXPECT_FALSE(m_Log.contains(DEBUG_LOG_LEVEL, "reconfiguring expression: "));

    EXPECT_TRUE(finish(evaluator));
    EXPECT_EQ(compute(level), "[7]");
    EXPECT_EQ(compute(other), "[14]");
    EXPECT_THAT(computerLines(DEBUG_LOG_LEVEL),
                ElementsAre("XprFeatureComputer: Feature level=[7]",
                            "XprFeatureComputer: Feature other=[14]"));
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerTest, ASharedEvaluatorIsNeitherHeldNorReleased) {
    const Handle<Evaluator> pEvaluator(new Evaluator);
    ASSERT_TRUE(configure(*pEvaluator));
    {
        FeatureComputer computer("level");
        ASSERT_TRUE(computer.setEvaluator(pEvaluator));
        ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
        EXPECT_EQ(pEvaluator.getReferenceCount(), 1);
    }
    EXPECT_EQ(pEvaluator.getReferenceCount(), 1);
    EXPECT_TRUE(finish(*pEvaluator));
    EXPECT_FALSE(pEvaluator->getExpression("s.level").isNull());
}

TEST_F(FeatureComputerTest, AScriptThatCantBeAddedToASharedEvaluatorIsReported) {
    for (const char* szName : {"missing", "broken"}) {
        SCOPED_TRACE(szName);
        m_Log.clear();
        Evaluator evaluator;
        ASSERT_TRUE(configure(evaluator));
        FeatureComputer computer("level");
        ASSERT_TRUE(computer.setEvaluator(&evaluator));
        EXPECT_FALSE(computer.setXprFilename(szName, m_pFileSystem));
        EXPECT_TRUE(m_Log.contains(ERROR_LOG_LEVEL, std::string("can't load script: ") + szName));
        // Its owner may name another one.
        EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    }
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerTest, AScriptForALinkedSharedEvaluatorIsRefused) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addScript("s"));
    ASSERT_TRUE(finish(evaluator));
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setEvaluator(&evaluator));
    EXPECT_FALSE(computer.setXprFilename("input", m_pFileSystem));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre(AddToLinked));
}

TEST_F(FeatureComputerTest, AComputerThatIsToShareWaitsForTheEvaluatorAndAddsItsScriptThen) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setEvaluator(LimitedObjPtr<Evaluator>()));
    const int iHandles = m_pFileSystem.getReferenceCount();
    EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_THAT(takeAskedPaths(), IsEmpty());
    EXPECT_EQ(m_pFileSystem.getReferenceCount(), iHandles + 1);

    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    const int iHandlesWithEvaluator = m_pFileSystem.getReferenceCount();
    EXPECT_TRUE(computer.setEvaluator(&evaluator));
    EXPECT_THAT(takeAskedPaths(), ElementsAre("scripts/s.xpr"));
    // The file system is remembered no longer than needed.
    EXPECT_EQ(m_pFileSystem.getReferenceCount(), iHandlesWithEvaluator - 1);
    ASSERT_TRUE(finish(evaluator));
    EXPECT_EQ(compute(computer), "[7]");
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerTest, AScriptThatWaitedAndCantBeAddedFailsTheSettingOfTheEvaluator) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setEvaluator(LimitedObjPtr<Evaluator>()));
    ASSERT_TRUE(computer.setXprFilename("missing", m_pFileSystem));
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_FALSE(computer.setEvaluator(&evaluator));
    EXPECT_TRUE(m_Log.contains(ERROR_LOG_LEVEL, "can't load script: missing"));
}

TEST_F(FeatureComputerTest, WithoutLinkingTheFeatureIsMissingAndLaterItIsThere) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setEvaluator(&evaluator));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    DoubleVector vFeature{9.0};
    EXPECT_FALSE(computer.computeFeatures(vFeature));
    EXPECT_THAT(vFeature, ElementsAre(9.0));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre(NotLinked, "false"));
    EXPECT_THAT(errorLines(), ElementsAre("s.level is not a valid expression in this evaluator"));

    ASSERT_TRUE(finish(evaluator));
    EXPECT_EQ(compute(computer), "[7]");
}

TEST_F(FeatureComputerTest, AFeatureThatTheScriptDoesntDefineIsReportedOnEachCall) {
    FeatureComputer computer("loudness");
    ASSERT_TRUE(computer.setXprFilename("dir/s", m_pFileSystem));
    EXPECT_EQ(compute(computer), "none");
    EXPECT_EQ(compute(computer), "none");
    const std::string strLine = "s.loudness is not a valid expression in this evaluator";
    EXPECT_THAT(errorLines(), ElementsAre(strLine, strLine));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("false", "false"));
}

TEST_F(FeatureComputerTest, AComputerWithoutAScriptSaysThatItHasNone) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    FeatureComputer fresh("level");
    FeatureComputer shared("level");
    ASSERT_TRUE(shared.setEvaluator(&evaluator));
    for (FeatureComputer* pComputer : {&fresh, &shared}) {
        EXPECT_EQ(compute(*pComputer), "none");
    }
    const std::string strLine = "Could not extract XPR script name from filename ";
    EXPECT_THAT(errorLines(), ElementsAre(strLine, strLine));
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerTest, AScriptNameThatEndsInASlashHasNoStem) {
    m_pFiles->setFile("./dir/.xpr", "level = 1\n");
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("dir/", m_pFileSystem));
    EXPECT_EQ(compute(computer), "none");
    EXPECT_THAT(errorLines(), ElementsAre("Could not extract XPR script name from filename dir/"));
}

TEST_F(FeatureComputerTest, AScriptNameWithItsExtensionIsSoughtWithTheExtensionTwice) {
    FeatureComputer computer("level");
    EXPECT_FALSE(computer.setXprFilename("s.xpr", m_pFileSystem));
    EXPECT_THAT(takeAskedPaths(), ElementsAre("./s.xpr.xpr"));

    // The extension is stripped from the name of the feature, though the script bears it.
    FeatureComputer twice("level");
    EXPECT_TRUE(twice.setXprFilename("twice.xpr", m_pFileSystem));
    EXPECT_EQ(compute(twice), "none");
    EXPECT_THAT(errorLines(),
                ElementsAre("twice.level is not a valid expression in this evaluator"));
}

TEST_F(FeatureComputerTest, NullNamesFailAnAssertion) {
    FeatureComputer computer(nullptr);
    EXPECT_FALSE(computer.setXprFilename(nullptr, m_pFileSystem));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("in_szFeatureName", "in_szFileName"));
    // Nothing was set up: a script can still be named.
    EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
}

TEST_F(FeatureComputerTest, AnExpressionThatCantBeComputedFailsAnAssertionAndLeavesTheOutput) {
    Evaluator evaluator;
    const auto pComputer = makeShared(evaluator, "smallest");
    const DoubleVector vEmpty;
    evaluator.getVariable("input.frame")->setValue(vEmpty);
    DoubleVector vFeature{9.0};
    EXPECT_FALSE(pComputer->computeFeatures(vFeature));
    EXPECT_THAT(vFeature, ElementsAre(9.0));
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("m_pExpressionPtr->evaluate(out_vFeature)"));
}

TEST_F(FeatureComputerTest, AfterAFrameThatFailedResetMakesTheFeatureComputableAgain) {
    Evaluator evaluator;
    const auto pComputer = makeShared(evaluator, "smallest");
    const Handle<Variable> pFrame = evaluator.getVariable("input.frame");
    const DoubleVector vEmpty;
    pFrame->setValue(vEmpty);
    ASSERT_EQ(compute(*pComputer), "none");
    const DoubleVector vFrame{4.0, -2.0};
    pFrame->setValue(vFrame);
    EXPECT_TRUE(pComputer->reset());
    EXPECT_EQ(compute(*pComputer), "[-2]");
    EXPECT_EQ(m_Assertions.count(), 1u);
}

TEST_F(FeatureComputerTest, TheExpressionIsLookedUpOnceOnly) {
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    for (int iFrame = 0; iFrame != 3; ++iFrame) {
        EXPECT_EQ(compute(computer), "[7]");
    }
    EXPECT_EQ(m_Log.count(DEBUG_LOG_LEVEL, "getting expression (optimized): \"s.level\""), 1u);
}

TEST_F(FeatureComputerTest, ComputersOfOneEvaluatorShareTheStateOfItsFunctions) {
    Evaluator evaluator;
    const auto pFirst = makeShared(evaluator, "window");
    FeatureComputer second("window");
    const DoubleVector vOne{1.0};
    const DoubleVector vTwo{2.0};
    const Handle<Variable> pFrame = evaluator.getVariable("input.frame");
    pFrame->setValue(vOne);
    EXPECT_EQ(compute(*pFirst), "[1]");
    pFrame->setValue(vTwo);
    EXPECT_EQ(compute(*pFirst), "[1 2]");
}

TEST_F(FeatureComputerTest, ResetBeforeTheFirstFrameDoesNothing) {
    FeatureComputer fresh("level");
    EXPECT_TRUE(fresh.reset());
    Evaluator evaluator;
    const auto pComputer = makeShared(evaluator, "window");
    const DoubleVector vFrame{1.0};
    const DoubleVector vNext{2.0};
    evaluator.getVariable("input.frame")->setValue(vFrame);
    ASSERT_TRUE(
        evaluator.getExpression("input.window")->evaluate(*std::make_unique<DoubleVector>()));
    EXPECT_TRUE(pComputer->reset());
    evaluator.getVariable("input.frame")->setValue(vNext);
    EXPECT_EQ(compute(*pComputer), "[1 2]");
}

TEST_F(FeatureComputerTest, ResetForgetsTheFramesBeforeAndNothingElse) {
    Evaluator evaluator;
    const auto pComputer = makeShared(evaluator, "window");
    const DoubleVector vOne{1.0};
    const DoubleVector vTwo{2.0};
    const Handle<Variable> pFrame = evaluator.getVariable("input.frame");
    pFrame->setValue(vOne);
    ASSERT_EQ(compute(*pComputer), "[1]");
    pFrame->setValue(vTwo);
    ASSERT_EQ(compute(*pComputer), "[1 2]");
    EXPECT_TRUE(pComputer->reset());
    // The variable keeps its value, the function its parameter, the computer its expression.
    EXPECT_EQ(compute(*pComputer), "[2]");
    EXPECT_EQ(m_Log.count(DEBUG_LOG_LEVEL, "getting expression (optimized): "), 1u);
}

TEST_F(FeatureComputerTest, ResetThroughTheInterfaceResetsTheComputerAndNotItsLogger) {
    Evaluator evaluator;
    const auto pComputer = makeShared(evaluator, "window");
    const DoubleVector vOne{1.0};
    evaluator.getVariable("input.frame")->setValue(vOne);
    ASSERT_EQ(compute(*pComputer), "[1]");
    Resettable& resettable = *pComputer;
    EXPECT_TRUE(resettable.reset());
    const DoubleVector vTwo{2.0};
    evaluator.getVariable("input.frame")->setValue(vTwo);
    EXPECT_EQ(compute(*pComputer), "[2]");
}

TEST_F(FeatureComputerTest, ASteadyFrameAllocatesNothing) {
    Evaluator evaluator;
    const auto pComputer = makeShared(evaluator, "total");
    const LogCapture quiet("", log4cplus::ERROR_LOG_LEVEL);
    pComputer->getLogger().reset();
    const Handle<Variable> pFrame = evaluator.getVariable("input.frame");
    DoubleVector vFeature;
    const DoubleVector vEven{1.0, 2.0};
    const DoubleVector vOdd{3.0, 4.0};
    const auto computeFrames = [&](int in_iCount) {
        bool bComputed = true;
        for (int iFrame = 0; iFrame != in_iCount; ++iFrame) {
            pFrame->setValue(iFrame % 2 == 0 ? vEven : vOdd);
            bComputed = pComputer->computeFeatures(vFeature) && bComputed;
        }
        return bComputed;
    };
    ASSERT_TRUE(computeFrames(2));
    const Testing::AllocationCounter counter;
    const bool bComputed = computeFrames(10);
    const std::size_t uiAllocations = counter.allocations();
    EXPECT_TRUE(bComputed);
    EXPECT_EQ(uiAllocations, 0u);
}

} // namespace

} // namespace Velmora::Math::Xpr
