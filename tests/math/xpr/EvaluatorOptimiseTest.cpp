// The evaluator with the optimizer behind it, and the places where an optimised graph gives
// something else than the linked one.

#include <velmora/math/xpr/Evaluator.h>

#include <functional>
#include <sstream>

#include <velmora/ParameterTrie.h>

#include "math/xpr/OptimizerGraphs.h"
#include "support/GraphTest.h"
#include "support/LinkBench.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

constexpr const char* EvaluatorLogger = "quillmark.math.xpr.Evaluator";
constexpr const char* DividedByZero = "Can't do the division. Tried to divide by '0'.";

enum class Mode { Linked, Optimised };

/// An evaluator over one script, "s".
class ScriptEvaluation {
public:
    ScriptEvaluation(const std::string& in_strScript, Mode in_eMode) {
        EXPECT_TRUE(m_Evaluator.configure(scriptsIn("none"), {}));
        std::istringstream stream(in_strScript);
        EXPECT_TRUE(m_Evaluator.addScript(stream, "s"));
        EXPECT_TRUE(m_Evaluator.link(in_eMode == Mode::Optimised));
        EXPECT_TRUE(m_Evaluator.reconfigureExpressions());
    }

    Evaluator& evaluator() { return m_Evaluator; }

    void set(const char* in_szName, const DoubleVector& in_vValue) {
        m_Evaluator.getVariable(in_szName)->setValue(in_vValue);
    }

    Values value(const char* in_szName) { return evaluated(*m_Evaluator.getExpression(in_szName)); }

    Handle<VariableImpl> variableOf(const char* in_szName) {
        return Handle<VariableImpl>(m_Evaluator.getVariable(in_szName));
    }

    /// The function that a variable of the script is bound to.
    Handle<FunctionBaseImpl> functionOf(const char* in_szName) {
        return Handle<FunctionBaseImpl>(variableOf(in_szName)->getValue());
    }

private:
    Evaluator m_Evaluator;
};

class EvaluatorOptimiseTest : public GraphTest {
protected:
    /// Does an evaluated operator read past its arguments?
    static bool isSealed(const Handle<FunctionBaseImpl>& in_pOperator) {
        evaluated(*in_pOperator);
        return !argument(*in_pOperator, 0)->isValid();
    }

    static std::size_t liveBlocks(const std::string& in_strAccount) {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == in_strAccount) {
                return account.liveBlocks;
            }
        }
        return 0;
    }

    static Texts debugLines(const LogCapture& in_Log) {
        return in_Log.messages(log4cplus::DEBUG_LOG_LEVEL);
    }

    /// The errors since the last call, without their loggers.
    Texts takeMessages() {
        Texts vMessages;
        for (const std::string& strLine : takeErrors()) {
            vMessages.push_back(strLine.substr(strLine.find(": ") + 2));
        }
        return vMessages;
    }
};

constexpr const char* TwoSums = "inputvar x\na = x + x\nb = x + x\n";

TEST_F(EvaluatorOptimiseTest, OptimisingLinkMergesAndSeals) {
    ScriptEvaluation run(TwoSums, Mode::Optimised);
    EXPECT_EQ(run.functionOf("s.a"), run.functionOf("s.b"));
    EXPECT_TRUE(isSealed(run.functionOf("s.a")));
}

TEST_F(EvaluatorOptimiseTest, PlainLinkDoesNeitherAndAnOptimisingLinkBehindItDoesNothing) {
    ScriptEvaluation run(TwoSums, Mode::Linked);
    EXPECT_TRUE(run.evaluator().link(true));
    EXPECT_EQ(takeAssertions(), Texts{"!m_bLinked && \"expressions are already linked --> \" "
                                      "\"skipping linking\""});
    EXPECT_NE(run.functionOf("s.a"), run.functionOf("s.b"));
    EXPECT_FALSE(isSealed(run.functionOf("s.a")));
    const LogCapture log(EvaluatorLogger);
    run.evaluator().getExpression("s.a");
    EXPECT_EQ(debugLines(log), Texts{"getting expression (not optimized): \"s.a\""});
}

TEST_F(EvaluatorOptimiseTest, OptimisingLinkTellsItsStages) {
    Evaluator evaluator;
    ASSERT_TRUE(evaluator.configure(scriptsIn("none"), {}));
    const LogCapture log(EvaluatorLogger);
    EXPECT_TRUE(evaluator.link(true));
    EXPECT_EQ(debugLines(log),
              (Texts{"linking the expressions...", "optimizing the expressions..."}));
}

