#include <velmora/math/xpr/Evaluator.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include <velmora/MemAccounts.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/AssertionCapture.h"
#include "support/GraphInvariants.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"
#include "support/MemoryFileSystem.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Testing::MemoryFileSystem;
using Testing::scriptsIn;

constexpr const char* LoggerName = "quillmark.math.xpr.Evaluator";

/// A variable that says when it dies.
class Mortal : public VariableImpl {
public:
    explicit Mortal(const char* in_szName, int& inout_iAlive) : m_iAlive(inout_iAlive) {
        setName(in_szName);
        setValue(Handle<Expression>(new ConstantImpl(DoubleVector{1.0})));
        ++m_iAlive;
    }
    ~Mortal() override { --m_iAlive; }

private:
    int& m_iAlive;
};

/// Counts how often it was configured; refuses when told to.
class Configured : public ScriptFunctionImpl {
public:
    Configured(const char* in_szName, int& inout_iCount, bool in_bAccept)
        : ScriptFunctionImpl(in_szName), m_iCount(inout_iCount), m_bAccept(in_bAccept) {
        setImplementation(Handle<Expression>(new ConstantImpl(DoubleVector{1.0})));
    }

protected:
    using ScriptFunctionImpl::configure_i;
    bool configure_i(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        ++m_iCount;
        return m_bAccept;
    }
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier&) const override {
        return Handle<ExpressionBaseImpl>(new Configured(getName(), m_iCount, m_bAccept));
    }

private:
    int& m_iCount;
    bool m_bAccept;
};

std::string textOf(const Handle<Expression>& in_pExpression) {
    DoubleVector vValue;
    if (in_pExpression.isNull() || !in_pExpression->evaluate(vValue)) {
        return "none";
    }
    std::ostringstream text;
    text << vValue;
    return text.str();
}

class EvaluatorTest : public ::testing::Test {
protected:
    EvaluatorTest()
        : m_pFiles(new MemoryFileSystem({{"scripts/s.xpr", "inputvar in\n"
                                                           "twice(x) = x + x\n"
                                                           "y = twice(in) + twice(in)\n"},
                                         {"scripts/broken.xpr", "a = 1\nb = (\n"},
                                         {"scripts/needs.xpr", "z = later.value\n"}})),
          m_pFileSystem(m_pFiles) {}

    bool configure(Evaluator& inout_Evaluator) {
        return inout_Evaluator.configure(scriptsIn("scripts"), m_pFileSystem);
    }

    /// Configured, with the script "s" linked.
    void setUp(Evaluator& inout_Evaluator, bool in_bOptimize) {
        ASSERT_TRUE(configure(inout_Evaluator));
        ASSERT_TRUE(inout_Evaluator.addScript("s"));
        ASSERT_TRUE(inout_Evaluator.link(in_bOptimize));
        ASSERT_TRUE(inout_Evaluator.reconfigureExpressions());
        m_Log.clear();
    }

    std::vector<std::string> lines(log4cplus::LogLevel in_level) const {
        std::vector<std::string> vLines;
        for (const LogLine& line : m_Log.lines()) {
            if (line.level == in_level && line.logger == LoggerName) {
                vLines.push_back(line.message);
            }
        }
        return vLines;
    }

    std::vector<std::string> debugLines() const { return lines(log4cplus::DEBUG_LOG_LEVEL); }
    std::vector<std::string> errorLines() const { return lines(log4cplus::ERROR_LOG_LEVEL); }

    MemoryFileSystem* m_pFiles;
    TSHandle<VirtualFileSystem> m_pFileSystem;
    AssertionCapture m_Assertions;
    LogCapture m_Log;
};

constexpr const char* AddToLinked =
    "!m_bLinked && \"evaluator contains linked expressions.  Can't \" \"add expression to "
    "evaluator when the evaluator \" \"when the eveluator contains linked expressions.\"";

