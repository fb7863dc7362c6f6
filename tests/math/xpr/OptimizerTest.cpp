// What the passes of the optimizer do to a graph, and what they leave alone.

#include <velmora/math/xpr/Optimizer.h>

#include <cmath>
#include <map>

#include <velmora/ParameterTrie.h>

#include "math/xpr/OptimizerGraphs.h"
#include "support/GraphInvariants.h"
#include "support/GraphTest.h"
#include "support/LinkBench.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

constexpr const char* NotAChild = "iteFound != m_Childs.end()";

class OptimizerTest : public GraphTest {
protected:
    template <class T>
    static void add(Dictionnary& inout_Dictionnary, const Handle<T>& in_pExpression) {
        ASSERT_TRUE(inout_Dictionnary.add(Handle<Expression>(in_pExpression), false));
    }

    /// Runs over a dictionary of these entries.
    static void optimize(NodeList in_entries) {
        Dictionnary dictionnary("in");
        for (const Node& pEntry : in_entries) {
            add(dictionnary, pEntry);
        }
        optimize(dictionnary);
    }

    static void optimize(Dictionnary& inout_Dictionnary) {
        Dictionnary out("out");
        EXPECT_TRUE(Optimizer().run(inout_Dictionnary, out));
        EXPECT_TRUE(checkInvariants(out));
    }

    /// The lines "found COUNT similar instance(s) of the function NAME", as NAME to the counts.
    static std::map<std::string, std::vector<int>> listFound(const LogCapture& in_Log) {
        std::map<std::string, std::vector<int>> mapFound;
        const std::string strBetween = " similar instance(s) of the function ";
        for (const LogLine& line : in_Log.lines()) {
            const auto uiBetween = line.message.find(strBetween);
            if (line.logger == OptimizerLogger && line.message.rfind("found ", 0) == 0 &&
                uiBetween != std::string::npos) {
                mapFound[line.message.substr(uiBetween + strBetween.size())].push_back(
                    std::stoi(line.message.substr(6)));
            }
        }
        return mapFound;
    }

    static Nodes nodesOf(NodeList in_nodes) {
        Nodes vNodes;
        for (const Node& pNode : in_nodes) {
            vNodes.push_back(pNode.get());
        }
        return vNodes;
    }

    /// What the arguments are bound to, in their order.
    static Nodes valuesBoundBy(const FunctionBaseImpl& in_Function) {
        Nodes vValues;
        for (std::size_t ui = 0; ui != in_Function.getArgumentCount(); ++ui) {
            vValues.push_back(valueOf(in_Function, ui));
        }
        return vValues;
    }

    static Handle<OperatorConcatenate> concatenationOf(const Handle<VariableImpl>& in_pVariable) {
        return Handle<OperatorConcatenate>(in_pVariable->getValue());
    }

    /// Operators with any number of arguments that were ever made.
    static std::size_t countXaryFunctions() {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == XaryFunctionNoT::getMemAccountName()) {
                return account.totalBlocks;
            }
        }
        return 0;
    }
};

/// A linked script, optimised.
class Optimized {
public:
    explicit Optimized(const std::string& in_strScript) {
        EXPECT_TRUE(m_Bench.load("s", in_strScript));
        EXPECT_TRUE(m_Bench.link());
        const LogCapture log(OptimizerLogger);
        EXPECT_TRUE(Optimizer().run(m_Bench.m_Linked, m_Out));
        EXPECT_TRUE(checkInvariants(m_Out));
        for (const LogLine& line : log.lines()) {
            m_vLog.push_back(line.message);
        }
        for (const auto& entry : m_Out) {
            entry.second->configure(TSHandle<VirtualFileSystem>());
        }
    }

    /// The function that computes the variable of that name.
    const ExpressionBaseImpl* computing(const char* in_szName) const {
        return ExpressionBaseImpl::getYoungerChild(Node(m_Out.findExpression(in_szName))).get();
    }

