// A run of the optimizer as a whole: what it takes over, seals, tells and refuses.

#include <velmora/math/xpr/Optimizer.h>

#include <cmath>

#include <velmora/ParameterTrie.h>

#include "math/xpr/OptimizerBench.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class OptimizerTest : public OptimizerBench {};

TEST_F(OptimizerTest, ImpostorOfAConcatenationFailsTheRunAndKeepsTheMerges) {
    Dictionnary dictionnary("in");
    const Node pA(constant({1.0}));
    const Handle<OperatorPlus> pSum = binary(pA, pA);
    const auto pX = variable("x", Node(pSum));
    const auto pY = variable("y", Node(binary(pA, pA)));
    add(dictionnary, pX);
    add(dictionnary, pY);
    add(dictionnary, call("concat"));
    Dictionnary out("out");
    EXPECT_FALSE(Optimizer().run(dictionnary, out));
    EXPECT_EQ(takeAssertions(), Texts{"!pInstance.isNull()"});
    EXPECT_EQ(out.size(), 3u);
    EXPECT_EQ(pY->getValue(), pX->getValue());
    EXPECT_EQ(evaluated(*pX), Values{2.0});
    EXPECT_TRUE(argument(*pSum, 0)->isValid()) << "a sealed sum would have read past it";
}

TEST_F(OptimizerTest, ForeignEntryFailsTheRunWithoutAMerge) {
    Dictionnary dictionnary("in");
    const auto pX = variable("x", Node(call("f")));
    const auto pY = variable("y", Node(call("f")));
    add(dictionnary, pX);
    add(dictionnary, pY);
    add(dictionnary, Handle<Variable>(new ForeignVariable));
    Dictionnary out("out");
    EXPECT_FALSE(Optimizer().run(dictionnary, out));
    EXPECT_EQ(takeAssertions(), (Texts{"!pData.isNull()", "insertExpression( (*iteExpr).second )",
                                       "dictOptimizer.initialize( out_OptimizedExpressions )"}));
    EXPECT_EQ(out.size(), 3u);
    EXPECT_NE(pX->getValue(), pY->getValue());
}

TEST_F(OptimizerTest, OutputTakesTheEntriesAndTheNameOver) {
    Dictionnary dictionnary("in");
    const auto pX = variable("x", Node(call("f")));
    const auto pY = variable("y", Node(pX));
    add(dictionnary, pY);
    add(dictionnary, pX);
    Dictionnary out("out");
    add(out, variable("former"));
    EXPECT_TRUE(Optimizer().run(dictionnary, out));
    EXPECT_STREQ(out.getName(), "in");
    std::vector<Handle<Expression>> vEntries;
    for (const auto& entry : out) {
        vEntries.push_back(entry.second);
    }
    EXPECT_EQ(vEntries,
              (std::vector<Handle<Expression>>{Handle<Expression>(pY), Handle<Expression>(pX)}));
    EXPECT_EQ(dictionnary.size(), 2u);
}

TEST_F(OptimizerTest, DictionnaryCanBeOptimisedIntoItself) {
    Dictionnary dictionnary("in");
    const auto pX = variable("x", Node(call("f")));
    const auto pY = variable("y", Node(call("f")));
    add(dictionnary, pX);
    add(dictionnary, pY);
    EXPECT_TRUE(Optimizer().run(dictionnary, dictionnary));
    EXPECT_EQ(dictionnary.size(), 2u);
    EXPECT_EQ(pX->getValue(), pY->getValue());
}

TEST_F(OptimizerTest, SecondRunWorksFromTheStart) {
    Dictionnary dictionnary("in");
    const Node pA(variable("a"));
    const auto pX = variable("x", Node(call("f", {pA})));
    const auto pY = variable("y", Node(call("f", {pA})));
    add(dictionnary, pX);
    add(dictionnary, pY);
    Optimizer optimizer;
    Dictionnary out("out");
    EXPECT_TRUE(optimizer.run(dictionnary, out));
    const auto pLate = variable("late", Node(call("f", {pA})));
    add(out, pLate);
    Dictionnary again("again");
    const LogCapture log(OptimizerLogger);
    EXPECT_TRUE(optimizer.run(out, again));
    EXPECT_EQ(pLate->getValue(), pX->getValue());
    EXPECT_EQ(listFound(log)["f"], std::vector<int>{3});
}