TEST_F(EvaluatorTest, ConfigureBuildsTheStagesInOrder) {
    Evaluator evaluator;
    EXPECT_TRUE(configure(evaluator));
    EXPECT_THAT(debugLines(),
                ElementsAre("configuring the script loader...", "configuring the linker...",
                            "configuring the optimizer..."));
}

TEST_F(EvaluatorTest, AConfigurationWithoutDirectoriesIsRefused) {
    Evaluator evaluator;
    EXPECT_FALSE(evaluator.configure(ParameterTrie(), m_pFileSystem));
    EXPECT_THAT(errorLines(), ElementsAre("failed to configure the script loader"));
    EXPECT_THAT(debugLines(), ElementsAre("configuring the script loader..."));
}

TEST_F(EvaluatorTest, ARefusedConfigurationKeepsWhatWasBuilt) {
    Evaluator evaluator;
    EXPECT_FALSE(evaluator.configure(ParameterTrie(), m_pFileSystem));
    std::istringstream script("a = 1\n");
    EXPECT_TRUE(evaluator.addScript(script, "t"));
    EXPECT_FALSE(evaluator.link(false));
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!m_pLinker.isNull() && \"please call configure prior to link()\""));
}

TEST_F(EvaluatorTest, WithoutAFileSystemItReadsTheMachinesFiles) {
    const TempDirectory directory;
    directory.write("disk.xpr", "a = 4\n");
    Evaluator evaluator;
    ASSERT_TRUE(
        evaluator.configure(scriptsIn(directory.path().c_str()), TSHandle<VirtualFileSystem>()));
    ASSERT_TRUE(evaluator.addScript("disk"));
    ASSERT_TRUE(evaluator.link(false));
    EXPECT_EQ(textOf(evaluator.getExpression("disk.a")), "[4]");
}

TEST_F(EvaluatorTest, EveryCallBeforeConfigureIsAnAssertion) {
    Evaluator evaluator;
    std::istringstream script("a = 1\n");
    EXPECT_FALSE(evaluator.addScript("s"));
    EXPECT_FALSE(evaluator.addScript(script, "s"));
    EXPECT_FALSE(evaluator.addExpression(nullptr));
    EXPECT_FALSE(evaluator.link(true));
    EXPECT_TRUE(evaluator.getExpression("a").isNull());
    EXPECT_TRUE(evaluator.getVariable("a").isNull());
    EXPECT_TRUE(evaluator.getFunction("a").isNull());
    EXPECT_FALSE(evaluator.reconfigureExpressions());
    EXPECT_FALSE(evaluator.dump("never-written"));
    const auto condition = [](const char* in_szOperation) {
        return "!m_pDictionnary.isNull() && \"please call configure prior to " +
               std::string(in_szOperation) + "()\"";
    };
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre(condition("addScript"), condition("addScript"),
                            condition("addExpression"), condition("link"),
                            condition("getExpression"), condition("getVariable"),
                            condition("getFunction"),
                            "!m_pDictionnary.isNull() && \"please call configure prior to \" "
                            "\"reconfigureExpressions()\"",
                            condition("dump")));
}

TEST_F(EvaluatorTest, LookUpsBeforeLinkAreAssertions) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addScript("s"));
    EXPECT_TRUE(evaluator.getExpression("s.y").isNull());
    EXPECT_TRUE(evaluator.getVariable("s.y").isNull());
    EXPECT_TRUE(evaluator.getFunction("s.y").isNull());
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("m_bLinked && \"please call link() prio to call getExpression()\"",
                            "m_bLinked && \"please call link() prio to call getVariable()\"",
                            "m_bLinked && \"please call link() prio to call getFunction()\""));
}

TEST_F(EvaluatorTest, AMissingScriptIsReported) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_FALSE(evaluator.addScript("missing"));
    EXPECT_THAT(errorLines(), ElementsAre("can't load script: missing"));
    EXPECT_TRUE(m_Log.contains(log4cplus::ERROR_LOG_LEVEL, "can't open file: scripts/missing.xpr"));
}