    Values value(const char* in_szName) const {
        return evaluated(*m_Out.findExpression(in_szName));
    }

    void set(const char* in_szName, const DoubleVector& in_vValue) const {
        m_Out.findVariable(in_szName)->setValue(in_vValue);
    }

    bool hasLogged(const std::string& in_strLine) const {
        return std::find(m_vLog.begin(), m_vLog.end(), in_strLine) != m_vLog.end();
    }

private:
    LinkBench m_Bench;
    Dictionnary m_Out{"out"};
    Texts m_vLog;
};

TEST_F(OptimizerTest, TwoEqualCallsBecomeOneNodeWithTheParentsOfBoth) {
    const Node pX(variable("x"));
    const Node pFirst(call("sum", {pX}));
    const Node pSecond(call("sum", {pX}));
    const Node pA(variable("a", pFirst));
    const Node pB(variable("b", pSecond));
    const LogCapture log(OptimizerLogger);
    optimize({pA, pB});
    EXPECT_EQ(parentsOf(*pFirst), nodesOf({pA, pB}));
    EXPECT_EQ(parentsOf(*pSecond), Nodes());
    EXPECT_EQ(Handle<VariableImpl>(pB)->getValue(), pFirst);
    EXPECT_EQ(listFound(log)["sum"], std::vector<int>{2});
}

TEST_F(OptimizerTest, EqualCallsOfAScriptBecomeOneNode) {
    const Optimized script("inputvar x\na = sum(x)\nb = 2 * sum(x)\nc = sum(a)\n");
    EXPECT_EQ(valueOf(dynamic_cast<const FunctionBaseImpl&>(*script.computing("s.b")), 1),
              script.computing("s.a"));
    EXPECT_NE(script.computing("s.c"), script.computing("s.a"));
    EXPECT_TRUE(script.hasLogged("found 1 similar instance(s) of the function mult"));
}

TEST_F(OptimizerTest, FunctionWithoutATwinIsReportedAsOne) {
    const LogCapture log(OptimizerLogger);
    optimize({Node(variable("a", Node(call("f")))), Node(variable("b", Node(call("g"))))});
    EXPECT_EQ(listFound(log), (std::map<std::string, std::vector<int>>{{"f", {1}}, {"g", {1}}}));
}

TEST_F(OptimizerTest, EachKeyIsReportedOnItsOwn) {
    const Node pX(variable("x"));
    const Node pY(variable("y"));
    const LogCapture log(OptimizerLogger);
    optimize({Node(variable("a", Node(call("f", {pX})))),
              Node(variable("b", Node(call("f", {pY})))),
              Node(variable("c", Node(call("f", {pX})))), Node(variable("d", Node(call("f"))))});
    EXPECT_EQ(listFound(log)["f"], (std::vector<int>{2, 1, 1}));
}

TEST_F(OptimizerTest, SumsOfSwappedSidesStayTwoNodes) {
    const Optimized script("inputvar x\ninputvar y\na = x + y\nb = y + x\nc = x + y\n");
    EXPECT_NE(script.computing("s.a"), script.computing("s.b"));
    EXPECT_EQ(script.computing("s.a"), script.computing("s.c"));
}

TEST_F(OptimizerTest, CallsOverSeparateConstantsOfOneValueStayTwoNodes) {
    const Node pA(variable("a", Node(call("sum", {Node(constant({1.0}))}))));
    const Node pB(variable("b", Node(call("sum", {Node(constant({1.0}))}))));
    const LogCapture log(OptimizerLogger);
    optimize({pA, pB});
    EXPECT_NE(Handle<VariableImpl>(pA)->getValue(), Handle<VariableImpl>(pB)->getValue());
    EXPECT_EQ(listFound(log)["sum"], (std::vector<int>{1, 1}));
}