TEST_F(OptimizerTest, RunSealsTheGraphOfEveryEntry) {
    const DoubleVector vOne{1.0};
    const DoubleVector vTwo{2.0};
    const auto pX = variable("x");
    Variable& input = *pX;
    input.setValue(vOne);
    const Handle<OperatorPlus> pSum = binary(Node(pX), Node(pX));
    const Handle<OperatorPlus> pTop = binary(Node(pSum), Node(pSum));
    const auto pY = variable("y", Node(pTop));
    optimize({Node(variable("z", Node(constant({1.0})))), Node(pY)});
    EXPECT_EQ(evaluated(*pY), Values{4.0});
    EXPECT_FALSE(argument(*pTop, 0)->isValid()) << "sealed operators read past their arguments";
    input.setValue(vTwo);
    EXPECT_FALSE(pY->isValid());
    EXPECT_EQ(evaluated(*pY), Values{8.0});
    // Its arguments and, for each of the two paths to the sum, both sides of it.
    EXPECT_EQ(parentsOf(*pX->getValue()),
              (Nodes{pX.get(), pSum.get(), pSum.get(), pSum.get(), pSum.get()}));
}

TEST_F(OptimizerTest, SealingAloneMergesNothing) {
    Dictionnary dictionnary("in");
    const Node pA(constant({1.0}));
    const Handle<OperatorPlus> pSum = binary(pA, pA);
    const auto pX = variable("x", Node(pSum));
    const auto pY = variable("y", Node(binary(pA, pA)));
    add(dictionnary, pX);
    add(dictionnary, pY);
    Optimizer().sealExpressions(dictionnary);
    EXPECT_NE(pX->getValue(), pY->getValue());
    EXPECT_EQ(evaluated(*pX), Values{2.0});
    EXPECT_FALSE(argument(*pSum, 0)->isValid());
}

TEST_F(OptimizerTest, UpToTheLimitOfVisitsSealingRepeatsParentsAndBeyondItDoesNot) {
    for (const bool bBeyond : {false, true}) {
        VisitLimit limit;
        if (bBeyond) {
            limit.addVisit("one more");
        }
        optimize(limit.m_Dictionnary);
        // What a sum reads has it as a parent for each side and each time that it was sealed.
        for (std::size_t uiLevel = 1; uiLevel <= 13; ++uiLevel) {
            const Node pRead = limit.m_vDoubled[uiLevel - 1]->getValue();
            EXPECT_EQ(parentsOf(*pRead).size(),
                      1 + 2 * (bBeyond ? 1 : VisitLimit::visitsOfSum(uiLevel)))
                << uiLevel;
        }
        EXPECT_EQ(evaluated(*limit.m_vDoubled[13]), Values{3.0 * 8192});
        const DoubleVector vNext{-1.5};
        limit.set(vNext);
        for (const std::size_t uiLevel : VisitLimit::Levels) {
            EXPECT_EQ(evaluated(*limit.m_vDoubled[uiLevel]),
                      Values{std::ldexp(-1.5, static_cast<int>(uiLevel))});
        }
    }
}

TEST_F(OptimizerTest, RunTellsItsStory) {
    Dictionnary dictionnary("in");
    const auto pFunction = call("f");
    add(dictionnary, variable("x", Node(pFunction)));
    Dictionnary out("out");
    const LogCapture log(OptimizerLogger);
    EXPECT_TRUE(Optimizer().run(dictionnary, out));
    Texts vLines;
    for (const LogLine& line : log.lines()) {
        if (line.logger == OptimizerLogger && line.level == log4cplus::DEBUG_LOG_LEVEL) {
            vLines.push_back(line.message);
        }
    }
    const std::string strData =
        "\t\t<data valid=\"1\"xprID=\"" + std::to_string(pFunction->getId()) + "\">#f</data>\n";
    const auto dump = [](const std::string& in_strData) {
        return "\n<OptimizerDictionnary>\n\t<function name=\"f\">\n" + in_strData +
               "\t</function>\n</OptimizerDictionnary>\n";
    };
    const std::string strBefore = "optimizer dictionnary before optimize:" + dump(strData);
    EXPECT_EQ(vLines, (Texts{"populating optimizer dictionnary...", strBefore,
                             "found 1 similar instance(s) of the function f",
                             "optimizer dictionnary after optimize level 1" + dump(""),
                             "populating optimizer dictionnary...", strBefore,
                             "optimizer dictionnary after optimize level 2" + dump(strData)}));
}

TEST_F(OptimizerTest, KeysAreLoggedWhereTheyAreFixedAndWhereInstancesAreCompared) {
    const Node pShared(call("f"));
    const Node pLonely(call("g"));
    Dictionnary dictionnary("in");
    add(dictionnary, variable("x", pShared));
    add(dictionnary, variable("y", pShared));
    add(dictionnary, variable("z", pLonely));
    Dictionnary out("out");
    // No dumps, which build every key.
    const LogCapture quiet(OptimizerLogger, log4cplus::INFO_LOG_LEVEL);
    const LogCapture log(KeyLogger);
    EXPECT_TRUE(Optimizer().run(dictionnary, out));
    EXPECT_EQ(log.messages(log4cplus::DEBUG_LOG_LEVEL),
              (Texts{"#f", "#f", "#f", "#g", "#g", "#f", "#f", "#f", "#f", "#g", "#g"}));
}