TEST_F(EvaluatorTest, AFaultyScriptIsReportedAndLeavesWhatItDefinedAheadOfTheFault) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_FALSE(evaluator.addScript("broken"));
    EXPECT_THAT(errorLines(), ElementsAre("can't load script: broken"));
    ASSERT_TRUE(evaluator.link(false));
    EXPECT_EQ(textOf(evaluator.getExpression("broken.a")), "[1]");
}

TEST_F(EvaluatorTest, AFaultyStreamIsReported) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    std::istringstream script("a = )\n");
    EXPECT_FALSE(evaluator.addScript(script, "stream"));
    EXPECT_THAT(errorLines(), ElementsAre("can't load script: stream"));
}

TEST_F(EvaluatorTest, NothingCanBeAddedBehindLink) {
    Evaluator evaluator;
    setUp(evaluator, false);
    int iAlive = 0;
    std::istringstream script("a = 1\n");
    EXPECT_FALSE(evaluator.addScript("s"));
    EXPECT_FALSE(evaluator.addScript(script, "t"));
    EXPECT_FALSE(evaluator.addExpression(new Mortal("late", iAlive)));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre(AddToLinked, AddToLinked, AddToLinked));
    EXPECT_EQ(iAlive, 0);
}

TEST_F(EvaluatorTest, AnExpressionOfAHostIsLinkedWithTheOthers) {
    Evaluator evaluator;
    int iAlive = 0;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_TRUE(evaluator.addExpression(new Mortal("host.gain", iAlive)));
    std::istringstream script("a = host.gain + 1\n");
    ASSERT_TRUE(evaluator.addScript(script, "t"));
    ASSERT_TRUE(evaluator.link(false));
    EXPECT_EQ(textOf(evaluator.getExpression("t.a")), "[2]");
    EXPECT_EQ(iAlive, 1);
}

TEST_F(EvaluatorTest, AnExpressionOfATakenNameIsDestroyed) {
    Evaluator evaluator;
    int iAlive = 0;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addExpression(new Mortal("a", iAlive)));
    EXPECT_FALSE(evaluator.addExpression(new Mortal("a", iAlive)));
    EXPECT_EQ(iAlive, 1);
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_F(EvaluatorTest, AnExpressionBeforeConfigureIsDestroyed) {
    Evaluator evaluator;
    int iAlive = 0;
    EXPECT_FALSE(evaluator.addExpression(new Mortal("a", iAlive)));
    EXPECT_EQ(iAlive, 0);
}

TEST_F(EvaluatorTest, ANullExpressionIsAnAssertion) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    EXPECT_FALSE(evaluator.addExpression(nullptr));
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("in_pNewExpression && \"can't except null expression\""));
}

class EvaluatorLinkTest : public EvaluatorTest, public ::testing::WithParamInterface<bool> {};

TEST_P(EvaluatorLinkTest, ASecondLinkIsAnAssertionAndDoesNothing) {
    Evaluator evaluator;
    setUp(evaluator, GetParam());
    const Handle<Expression> pY(evaluator.getExpression("s.y"));
    m_Log.clear();
    EXPECT_TRUE(evaluator.link(true));
    EXPECT_THAT(m_Assertions.expressions(),
                ElementsAre("!m_bLinked && \"expressions are already linked --> \" \"skipping "
                            "linking\""));
    EXPECT_THAT(debugLines(), ElementsAre("linking the expressions..."));
    EXPECT_EQ(evaluator.getExpression("s.y"), pY);
}