TEST_F(OptimizerTest, CallsOnOneNamedConstantBecomeOneNode) {
    const Optimized script("one = 1\na = sum(one)\nb = sum(one)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_TRUE(script.hasLogged("found 2 similar instance(s) of the function sum"));
}

TEST_F(OptimizerTest, EqualLiteralsOfAScriptAreOneConstantAndTheirCallsOneNode) {
    const Optimized script("a = sum(1)\nb = sum(1)\nc = sum(2)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.c"));
}

TEST_F(OptimizerTest, EqualWindowsBecomeOneThatMovesOnOncePerFrame) {
    const Optimized script("inputvar x\n"
                           "a = slidingWindow<3>(x)\n"
                           "b = slidingWindow<3>(x)\n"
                           "other = slidingWindow<2>(x)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.other"));
    const std::vector<DoubleVector> vFrames{DoubleVector{1.0}, DoubleVector{2.0}, DoubleVector{3.0},
                                            DoubleVector{4.0}};
    for (const DoubleVector& vFrame : vFrames) {
        script.set("s.x", vFrame);
        EXPECT_EQ(script.value("s.a"), script.value("s.b"));
    }
    EXPECT_EQ(script.value("s.a"), (Values{2.0, 3.0, 4.0}));
    EXPECT_EQ(script.value("s.other"), Values{4.0}) << "evaluated once only";
}

TEST_F(OptimizerTest, WindowsOfOneSizeMergeWhereverTheSizeComesFrom) {
    const Optimized script("inputvar x\n"
                           "window<n>(y) = slidingWindow<n>(y)\n"
                           "a = slidingWindow<3>(x)\n"
                           "b = window<3>(x)\n"
                           "c = window<2>(x)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.c"));
}