TEST_F(OptimizerTest, OperationsAreTraced) {
    Dictionnary dictionnary("in");
    Dictionnary out("out");
    const LogCapture log(OptimizerLogger, log4cplus::TRACE_LOG_LEVEL);
    {
        Optimizer optimizer;
        const Optimizer copy(optimizer);
        optimizer.configure(ParameterTrie());
        optimizer.run(dictionnary, out);
    }
    Texts vTrace;
    for (const LogLine& line : log.lines()) {
        if (line.logger == OptimizerLogger && line.level == log4cplus::TRACE_LOG_LEVEL) {
            vTrace.push_back(line.message);
        }
    }
    EXPECT_EQ(vTrace, (Texts{"ENTER: Optimizer::Optimizer", "EXIT: Optimizer::Optimizer",
                             "ENTER: Optimizer::Optimizer copy", "EXIT: Optimizer::Optimizer copy",
                             "ENTER: Optimizer::configure", "EXIT: Optimizer::configure",
                             "ENTER: Optimizer::run", "ENTER: Optimizer::optimizeLevel1",
                             "EXIT: Optimizer::optimizeLevel1", "ENTER: Optimizer::optimizeLevel2",
                             "EXIT: Optimizer::optimizeLevel2", "ENTER: sealExpression",
                             "EXIT: sealExpression", "EXIT: Optimizer::run",
                             "ENTER: Optimizer::~Optimizer", "EXIT: Optimizer::~Optimizer",
                             "ENTER: Optimizer::~Optimizer", "EXIT: Optimizer::~Optimizer"}));
}

TEST_F(OptimizerTest, ConfigurationOfAnyContentIsAcceptedAndChangesNothing) {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.optimizer.level", ParameterValue(0));
    configuration.setParameter("optimize", ParameterValue("false"));
    for (const ParameterTrie& each : {ParameterTrie(), configuration}) {
        Optimizer optimizer;
        EXPECT_TRUE(optimizer.configure(each));
        Dictionnary dictionnary("in");
        const Node pA(constant({1.0}));
        const auto pX = variable("x", Node(concatenation({Node(concatenation({pA})), pA})));
        const auto pY = variable("y", Node(call("f")));
        const auto pZ = variable("z", Node(call("f")));
        for (const auto& pEntry : {pX, pY, pZ}) {
            add(dictionnary, pEntry);
        }
        Dictionnary out("out");
        EXPECT_TRUE(optimizer.run(dictionnary, out));
        EXPECT_EQ(pY->getValue(), pZ->getValue());
        EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pA}));
    }
}

TEST_F(OptimizerTest, CloneIsAnOptimizerUnderTheSameAccount) {
    const Optimizer optimizer;
    const Handle<Optimizer> pClone(Handle<Cloneable>(optimizer.clone()));
    ASSERT_FALSE(pClone.isNull());
    EXPECT_STREQ(Optimizer::getMemAccountName(), "Optimizer");
    Dictionnary dictionnary("in");
    Dictionnary out("out");
    EXPECT_TRUE(pClone->run(dictionnary, out));
}

TEST_F(OptimizerTest, IndexOfTheSecondPassIsMadeWhereSomebodySeesIt) {
    Dictionnary dictionnary("d");
    add(dictionnary, call("f"));
    const LogCapture log(OptimizerDictionnaryLogger);
    optimize(dictionnary);
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, "adding function: f"), 2u);
    const LogCapture trace(DataLogger, log4cplus::TRACE_LOG_LEVEL);
    const LogCapture silence(OptimizerDictionnaryLogger, log4cplus::ERROR_LOG_LEVEL);
    optimize(dictionnary);
    EXPECT_EQ(trace.count(log4cplus::TRACE_LOG_LEVEL, "ENTER: OptimizerExpressionDataImpl::key"),
              2u);
}

TEST_F(OptimizerTest, EntriesAreSealedInTheirOrder) {
    Calls vCalls;
    Dictionnary dictionnary("in");
    for (const char* szName : {"b", "a", "c"}) {
        add(dictionnary, variable(szName, Node(new RecordingNode(szName, &vCalls))));
    }
    Optimizer().sealExpressions(dictionnary);
    EXPECT_EQ(vCalls, (Calls{"b.seal_i", "a.seal_i", "c.seal_i"}));
}

} // namespace

} // namespace Velmora::Math::Xpr