TEST_P(EvaluatorLinkTest, ACopyEvaluatesAsTheSourceWithAStateOfItsOwn) {
    Evaluator evaluator;
    setUp(evaluator, GetParam());
    const DoubleVector vSource{1.0, 2.0};
    const DoubleVector vCopy{10.0};
    ASSERT_TRUE(evaluator.getVariable("s.in")->setValue(vSource));
    EXPECT_EQ(textOf(evaluator.getExpression("s.y")), "[4 8]");
    const Handle<Evaluator> pCopy(Handle<Cloneable>(evaluator.clone()));
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_EQ(textOf(pCopy->getExpression("s.y")), "[0]");
    ASSERT_TRUE(pCopy->getVariable("s.in")->setValue(vCopy));
    EXPECT_EQ(textOf(pCopy->getExpression("s.y")), "[40]");
    EXPECT_EQ(textOf(evaluator.getExpression("s.y")), "[4 8]");
    const DoubleVector vNext{3.0};
    ASSERT_TRUE(evaluator.getVariable("s.in")->setValue(vNext));
    EXPECT_EQ(textOf(evaluator.getExpression("s.y")), "[12]");
    EXPECT_EQ(textOf(pCopy->getExpression("s.y")), "[40]");
    EXPECT_EQ(m_Assertions.count(), 0u);
}

TEST_P(EvaluatorLinkTest, TwoLookUpsOfANameGiveOneObject) {
    Evaluator evaluator;
    setUp(evaluator, GetParam());
    EXPECT_EQ(evaluator.getExpression("s.y"), evaluator.getExpression("s.y"));
    EXPECT_EQ(evaluator.getExpression("s.y"), Handle<Expression>(evaluator.getVariable("s.y")));
    EXPECT_EQ(evaluator.getExpression("s.twice"),
              Handle<Expression>(evaluator.getFunction("s.twice")));
}

TEST_P(EvaluatorLinkTest, LookUpsSayWhatTheyLookFor) {
    Evaluator evaluator;
    setUp(evaluator, GetParam());
    evaluator.getExpression("s.y");
    evaluator.getVariable("s.in");
    evaluator.getFunction("s.twice");
    const std::string strState = GetParam() ? "(optimized)" : "(not optimized)";
    EXPECT_THAT(debugLines(), ElementsAre("getting expression " + strState + ": \"s.y\"",
                                          "getting variable " + strState + ": \"s.in\"",
                                          "getting function " + strState + ": \"s.twice\""));
    EXPECT_THAT(errorLines(), IsEmpty());
}

TEST_P(EvaluatorLinkTest, ACopyOfTheRawStageCanBeLinkedOnItsOwn) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addScript("s"));
    Evaluator copy(evaluator);
    ASSERT_TRUE(copy.link(GetParam()));
    EXPECT_TRUE(evaluator.getExpression("s.y").isNull());
    ASSERT_TRUE(evaluator.link(GetParam()));
    const DoubleVector vFrame{1.0};
    ASSERT_TRUE(evaluator.getVariable("s.in")->setValue(vFrame));
    EXPECT_EQ(textOf(evaluator.getExpression("s.y")), "[4]");
    EXPECT_EQ(textOf(copy.getExpression("s.y")), "[0]");
}

TEST_P(EvaluatorLinkTest, ClonesRunOnThreadsOfTheirOwn) {
    Evaluator evaluator;
    setUp(evaluator, GetParam());
    std::vector<std::thread> vThreads;
    std::vector<std::string> vResults(3);
    std::vector<Handle<Evaluator>> vClones;
    for (std::size_t ui = 0; ui != vResults.size(); ++ui) {
        vClones.emplace_back(Handle<Cloneable>(evaluator.clone()));
    }
    for (std::size_t ui = 0; ui != vResults.size(); ++ui) {
        vThreads.emplace_back([&vClones, &vResults, ui] {
            const Handle<Variable> pIn(vClones[ui]->getVariable("s.in"));
            const Handle<Expression> pY(vClones[ui]->getExpression("s.y"));
            DoubleVector vFrame(std::initializer_list<double>{0.0});
            for (int iFrame = 0; iFrame != 100; ++iFrame) {
                vFrame[0] = double(ui + 1) * iFrame;
                pIn->setValue(vFrame);
                vResults[ui] = textOf(pY);
            }
        });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    EXPECT_THAT(vResults, ElementsAre("[396]", "[792]", "[1188]"));
}

TEST_P(EvaluatorLinkTest, ItsAccountIsEmptyBehindItsDeath) {
    const auto liveBlocks = [](const std::string& in_strAccount) {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == in_strAccount) {
                return account.liveBlocks;
            }
        }
        return std::size_t(0);
    };
    const std::vector<std::string> vAccounts{"Dictionnary",    "ScriptLoaderVFS",   "Linker",
                                             "Optimizer",      "VariableImpl",      "Evaluator",
                                             "ReferenceCount", "DomainVariableImpl"};
    std::vector<std::size_t> vBefore, vAfter;
    for (const std::string& strAccount : vAccounts) {
        vBefore.push_back(liveBlocks(strAccount));
    }
    {
        const Handle<Evaluator> pEvaluator(new Evaluator);
        setUp(*pEvaluator, GetParam());
        const Handle<Cloneable> pClone(pEvaluator->clone());
        EXPECT_GT(liveBlocks("Evaluator"), vBefore[5] + 1);
    }
    for (const std::string& strAccount : vAccounts) {
        vAfter.push_back(liveBlocks(strAccount));
    }
    EXPECT_EQ(vAfter, vBefore);
}