TEST_F(EvaluatorOptimiseTest, OptimisedExpressionsKeepTheNameOfTheLinkedOnes) {
    const LogCapture log("quillmark.math.xpr.Dictionnary");
    ScriptEvaluation run(TwoSums, Mode::Optimised);
    EXPECT_TRUE(run.evaluator().getExpression("s.none").isNull());
    EXPECT_EQ(takeErrors(), Texts{logged(EvaluatorLogger, "can't find expression: \"s.none\"")});
    EXPECT_EQ(log.lines().back().logger,
              "quillmark.math.xpr.Dictionnary.evaluator.linked_expressions");
    EXPECT_EQ(log.lines().back().message, "can't find expression: s.none");
}

TEST_F(EvaluatorOptimiseTest, OptimisedExpressionsAreMadeInADictionnaryOfTheirOwn) {
    ScriptEvaluation run(TwoSums, Mode::Optimised);
    EXPECT_TRUE(log4cplus::Logger::exists(
        "quillmark.math.xpr.Dictionnary.evaluator.optimized_expressions"));
}

TEST_F(EvaluatorOptimiseTest, OptimizerIsConfiguredAndCopiedBehindTheOthers) {
    LogCapture log("quillmark.math.xpr", log4cplus::TRACE_LOG_LEVEL);
    const auto takePlaces = [&log](const Texts& in_vLines) {
        const Texts vTrace = log.messages(log4cplus::TRACE_LOG_LEVEL);
        std::vector<std::ptrdiff_t> vPlaces;
        for (const std::string& strLine : in_vLines) {
            const auto ite = std::find(vTrace.begin(), vTrace.end(), strLine);
            EXPECT_NE(ite, vTrace.end()) << strLine;
            vPlaces.push_back(ite - vTrace.begin());
        }
        return vPlaces;
    };
    Evaluator evaluator;
    ASSERT_TRUE(evaluator.configure(scriptsIn("none"), {}));
    const auto vConfigured =
        takePlaces({"ENTER: Optimizer::Optimizer", "ENTER: Optimizer::configure"});
    EXPECT_TRUE(std::is_sorted(vConfigured.begin(), vConfigured.end()));
    EXPECT_TRUE(evaluator.link(true));
    log.clear();
    const Evaluator copy(evaluator);
    const auto vCopied = takePlaces({"ENTER: Linker::Linker copy",
                                     "ENTER: Optimizer::Optimizer copy", "ENTER: sealExpression"});
    EXPECT_TRUE(std::is_sorted(vCopied.begin(), vCopied.end()));
}

TEST_F(EvaluatorOptimiseTest, FailedOptimisationLeavesTheLinkedExpressionsForGood) {
    Evaluator evaluator;
    ASSERT_TRUE(evaluator.configure(scriptsIn("none"), {}));
    std::istringstream stream(TwoSums);
    ASSERT_TRUE(evaluator.addScript(stream, "s"));
    // No concatenation, but under its name.
    ASSERT_TRUE(evaluator.addExpression(new RecordingFunction("concat")));
    EXPECT_FALSE(evaluator.link(true));
    EXPECT_EQ(takeAssertions(), Texts{"!pInstance.isNull()"});
    const Handle<VariableImpl> pA(evaluator.getVariable("s.a"));
    EXPECT_FALSE(isSealed(Handle<FunctionBaseImpl>(pA->getValue())));
    EXPECT_TRUE(evaluator.link(true));
    EXPECT_EQ(takeAssertions(), Texts{"!m_bLinked && \"expressions are already linked --> \" "
                                      "\"skipping linking\""});
    const LogCapture log(EvaluatorLogger);
    EXPECT_EQ(evaluator.getVariable("s.a"), Handle<Variable>(pA));
    EXPECT_EQ(debugLines(log), Texts{"getting variable (not optimized): \"s.a\""});
}