TEST_F(OptimizerTest, CallsOfAScriptFunctionMergeWithTheirBodies) {
    const Optimized script("inputvar x\ntwice(y) = y + y\na = twice(x)\nb = twice(x)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_TRUE(script.hasLogged("found 2 similar instance(s) of the function s.twice"));
}

TEST_F(OptimizerTest, ConcatenationsOfOneFlatListBecomeOneNodeHoweverTheyNest) {
    const Optimized script("inputvar x\ninputvar y\n"
                           "a = {{x}, y}\nb = {{x, y}}\nc = {x, {y}}\nd = {x, y}\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.c"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.d"));
    const DoubleVector vX{1.0, 2.0};
    const DoubleVector vY{3.0};
    script.set("s.x", vX);
    script.set("s.y", vY);
    for (const char* szName : {"s.a", "s.b", "s.c", "s.d"}) {
        EXPECT_EQ(script.value(szName), (Values{1.0, 2.0, 3.0})) << szName;
    }
}

TEST_F(OptimizerTest, InputsWithOneVectorStayTwo) {
    const DoubleVector vFrame{1.0};
    const Handle<VariableImpl> pX = variable("x", Node(new DomainValueNoCopyImpl(vFrame)));
    const Handle<VariableImpl> pY = variable("y", Node(new DomainValueNoCopyImpl(vFrame)));
    const auto pA = variable("a", Node(call("f", {Node(pX)})));
    const auto pB = variable("b", Node(call("f", {Node(pY)})));
    optimize({Node(pA), Node(pB)});
    EXPECT_NE(pA->getValue(), pB->getValue());
}

TEST_F(OptimizerTest, CallsAboveMergedCallsMergeWhateverTheirNames) {
    const Optimized script("inputvar x\ninputvar y\n"
                           "a = abs(log(x + y))\nb = abs(log(x + y))\n"
                           "c = log(abs(x + y))\nd = log(abs(x + y))\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_EQ(script.computing("s.c"), script.computing("s.d"));
    for (const char* szFound : {"2 similar instance(s) of the function abs",
                                "4 similar instance(s) of the function add"}) {
        EXPECT_TRUE(script.hasLogged(std::string("found ") + szFound)) << szFound;
    }
}

TEST_F(OptimizerTest, SurvivorIsTheInstanceWithMoreNodes) {
    for (const bool bLongFirst : {false, true}) {
        const Node pX(variable("x"));
        const Node pShort(call("f", {pX}));
        const Node pLong(call("f", {Node(variable("v", Node(variable("w", pX))))}));
        const Node pA(variable("a", bLongFirst ? pLong : pShort));
        const Node pB(variable("b", bLongFirst ? pShort : pLong));
        optimize({pA, pB});
        EXPECT_EQ(parentsOf(*pShort), Nodes());
        EXPECT_EQ(parentsOf(*pLong), bLongFirst ? nodesOf({pA, pB}) : nodesOf({pB, pA}));
    }
}

TEST_F(OptimizerTest, SurvivorAmongTheInstancesOfMostNodesIsTheFirst) {
    const Node pX(variable("x"));
    const auto through = [&] { return Node(call("f", {Node(variable("v", pX))})); };
    const Node pShort(call("f", {pX}));
    const Node pFirst = through();
    const Node pSecond = through();
    const Node pA(variable("a", pShort));
    const Node pB(variable("b", pFirst));
    const Node pC(variable("c", pSecond));
    optimize({pA, pB, pC});
    EXPECT_EQ(parentsOf(*pFirst), nodesOf({pB, pA, pC}));
    EXPECT_EQ(parentsOf(*pShort), Nodes());
    EXPECT_EQ(parentsOf(*pSecond), Nodes());
}

TEST_F(OptimizerTest, ComplexityIsCountedAnewBehindAMerge) {
    // The tops have equal counts, so the first survives; then the longer one of the inner calls
    // does, which makes the calls over them equally long.
    const Node pX(variable("x"));
    const Node pShort(call("f", {pX}));
    const Node pLong(call("f", {Node(variable("v", pX))}));
    const Node pFirst(call("f", {pShort}));
    const Node pSecond(call("f", {pLong}));
    const Node pPadded(variable("far", Node(variable("near", pX))));
    const Handle<RecordingFunction> pTop = call("f", {pShort, pFirst, pPadded});
    const auto pA = variable("a", Node(pTop));
    const auto pB = variable("b", Node(call("f", {pLong, pSecond, pX})));
    optimize({Node(pA), Node(pB)});
    EXPECT_EQ(pA->getValue(), Node(pTop));
    EXPECT_EQ(pB->getValue(), Node(pTop));
    EXPECT_EQ(valuesBoundBy(*pTop), nodesOf({pLong, pFirst, pPadded}));
    EXPECT_EQ(parentsOf(*pSecond), Nodes());
}

TEST_F(OptimizerTest, NodeWithSeveralParentsIsNotReplacedByItself) {
    const Node pShared(call("f"));
    const Node pA(variable("a", pShared));
    const Node pB(variable("b", pShared));
    const LogCapture log(OptimizerLogger);
    optimize({pA, pB, Node(variable("c", pA))});
    EXPECT_EQ(listFound(log)["f"], std::vector<int>{3});
    EXPECT_EQ(parentsOf(*pShared), nodesOf({pA, pB}));
}

TEST_F(OptimizerTest, TwinWithThreeParentsMovesCompletelyWithAFailedAssertion) {
    const Node pBest(call("f"));
    const Node pTwin(call("f"));
    const Node pFirst(variable("first", pBest));
    const Node pA(variable("a", pTwin));
    const Node pB(variable("b", pTwin));
    const Node pC(variable("c", pTwin));
    const LogCapture log(OptimizerLogger);
    optimize({pFirst, pA, pB, pC});
    EXPECT_EQ(takeAssertions(), Texts{NotAChild});
    EXPECT_EQ(listFound(log)["f"], std::vector<int>{4});
    // The first call passes the second parent over, the next one takes it.
    EXPECT_EQ(parentsOf(*pBest), nodesOf({pFirst, pA, pC, pB}));
    EXPECT_EQ(parentsOf(*pTwin), Nodes());
}

TEST_F(OptimizerTest, TwinUsedTwiceByOneParentMovesCompletely) {
    const Node pBest(call("f"));
    const Handle<RecordingFunction> pTwin = call("f");
    const Handle<RecordingFunction> pParent(new RecordingFunction("g"));
    pParent->addChild(Node(pTwin), true);
    pParent->addChild(Node(pTwin), true);
    optimize({Node(variable("first", pBest)), Node(pParent)});
    EXPECT_EQ(childrenOf(*pParent), nodesOf({pBest, pBest}));
    EXPECT_EQ(parentsOf(*pTwin), Nodes());
}

TEST_F(OptimizerTest, BeyondTheLimitOfVisitsATwinMovesCompletelyToo) {
    VisitLimit limit;
    const Node pBest(call("f"));
    const Node pTwin(call("f"));
    add(limit.m_Dictionnary, variable("first", pBest));
    for (const char* szName : {"a", "b", "c", "d", "e"}) {
        add(limit.m_Dictionnary, variable(szName, pTwin));
    }
    const LogCapture log(OptimizerLogger);
    optimize(limit.m_Dictionnary);
    EXPECT_EQ(listFound(log)["f"], std::vector<int>{2});
    EXPECT_EQ(parentsOf(*pBest).size(), 6u);
    EXPECT_EQ(parentsOf(*pTwin), Nodes());
}

/// Counts how often it is asked whether a new child below it is itself.
class AskedFunction : public RecordingFunction {
public:
    AskedFunction() : RecordingFunction("asked") {}

    mutable unsigned m_uiAsked = 0;

protected:
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>&) const override {
        ++m_uiAsked;
        return false;
    }
};

TEST_F(OptimizerTest, MergingAndFlatteningAskNoAncestors) {
    const Node pA(constant({1.0}));
    const Node pBest(call("f", {pA}));
    const Handle<AskedFunction> pAbove(new AskedFunction);
    bindAll(*pAbove, {Node(call("f", {pA})), Node(concatenation({Node(concatenation({pA})), pA})),
                      Node(call("f", {pA}))});
    Dictionnary dictionnary("in");
    add(dictionnary, variable("first", pBest));
    add(dictionnary, pAbove);
    pAbove->m_uiAsked = 0;
    optimize(dictionnary);
    EXPECT_EQ(pAbove->m_uiAsked, 0u);
    EXPECT_EQ(valueOf(*pAbove, 0), pBest.get());
    EXPECT_EQ(valueOf(*pAbove, 2), pBest.get());
    // Whoever else makes a link does.
    bind(*pAbove, 0, Node(variable("x")));
    EXPECT_NE(pAbove->m_uiAsked, 0u);
}

TEST_F(OptimizerTest, ConcatenationsInsideAConcatenationAreFlattenedInOrder) {
    const Node pA(constant({1.0, 2.0}));
    const Node pB(constant({3.0}));
    const Node pC(constant({4.0}));
    const Node pInner(concatenation({pA, pB}));
    const Handle<OperatorConcatenate> pOuter = concatenation({pInner, pC});
    const auto pX = variable("x", Node(pOuter));
    const std::size_t uiMade = countXaryFunctions();
    optimize({Node(pX)});
    EXPECT_EQ(countXaryFunctions(), uiMade + 1);
    const auto pFlat = concatenationOf(pX);
    ASSERT_FALSE(pFlat.isNull());
    EXPECT_NE(pFlat, pOuter);
    EXPECT_EQ(valuesBoundBy(*pFlat), nodesOf({pA, pB, pC}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 3.0, 4.0}));
    // The values have moved, not the variables; the operators are as they were.
    EXPECT_EQ(valuesBoundBy(*pOuter), nodesOf({pInner, pC}));
    EXPECT_EQ(parentsOf(*pOuter), Nodes());
    EXPECT_EQ(valuesBoundBy(dynamic_cast<const FunctionBaseImpl&>(*pInner)), nodesOf({pA, pB}));
    EXPECT_NE(argument(*pFlat, 2), argument(*pOuter, 1));
}

TEST_F(OptimizerTest, FlattenedArgumentsAreNamedApartAndTheOthersKeepTheirNames) {
    // All of them are called a0, a1 and so on where they come from.
    const Node pA(constant({1.0}));
    const Node pInner(concatenation({pA, pA}));
    const auto pX = variable("x", Node(concatenation({pInner, pA, pInner})));
    optimize({Node(pX)});
    const auto pFlat = concatenationOf(pX);
    Texts vNames;
    for (auto ite = pFlat->getArgumentBegin(); ite != pFlat->getArgumentEnd(); ++ite) {
        vNames.push_back(ite->first);
    }
    ASSERT_EQ(vNames.size(), 5u);
    EXPECT_EQ(vNames[2], "a1");
    for (const std::size_t ui : {0U, 1U, 3U, 4U}) {
        EXPECT_EQ(vNames[ui].size(), 36u) << "the text of a UUID";
    }
    EXPECT_STREQ(pFlat->getName(), "unamed");
}

TEST_F(OptimizerTest, ThreeLevelsOfNestingAreFlattenedInTwoRounds) {
    const Node pA(constant({1.0}));
    const Node pB(constant({2.0}));
    const Node pC(constant({3.0}));
    const Node pD(constant({4.0}));
    const auto pX = variable(
        "x",
        Node(concatenation(
            {pA, Node(concatenation({Node(concatenation({pB, pC}, "unamed")), pD}, "unamed"))})));
    const std::size_t uiMade = countXaryFunctions();
    optimize({Node(pX)});
    EXPECT_EQ(countXaryFunctions(), uiMade + 2) << "one new operator a round";
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pB, pC, pD}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 3.0, 4.0}));
}