INSTANTIATE_TEST_SUITE_P(Linked, EvaluatorLinkTest, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Optimized, EvaluatorLinkTest, ::testing::Values(true));

TEST_F(EvaluatorTest, LinkFollowedByAnOptimizingLinkLeavesTheExpressionsUnoptimized) {
    Evaluator evaluator;
    setUp(evaluator, false);
    EXPECT_TRUE(evaluator.link(true));
    m_Log.clear();
    evaluator.getExpression("s.y");
    EXPECT_THAT(debugLines(), ElementsAre("getting expression (not optimized): \"s.y\""));
}

TEST_F(EvaluatorTest, AnOptimizingLinkGoesOnToTheOptimizer) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addScript("s"));
    m_Log.clear();
    ASSERT_TRUE(evaluator.link(true));
    EXPECT_THAT(debugLines(),
                ElementsAre("linking the expressions...", "optimizing the expressions..."));
}

TEST_F(EvaluatorTest, EqualCallsAreOneObjectBehindAnOptimizingLink) {
    Evaluator evaluator;
    setUp(evaluator, true);
    const Handle<VariableImpl> pY(evaluator.getVariable("s.y"));
    const Handle<Function> pSum(pY->getValue());
    const Handle<VariableImpl> pLeft(pSum->getArgument(std::size_t(0)));
    const Handle<VariableImpl> pRight(pSum->getArgument(std::size_t(1)));
    EXPECT_EQ(pLeft->getValue(), pRight->getValue());
}

TEST_F(EvaluatorTest, AFailedLinkKeepsTheRawExpressionsForAnotherTry) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addScript("needs"));
    EXPECT_FALSE(evaluator.link(true));
    EXPECT_TRUE(evaluator.getExpression("needs.z").isNull());
    EXPECT_EQ(m_Assertions.count("m_bLinked && \"please call link() prio to call "
                                 "getExpression()\""),
              1u);
    std::istringstream script("value = 6\n");
    ASSERT_TRUE(evaluator.addScript(script, "later"));
    ASSERT_TRUE(evaluator.link(true));
    EXPECT_EQ(textOf(evaluator.getExpression("needs.z")), "[6]");
}

TEST_F(EvaluatorTest, AFailedOptimizationLeavesTheLinkedExpressions) {
    Evaluator evaluator;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addScript("s"));
    // The optimizer takes what bears this name for a concatenation.
    auto* const pImpostor = new ScriptFunctionImpl("concat");
    pImpostor->setImplementation(Handle<Expression>(new ConstantImpl(DoubleVector{1.0})));
    ASSERT_TRUE(evaluator.addExpression(pImpostor));
    EXPECT_FALSE(evaluator.link(true));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre("!pInstance.isNull()"));
    m_Log.clear();
    EXPECT_EQ(textOf(evaluator.getExpression("s.y")), "[0]");
    EXPECT_THAT(debugLines(), ElementsAre("getting expression (not optimized): \"s.y\""));
    EXPECT_TRUE(evaluator.link(true));
}