TEST_F(EvaluatorOptimiseTest, SecondConfigureReplacesTheOptimizerAndStaysOptimised) {
    ScriptEvaluation run(TwoSums, Mode::Optimised);
    const std::size_t uiOptimizers = liveBlocks("Optimizer");
    const LogCapture created(OptimizerLogger, log4cplus::TRACE_LOG_LEVEL);
    EXPECT_TRUE(run.evaluator().configure(scriptsIn("none"), {}));
    EXPECT_EQ(created.count(log4cplus::TRACE_LOG_LEVEL, "ENTER: Optimizer::Optimizer"), 1u);
    EXPECT_EQ(created.count(log4cplus::TRACE_LOG_LEVEL, "ENTER: Optimizer::~Optimizer"), 1u);
    EXPECT_EQ(liveBlocks("Optimizer"), uiOptimizers);
    const LogCapture log(EvaluatorLogger);
    EXPECT_TRUE(run.evaluator().getFunction("s.a").isNull());
    EXPECT_EQ(debugLines(log), Texts{"getting function (optimized): \"s.a\""});
    EXPECT_EQ(takeErrors(), Texts{logged(EvaluatorLogger, "can't find function: \"s.a\"")});
}

TEST_F(EvaluatorOptimiseTest, CopyOfAnOptimisedEvaluatorIsMergedAndSealed) {
    ScriptEvaluation run(TwoSums, Mode::Optimised);
    const std::size_t uiOptimizers = liveBlocks("Optimizer");
    Evaluator copy(run.evaluator());
    EXPECT_EQ(liveBlocks("Optimizer"), uiOptimizers + 1);
    const Handle<VariableImpl> pA(copy.getVariable("s.a"));
    const Handle<VariableImpl> pB(copy.getVariable("s.b"));
    EXPECT_EQ(pA->getValue(), pB->getValue());
    EXPECT_NE(pA->getValue(), Node(run.functionOf("s.a")));
    EXPECT_TRUE(isSealed(Handle<FunctionBaseImpl>(pA->getValue())));
    const LogCapture log(EvaluatorLogger);
    copy.getExpression("s.a");
    EXPECT_EQ(debugLines(log), Texts{"getting expression (optimized): \"s.a\""});
}

TEST_F(EvaluatorOptimiseTest, CopyOfALinkedEvaluatorIsNotSealed) {
    ScriptEvaluation run(TwoSums, Mode::Linked);
    Evaluator copy(run.evaluator());
    const Handle<VariableImpl> pA(copy.getVariable("s.a"));
    EXPECT_FALSE(isSealed(Handle<FunctionBaseImpl>(pA->getValue())));
}

TEST_F(EvaluatorOptimiseTest, CopyOfAnOptimisedEvaluatorHasMemoryOfItsOwn) {
    ScriptEvaluation run("inputvar x\na = slidingWindow<3>(x)\n", Mode::Optimised);
    const DoubleVector vOne{1.0}, vTwo{2.0}, vThree{3.0};
    run.set("s.x", vOne);
    EXPECT_EQ(run.value("s.a"), Values{1.0});
    Evaluator copy(run.evaluator());
    ASSERT_TRUE(copy.getVariable("s.x")->setValue(vTwo));
    EXPECT_EQ(evaluated(*copy.getExpression("s.a")), (Values{1.0, 2.0}));
    EXPECT_EQ(run.value("s.a"), Values{1.0});
    run.set("s.x", vThree);
    EXPECT_EQ(run.value("s.a"), (Values{1.0, 3.0}));
    EXPECT_EQ(evaluated(*copy.getExpression("s.a")), (Values{1.0, 2.0}));
}

// Where the modes differ.

TEST_F(EvaluatorOptimiseTest, SealedOperatorDoesNotReportAFailingSide) {
    for (const Mode eMode : {Mode::Linked, Mode::Optimised}) {
        const Handle<OperatorPlus> pSum(new OperatorPlus);
        bind(*pSum, 1, Node(constant({1.0})));
        Dictionnary dictionnary("d");
        dictionnary.add(Handle<Expression>(variable("x", Node(pSum))), false);
        Dictionnary out("out");
        if (eMode == Mode::Optimised) {
            ASSERT_TRUE(Optimizer().run(dictionnary, out));
        }
        DoubleVector vValue;
        EXPECT_FALSE(pSum->evaluate(vValue));
        const std::string strUnset = std::string("Can't evaluate a variable (") +
                                     argument(*pSum, 0)->getName() +
                                     ") without setting its value first!";
        const std::string strReport = eMode == Mode::Linked ? "Failed to evaluate left expression"
                                                            : ":no value to compute from: add";
        EXPECT_EQ(takeMessages(), (Texts{strUnset, strReport}));
    }
}

