#include <velmora/math/xpr/FeatureComputerWithInputs.h>

#include <gmock/gmock.h>

#include "math/xpr/ComputerBench.h"

namespace Velmora::Math::Xpr {

namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using ::testing::ElementsAre;

const std::string Script = "level = sum(left) + sum(right)\n"
                           "shape = {left, right}\n";

class FeatureComputerWithInputsTest : public Testing::ComputerBench {
protected:
    FeatureComputerWithInputsTest()
        : ComputerBench({{"./s.xpr", Script},
                         {"./plain.xpr", "level = 3 + 4\n"},
                         {"./own.xpr", "inputvar left\nlevel = left\n"},
                         {"scripts/s.xpr", Script},
                         {"scripts/diff.xpr", "level = sum(left) - sum(right)\n"}}) {}
};

TEST_F(FeatureComputerWithInputsTest, HasALoggerOfItsOwn) {
    EXPECT_TRUE(log4cplus::Logger::exists("quillmark.math.xpr.FeatureComputerWithInputs"));
}

TEST_F(FeatureComputerWithInputsTest, TheScriptReadsTheInputsByTheirPlainNames) {
    FeatureComputerWithInputs computer("level");
    EXPECT_TRUE(computer.setInputNames({"left", "right"}));
    EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    const DoubleVector vLeft{1.0, 2.0};
    const DoubleVector vRight{10.0};
    EXPECT_TRUE(computer.setInput("left", vLeft));
    EXPECT_TRUE(computer.setInput("right", vRight));
    EXPECT_EQ(compute(computer), "[13]");

    const DoubleVector vNext{5.0};
    EXPECT_TRUE(computer.setInput("left", vNext));
    EXPECT_EQ(compute(computer), "[15]");
    EXPECT_EQ(m_Assertions.count(), 0u);
    EXPECT_EQ(m_Log.count(ERROR_LOG_LEVEL), 0u);
}

TEST_F(FeatureComputerWithInputsTest, HostsUseItThroughTheInterfacesOfTheMathLibrary) {
    FeatureComputerWithInputs computer("shape");
    ASSERT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    Velmora::Math::FeatureComputerWithInputs& withInputs = computer;
    Velmora::Math::FeatureComputer& plain = withInputs;
    const DoubleVector vLeft{1.0, 2.0};
    const DoubleVector vRight{3.0};
    EXPECT_TRUE(withInputs.setInput("left", vLeft));
    EXPECT_TRUE(withInputs.setInput("right", vRight));
    EXPECT_EQ(compute(plain), "[1 2 3]");
    EXPECT_TRUE(plain.reset());
}

TEST_F(FeatureComputerWithInputsTest, AnInputIsReadWhenTheFrameIsComputedAndNotCopied) {
    FeatureComputerWithInputs computer("shape");
    ASSERT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    DoubleVector vLeft{1.0};
    const DoubleVector vRight{2.0};
    ASSERT_TRUE(computer.setInput("left", vLeft));
    ASSERT_TRUE(computer.setInput("right", vRight));
    vLeft[0] = 7.0;
    EXPECT_EQ(compute(computer), "[7 2]");
}

TEST_F(FeatureComputerWithInputsTest, AnUnknownInputIsReported) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    const DoubleVector vFrame{1.0};
    for (const char* szName : {"middle", "", "s.left"}) {
        SCOPED_TRACE(szName);
        m_Log.clear();
        EXPECT_FALSE(computer.setInput(szName, vFrame));
        EXPECT_THAT(m_Log.messages(ERROR_LOG_LEVEL),
                    ElementsAre("can't find variable: \"" + std::string(szName) + "\""));
    }
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerWithInputsTest, AnInputCantBeSetBeforeTheEvaluatorIsLinked) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setEvaluator(&evaluator));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    const DoubleVector vFrame{1.0};
    EXPECT_FALSE(computer.setInput("left", vFrame));
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("m_bLinked && \"please call link() prio to call getVariable()\""));

    ASSERT_TRUE(finish(evaluator));
    EXPECT_TRUE(computer.setInput("left", vFrame));
}