TEST_F(EvaluatorTest, UnknownNamesAreReported) {
    Evaluator evaluator;
    setUp(evaluator, false);
    EXPECT_TRUE(evaluator.getExpression("s.nope").isNull());
    EXPECT_TRUE(evaluator.getVariable("s.twice").isNull());
    EXPECT_TRUE(evaluator.getFunction("s.in").isNull());
    EXPECT_THAT(errorLines(),
                ElementsAre("can't find expression: \"s.nope\"", "can't find variable: \"s.twice\"",
                            "can't find function: \"s.in\""));
}

TEST_F(EvaluatorTest, LookUpOfNoNameFailsAnAssertionAndIsReported) {
    Evaluator evaluator;
    setUp(evaluator, false);
    EXPECT_TRUE(evaluator.getExpression(nullptr).isNull());
    EXPECT_TRUE(evaluator.getVariable(nullptr).isNull());
    EXPECT_TRUE(evaluator.getFunction(nullptr).isNull());
    EXPECT_EQ(m_Assertions.expressions(), std::vector<std::string>(3, "0 != in_szName"));
    EXPECT_THAT(errorLines(),
                ElementsAre("can't find expression: \"\"", "can't find variable: \"\"",
                            "can't find function: \"\""));
}

TEST_F(EvaluatorTest, ASecondConfigureStartsAgainButStaysLinked) {
    Evaluator evaluator;
    setUp(evaluator, true);
    ASSERT_TRUE(configure(evaluator));
    EXPECT_FALSE(evaluator.addScript("s"));
    EXPECT_THAT(m_Assertions.expressions(), ElementsAre(AddToLinked));
    m_Log.clear();
    EXPECT_TRUE(evaluator.getExpression("s.y").isNull());
    EXPECT_THAT(debugLines(), ElementsAre("getting expression (optimized): \"s.y\""));
    EXPECT_THAT(errorLines(), ElementsAre("can't find expression: \"s.y\""));
}

TEST_F(EvaluatorTest, AnAssignedEvaluatorSharesAllMembers) {
    Evaluator evaluator;
    setUp(evaluator, false);
    Evaluator other;
    other = evaluator;
    EXPECT_EQ(other.getExpression("s.y"), evaluator.getExpression("s.y"));
    const DoubleVector vFrame{2.0};
    ASSERT_TRUE(other.getVariable("s.in")->setValue(vFrame));
    EXPECT_EQ(textOf(evaluator.getExpression("s.y")), "[8]");
}

TEST_F(EvaluatorTest, CopyingIsTraced) {
    Evaluator evaluator;
    setUp(evaluator, false);
    const LogCapture trace(LoggerName, log4cplus::TRACE_LOG_LEVEL);
    const Evaluator copy(evaluator);
    EXPECT_EQ(trace.count(log4cplus::TRACE_LOG_LEVEL, "Evaluator::Evaluator copy"), 2u);
}

TEST_F(EvaluatorTest, ACopyOfAnUnconfiguredEvaluatorIsUnconfigured) {
    const Evaluator evaluator;
    Evaluator copy(evaluator);
    EXPECT_EQ(m_Assertions.count(), 0u);
    EXPECT_FALSE(copy.link(false));
}

TEST_F(EvaluatorTest, ReconfiguringGoesThroughTheEntriesAndSaysSo) {
    Evaluator evaluator;
    int iFirst = 0, iSecond = 0;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addExpression(new Configured("first", iFirst, true)));
    ASSERT_TRUE(evaluator.addExpression(new Configured("second", iSecond, true)));
    m_Log.clear();
    EXPECT_TRUE(evaluator.reconfigureExpressions());
    EXPECT_EQ(iFirst, 1);
    EXPECT_EQ(iSecond, 1);
    EXPECT_THAT(debugLines(),
                ElementsAre("reconfiguring expression: first", "reconfiguring expression: second"));
}