TEST_F(OptimizerTest, ConcatenationInTheBodyOfAScriptFunctionIsFlattenedToo) {
    const Node pA(constant({1.0}));
    const Node pB(constant({2.0}));
    const Handle<ScriptFunctionImpl> pFunction =
        scriptFunction("s.f", Node(concatenation({pA, pB}, "unamed")));
    const auto pX = variable("x", Node(concatenation({Node(pFunction), pB})));
    optimize({Node(pX)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pB, pB}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 2.0}));
}

TEST_F(OptimizerTest, ScriptFunctionOfAnotherBodyIsKeptAsOneValue) {
    const Node pA(constant({1.0}));
    const Node pSum(scriptFunction("s.f", Node(binary(pA, pA))));
    const Node pInner(concatenation({pA}));
    const auto pX = variable("x", Node(concatenation({pSum, pInner})));
    optimize({Node(pX)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pSum, pA}));
    EXPECT_EQ(evaluated(*pX), (Values{2.0, 1.0}));
}

TEST_F(OptimizerTest, FlatteningLooksThroughOneScriptFunctionAndNoVariable) {
    const Node pA(constant({1.0}));
    const Node pInner(concatenation({pA, pA}));
    const Node pDeep(scriptFunction("s.f", Node(scriptFunction("s.g", pInner))));
    const Node pNamed(variable("named", pInner));
    const Handle<OperatorConcatenate> pOuter = concatenation({pDeep, pNamed});
    const auto pX = variable("x", Node(pOuter));
    optimize({Node(pX)});
    EXPECT_EQ(concatenationOf(pX), pOuter);
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 1.0, 1.0, 1.0}));
}