TEST_F(FeatureComputerWithInputsTest, AnInputCantBeSetWithoutAnEvaluator) {
    FeatureComputerWithInputs computer("level");
    const DoubleVector vFrame{1.0};
    EXPECT_FALSE(computer.setInput("left", vFrame));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("!m_pEvaluator.isNull()"));
}

TEST_F(FeatureComputerWithInputsTest, WithoutInputsItIsAPlainComputer) {
    FeatureComputerWithInputs computer("level");
    EXPECT_TRUE(computer.setXprFilename("plain", m_pFileSystem));
    EXPECT_EQ(compute(computer), "[7]");
    EXPECT_FALSE(m_Log.contains(DEBUG_LOG_LEVEL, "add variable \"left\""));
}

TEST_F(FeatureComputerWithInputsTest, TheFeatureHasNoNameWithoutOne) {
    FeatureComputerWithInputs computer;
    ASSERT_TRUE(computer.setXprFilename("plain", m_pFileSystem));
    EXPECT_EQ(compute(computer), "none");
    EXPECT_THAT(errorLines(), ElementsAre("plain. is not a valid expression in this evaluator"));
}

TEST_F(FeatureComputerWithInputsTest, InputsAreAddedInOrderAheadOfTheScript) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"right", "left"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    std::vector<std::string> vAdded;
    for (const std::string& strMessage : m_Log.messages(DEBUG_LOG_LEVEL)) {
        if (strMessage == "linking the expressions...") {
            break;
        }
        if (strMessage.rfind("add variable \"", 0) == 0) {
            vAdded.push_back(strMessage);
        }
    }
    EXPECT_THAT(vAdded, ElementsAre("add variable \"right\"", "add variable \"left\"",
                                    "add variable \"s.level\"", "add variable \"s.shape\""));
}

TEST_F(FeatureComputerWithInputsTest, AnInputThatIsNamedTwiceIsOneVariable) {
    const auto mapBefore = liveBlocks();
    {
        FeatureComputerWithInputs computer("level");
        ASSERT_TRUE(computer.setInputNames({"left", "right", "left"}));
        EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
        const DoubleVector vFrame{2.0};
        EXPECT_TRUE(computer.setInput("left", vFrame));
        EXPECT_TRUE(computer.setInput("right", vFrame));
        EXPECT_EQ(compute(computer), "[4]");
    }
    EXPECT_EQ(m_Assertions.count(), 0u);
    EXPECT_EQ(liveBlocks(), mapBefore);
}

TEST_F(FeatureComputerWithInputsTest, ComputersOfOneEvaluatorShareInputsOfOneName) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    FeatureComputerWithInputs sum("level");
    FeatureComputerWithInputs difference("level");
    ASSERT_TRUE(sum.setInputNames({"left", "right"}));
    ASSERT_TRUE(difference.setInputNames({"right", "left"}));
    for (const auto& [pComputer, szScript] :
         {std::pair(&sum, "s"), std::pair(&difference, "diff")}) {
        ASSERT_TRUE(pComputer->setEvaluator(&evaluator));
        ASSERT_TRUE(pComputer->setXprFilename(szScript, m_pFileSystem));
    }
    ASSERT_TRUE(finish(evaluator));
    const DoubleVector vLeft{5.0};
    const DoubleVector vRight{3.0};
    EXPECT_TRUE(sum.setInput("left", vLeft));
    EXPECT_TRUE(difference.setInput("right", vRight));
    EXPECT_EQ(compute(sum), "[8]");
    EXPECT_EQ(compute(difference), "[2]");
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerWithInputsTest, NamesAreRefusedOnceTheEvaluatorIsSetUp) {
    FeatureComputerWithInputs computer("level");
    EXPECT_TRUE(computer.setInputNames({"wrong"}));
    EXPECT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_FALSE(computer.setInputNames({"other"}));
    const DoubleVector vFrame{1.0};
    EXPECT_TRUE(computer.setInput("left", vFrame));

    FeatureComputerWithInputs failed("level");
    ASSERT_FALSE(failed.setXprFilename("missing", m_pFileSystem));
    EXPECT_FALSE(failed.setInputNames({"left"}));
}