TEST_F(EvaluatorTest, ReconfiguringStopsAtTheFirstThatRefuses) {
    Evaluator evaluator;
    int iFirst = 0, iSecond = 0;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addExpression(new Configured("first", iFirst, false)));
    ASSERT_TRUE(evaluator.addExpression(new Configured("second", iSecond, true)));
    m_Log.clear();
    EXPECT_FALSE(evaluator.reconfigureExpressions());
    EXPECT_EQ(iSecond, 0);
    EXPECT_THAT(debugLines(), ElementsAre("reconfiguring expression: first"));
}

TEST_F(EvaluatorTest, ANodeIsReconfiguredOnceForEachPathToIt) {
    Evaluator evaluator;
    int iCount = 0;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addExpression(new Configured("f", iCount, true)));
    std::istringstream script("a = f() + 1\nb = a + a\n");
    ASSERT_TRUE(evaluator.addScript(script, "t"));
    ASSERT_TRUE(evaluator.link(false));
    iCount = 0;
    EXPECT_TRUE(evaluator.reconfigureExpressions());
    // Its own entry, below a, and below b along both sides.
    EXPECT_EQ(iCount, 4);
}

TEST_F(EvaluatorTest, WithTooManyPathsEachNodeIsReconfiguredOnce) {
    Evaluator evaluator;
    int iCount = 0;
    ASSERT_TRUE(configure(evaluator));
    ASSERT_TRUE(evaluator.addExpression(new Configured("f", iCount, true)));
    std::string strScript = "v0 = f()\n";
    for (int i = 1; i != 41; ++i) {
        const std::string strBefore = "v" + std::to_string(i - 1);
        strScript += "v" + std::to_string(i) + " = " + strBefore + " + " + strBefore + "\n";
    }
    std::istringstream script(strScript);
    ASSERT_TRUE(evaluator.addScript(script, "t"));
    ASSERT_TRUE(evaluator.link(false));
    iCount = 0;
    m_Log.clear();
    EXPECT_TRUE(evaluator.reconfigureExpressions());
    EXPECT_EQ(iCount, 2);
    EXPECT_EQ(debugLines().size(), 42u);
    EXPECT_EQ(textOf(evaluator.getExpression("t.v40")), "[1099511627776]");
}

TEST_F(EvaluatorTest, ARefusalAmongTooManyPathsIsFalseToo) {
    Evaluator evaluator;
    int iCount = 0;
    ASSERT_TRUE(configure(evaluator));
    std::string strScript = "v0 = f()\n";
    for (int i = 1; i != 41; ++i) {
        const std::string strBefore = "v" + std::to_string(i - 1);
        strScript += "v" + std::to_string(i) + " = " + strBefore + " + " + strBefore + "\n";
    }
    std::istringstream script(strScript);
    ASSERT_TRUE(evaluator.addScript(script, "t"));
    ASSERT_TRUE(evaluator.addExpression(new Configured("f", iCount, false)));
    ASSERT_TRUE(evaluator.link(false));
    m_Log.clear();
    EXPECT_FALSE(evaluator.reconfigureExpressions());
    EXPECT_THAT(debugLines(), ElementsAre("reconfiguring expression: t.v0"));
}

TEST_F(EvaluatorTest, DumpWritesTheExpressions) {
    const TempDirectory directory;
    Evaluator evaluator;
    setUp(evaluator, false);
    EXPECT_TRUE(evaluator.dump(directory.path("graph.dot").c_str()));
    std::ifstream file(directory.path("graph.dot"));
    const std::string strText((std::istreambuf_iterator<char>(file)), {});
    EXPECT_THAT(strText, HasSubstr("s_y"));
}

TEST_F(EvaluatorTest, EvaluatorsAreCountedUnderTheirAccount) {
    EXPECT_STREQ(Evaluator::getMemAccountName(), "Evaluator");
}

} // namespace
} // namespace Velmora::Math::Xpr