TEST_F(OptimizerTest, ConcatenationOfAnotherNameKeepsItsNesting) {
    const Node pA(constant({1.0}));
    const Node pInner(concatenation({pA}));
    const Handle<OperatorConcatenate> pOuter = concatenation({pInner, pA}, "unamed");
    const auto pX = variable("x", Node(pOuter));
    optimize({Node(pX)});
    EXPECT_EQ(concatenationOf(pX), pOuter);
    EXPECT_EQ(valuesBoundBy(*pOuter), nodesOf({pInner, pA}));
    const std::size_t uiMade = countXaryFunctions();
    pOuter->setName("concat");
    optimize({Node(pX)});
    EXPECT_EQ(countXaryFunctions(), uiMade + 1);
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pA}));
}

TEST_F(OptimizerTest, ConcatenationsOfScriptsKeepTheirNesting) {
    const Optimized script("inputvar a\ninputvar b\ninputvar c\nx = {{a, b}, c}\n");
    const auto& outer = dynamic_cast<const OperatorConcatenate&>(*script.computing("s.x"));
    ASSERT_EQ(outer.getArgumentCount(), 2u);
    const auto* const pInner = dynamic_cast<const OperatorConcatenate*>(valueOf(outer, 0));
    ASSERT_NE(pInner, nullptr);
    EXPECT_EQ(pInner->getArgumentCount(), 2u);
    EXPECT_STREQ(outer.getName(), "unamed");
}