/// What a definition gives over frames of `left`, `right` and `divisor`, in each mode; no values
/// where its evaluation fails.
struct Difference {
    const char* m_szName;
    const char* m_szDefinition;
    std::vector<double> m_vDivisors;
    std::vector<Values> m_vLinked;
    std::vector<Values> m_vOptimised;
};

class FailureModesTest : public EvaluatorOptimiseTest,
                         public ::testing::WithParamInterface<Difference> {
protected:
    /// On frame n, from 0, `left` is 2 to the power of n + 3, and `right` n + 1.
    std::vector<Values> compute(Mode in_eMode) {
        ScriptEvaluation run(std::string("inputvar left\ninputvar right\ninputvar divisor\n") +
                                 GetParam().m_szDefinition,
                             in_eMode);
        std::vector<Values> vResults;
        DoubleVector vLeft{4.0}, vRight{0.0}, vDivisor{0.0};
        for (const double dDivisor : GetParam().m_vDivisors) {
            vLeft[0] *= 2.0;
            vRight[0] += 1.0;
            vDivisor[0] = dDivisor;
            run.set("s.left", vLeft);
            run.set("s.right", vRight);
            run.set("s.divisor", vDivisor);
            // The function itself: the variable over it hides its failure.
            DoubleVector vResult;
            const bool bSuccess = run.functionOf("s.y")->evaluate(vResult);
            vResults.push_back(bSuccess ? valuesOf(vResult) : Values());
        }
        return vResults;
    }
};

TEST_P(FailureModesTest, GivesInEachModeWhatItGives) {
    EXPECT_EQ(compute(Mode::Linked), GetParam().m_vLinked);
    EXPECT_NE(takeErrors(), Texts());
    EXPECT_EQ(compute(Mode::Optimised), GetParam().m_vOptimised);
    EXPECT_NE(takeErrors(), Texts());
}

const std::vector<Values> None{{}, {}, {}};

INSTANTIATE_TEST_SUITE_P(
    Failures, FailureModesTest,
    ::testing::Values(
        // The side keeps its value of the frame before in both modes.
        Difference{
            "OperatorAgrees", "y = left / divisor + right\n", {2, 0}, {{5}, {6}}, {{5}, {6}}},
        Difference{"BuiltInAgrees", "y = sum(left / divisor)\n", {2, 0}, {{4}, {4}}, {{4}, {4}}},
        Difference{
            "BranchAgrees", "y = if(1, left / divisor, right)\n", {2, 0}, {{4}, {4}}, {{4}, {4}}},
        // A plain one reads the element through its argument, which passes the failure over.
        Difference{"ConcatenationFailsOnlySealed",
                   "y = {left / divisor, right}\n",
                   {2, 0},
                   {{4, 1}, {4, 2}},
                   {{4, 1}, {}}},
        Difference{"ConditionFailsOnlySealed",
                   "y = if(left / divisor, right, left)\n",
                   {2, 0},
                   {{1}, {2}},
                   {{1}, {}}},
        // The argument is valid above what failed, and never hears of a change any more.
        Difference{"OperatorRecoversOnlySealed",
                   "y = left / divisor + right\n",
                   {0, 0, 2},
                   None,
                   {{}, {}, {19}}},
        Difference{"OperatorFollowsOnlySealed",
                   "y = left / divisor + right\n",
                   {2, 0, 4},
                   {{5}, {6}, {7}},
                   {{5}, {6}, {11}}},
        // A built-in reads its arguments, sealed or not.
        Difference{"BuiltInRecoversInNeither", "y = sum(left / divisor)\n", {0, 0, 2}, None, None}),
    [](const auto& in_Info) { return std::string(in_Info.param.m_szName); });

TEST_F(EvaluatorOptimiseTest, SealedBodyComputesAFailingArgumentOnceForEachUse) {
    for (const Mode eMode : {Mode::Linked, Mode::Optimised}) {
        ScriptEvaluation run(
            "inputvar x\ninputvar divisor\ntwice(v) = v + v\ny = twice(x / divisor)\n", eMode);
        const DoubleVector vX{6.0}, vTwo{2.0}, vZero{0.0};
        run.set("s.x", vX);
        run.set("s.divisor", vTwo);
        EXPECT_EQ(run.value("s.y"), Values{6.0});
        run.set("s.divisor", vZero);
        EXPECT_EQ(run.value("s.y"), Values{6.0});
        EXPECT_EQ(takeMessages(), Texts(eMode == Mode::Linked ? 1 : 2, DividedByZero));
    }
}