TEST_F(FeatureComputerWithInputsTest, NamesAreTakenWhileTheScriptWaitsForASharedEvaluator) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setEvaluator(LimitedObjPtr<Evaluator>()));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_TRUE(computer.setInputNames({"left", "right"}));
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_TRUE(computer.setEvaluator(&evaluator));
    EXPECT_FALSE(computer.setInputNames({}));
    EXPECT_TRUE(finish(evaluator));
}

TEST_F(FeatureComputerWithInputsTest, AnInputNamedLikeADefinitionFailsTheLoad) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"left", "right", "s.shape"}));
    EXPECT_FALSE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("out_Dictionnary.add( pExpression )"));
    EXPECT_TRUE(m_Log.contains(ERROR_LOG_LEVEL, "can't load script: s"));
}

TEST_F(FeatureComputerWithInputsTest, AnInputNamedLikeTheFirstDefinitionSkipsTheScript) {
    FeatureComputerWithInputs computer("shape");
    ASSERT_TRUE(computer.setInputNames({"left", "right", "s.level"}));
    EXPECT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_TRUE(m_Log.contains(DEBUG_LOG_LEVEL,
                               "script =\"s.xpr\" is already loaded -> Skipping script loading."));
    EXPECT_EQ(m_Assertions.count(), 0u);

    EXPECT_EQ(compute(computer), "none");
    EXPECT_THAT(errorLines(), ElementsAre("s.shape is not a valid expression in this evaluator"));
}

TEST_F(FeatureComputerWithInputsTest, AnInputWithoutANameIsReported) {
    FeatureComputerWithInputs computer("level");
    EXPECT_TRUE(computer.setInputNames({"left", "", "right"}));
    EXPECT_FALSE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_THAT(errorLines(), ElementsAre("an input of a feature computer must have a name"));
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(FeatureComputerWithInputsTest, TheScriptsOwnInputOfThatNameComesFirst) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"left"}));
    ASSERT_TRUE(computer.setXprFilename("own", m_pFileSystem));
    const DoubleVector vInput{1.0};
    const DoubleVector vOwn{2.0};
    EXPECT_TRUE(computer.setInput("left", vInput));
    EXPECT_TRUE(computer.setInput("own.left", vOwn));
    EXPECT_EQ(compute(computer), "[2]");
}

TEST_F(FeatureComputerWithInputsTest, AnInputIsLookedUpOnEachCall) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    const DoubleVector vFrame{1.0};
    EXPECT_TRUE(computer.setInput("left", vFrame));
    EXPECT_TRUE(computer.setInput("left", vFrame));
    EXPECT_EQ(m_Log.count(DEBUG_LOG_LEVEL, "getting variable (optimized): \"left\""), 2u);
}

TEST_F(FeatureComputerWithInputsTest, AFrameWithoutItsInputsFailsUntilTheyAreSetAndItIsReset) {
    FeatureComputerWithInputs computer("level");
    ASSERT_TRUE(computer.setInputNames({"left", "right"}));
    ASSERT_TRUE(computer.setXprFilename("s", m_pFileSystem));
    EXPECT_EQ(compute(computer), "none");
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("m_pExpressionPtr->evaluate(out_vFeature)"));

    const DoubleVector vFrame{1.0};
    ASSERT_TRUE(computer.setInput("left", vFrame));
    ASSERT_TRUE(computer.setInput("right", vFrame));
    EXPECT_TRUE(computer.reset());
    EXPECT_EQ(compute(computer), "[2]");
}

} // namespace

} // namespace Velmora::Math::Xpr