TEST_F(OptimizerTest, ConcatenationThatOthersUseStaysAlive) {
    const Node pA(constant({1.0}));
    const Node pB(constant({2.0}));
    const auto pUser = variable("user", Node(concatenation({pA, pB})));
    const auto pX = variable("x", Node(concatenation({pUser->getValue(), pA})));
    optimize({Node(pX), Node(pUser)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pUser)), nodesOf({pA, pB}));
    EXPECT_EQ(evaluated(*pUser), (Values{1.0, 2.0}));
    EXPECT_EQ(evaluated(*pX), (Values{1.0, 2.0, 1.0}));
}

TEST_F(OptimizerTest, FlattenedConcatenationReplacesTheNestedOneForAllItsParents) {
    const Node pA(constant({1.0}));
    const Node pOuter(concatenation({Node(concatenation({pA})), pA}));
    const auto pX = variable("x", pOuter);
    const auto pY = variable("y", pOuter);
    optimize({Node(pX), Node(pY)});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), nodesOf({pA, pA}));
    EXPECT_EQ(pX->getValue(), pY->getValue());
}

TEST_F(OptimizerTest, ConcatenationThatIsAnEntryItselfStaysTheEntry) {
    Dictionnary dictionnary("in");
    const Node pA(constant({1.0}));
    const Handle<OperatorConcatenate> pOuter = concatenation({Node(concatenation({pA})), pA});
    add(dictionnary, pOuter);
    Dictionnary out("out");
    EXPECT_TRUE(Optimizer().run(dictionnary, out));
    EXPECT_EQ(out.findExpression("concat"), Handle<Expression>(pOuter));
    EXPECT_EQ(evaluated(*pOuter), (Values{1.0, 1.0}));
}

TEST_F(OptimizerTest, FlatteningLeavesAnArgumentWithoutAValueWithoutOne) {
    const Node pA(constant({1.0}));
    const Handle<OperatorConcatenate> pOuter = concatenation({Node(concatenation({pA}))});
    pOuter->addArgument("open");
    const auto pX = variable("x", Node(pOuter));
    optimize({Node(pX)});
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Can't set a null expression")});
    EXPECT_EQ(valuesBoundBy(*concatenationOf(pX)), (Nodes{pA.get(), nullptr}));
}

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
    class Foreign : public Variable {
        const char* getName() const override { return "foreign"; }
        bool setValue(const Handle<Expression>&) override { return false; }
        bool setValue(const DoubleVector&) override { return false; }
        bool configure(const TSHandle<VirtualFileSystem>&) override { return false; }
        bool evaluate(DoubleVector&) override { return false; }
        bool evaluate(LimitedObjPtr<DoubleVector>&) override { return false; }
        bool dump(const char*) const override { return false; }
        bool reset() override { return false; }
        std::ostream& write(std::ostream& out_Stream) const override { return out_Stream; }
    };
    add(dictionnary, Handle<Variable>(new Foreign));
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
        if (line.logger == OptimizerLogger) {
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

} // namespace

} // namespace Velmora::Math::Xpr