TEST_F(EvaluatorOptimiseTest,
       MemoryInABranchThatIsNotChosenMovesOnIfItIsMergedWithOneThatAlwaysDoes) {
    const DoubleVector vOff{0.0}, vOn{1.0};
    const std::vector<DoubleVector> vFrames{DoubleVector{1.0}, DoubleVector{2.0},
                                            DoubleVector{3.0}};
    for (const Mode eMode : {Mode::Linked, Mode::Optimised}) {
        ScriptEvaluation run("inputvar x\ninputvar choice\n"
                             "always = slidingWindow<3>(x)\n"
                             "y = if(choice, slidingWindow<3>(x), x)\n",
                             eMode);
        for (std::size_t ui = 0; ui != vFrames.size(); ++ui) {
            run.set("s.x", vFrames[ui]);
            run.set("s.choice", ui == 2 ? vOn : vOff);
            run.value("s.always");
            run.value("s.y");
        }
        EXPECT_EQ(run.value("s.always"), (Values{1.0, 2.0, 3.0}));
        EXPECT_EQ(run.value("s.y"), eMode == Mode::Linked ? Values{3.0} : (Values{1.0, 2.0, 3.0}));
    }
}

TEST_F(EvaluatorOptimiseTest, MemoryInABranchThatIsMergedWithNothingMovesOnlyWhenItIsChosen) {
    const DoubleVector vOff{0.0}, vOn{1.0};
    const std::vector<DoubleVector> vFrames{DoubleVector{1.0}, DoubleVector{2.0},
                                            DoubleVector{3.0}};
    for (const Mode eMode : {Mode::Linked, Mode::Optimised}) {
        ScriptEvaluation run(
            "inputvar x\ninputvar choice\ny = if(choice, slidingWindow<3>(x), x)\n", eMode);
        for (std::size_t ui = 0; ui != vFrames.size(); ++ui) {
            run.set("s.x", vFrames[ui]);
            run.set("s.choice", ui == 1 ? vOff : vOn);
            run.value("s.y");
        }
        EXPECT_EQ(run.value("s.y"), (Values{1.0, 3.0}));
    }
}

TEST_F(EvaluatorOptimiseTest, MemoryOverUnchangedInputsStandsStillAndMovesOnInAClone) {
    for (const Mode eMode : {Mode::Linked, Mode::Optimised}) {
        ScriptEvaluation run("y = slidingWindow<3>(7)\n", eMode);
        EXPECT_EQ(run.value("s.y"), Values{7.0});
        EXPECT_EQ(run.value("s.y"), Values{7.0});
        Evaluator copy(run.evaluator());
        EXPECT_EQ(evaluated(*copy.getExpression("s.y")), (Values{7.0, 7.0}));
        EXPECT_EQ(evaluated(*copy.getExpression("s.y")), (Values{7.0, 7.0}));
        EXPECT_EQ(run.value("s.y"), Values{7.0});
        Evaluator copyOfTheCopy(copy);
        EXPECT_EQ(evaluated(*copyOfTheCopy.getExpression("s.y")), (Values{7.0, 7.0, 7.0}));
    }
}

TEST_F(EvaluatorOptimiseTest, MergedMemoryOfDefinitionsThatAreAskedForOnOtherFramesIsShared) {
    const std::vector<DoubleVector> vFrames{DoubleVector{1.0}, DoubleVector{2.0},
                                            DoubleVector{3.0}};
    for (const Mode eMode : {Mode::Linked, Mode::Optimised}) {
        ScriptEvaluation run("inputvar x\na = slidingWindow<3>(x)\nb = slidingWindow<3>(x)\n",
                             eMode);
        for (std::size_t ui = 0; ui != vFrames.size(); ++ui) {
            run.set("s.x", vFrames[ui]);
            run.value(ui == 1 ? "s.b" : "s.a");
        }
        EXPECT_EQ(run.value("s.a"),
                  eMode == Mode::Linked ? (Values{1.0, 3.0}) : (Values{1.0, 2.0, 3.0}));
    }
}

} // namespace

} // namespace Velmora::Math::Xpr
