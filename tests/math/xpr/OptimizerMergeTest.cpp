// What the optimizer merges, what it leaves apart, and which of the twins survives.

#include <optional>

#include "math/xpr/OptimizerBench.h"
#include "math/xpr/WalkingReader.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

constexpr const char* NotAChild = "iteFound != m_Childs.end()";

class OptimizerMergeTest : public OptimizerBench {};

TEST_F(OptimizerMergeTest, TwoEqualCallsBecomeOneNodeWithTheParentsOfBoth) {
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

TEST_F(OptimizerMergeTest, EqualCallsOfAScriptBecomeOneNode) {
    const Optimized script("inputvar x\na = sum(x)\nb = 2 * sum(x)\nc = sum(a)\n");
    EXPECT_EQ(valueOf(dynamic_cast<const FunctionBaseImpl&>(*script.computing("s.b")), 1),
              script.computing("s.a"));
    EXPECT_NE(script.computing("s.c"), script.computing("s.a"));
    EXPECT_TRUE(script.hasLogged("found 1 similar instance(s) of the function mult"));
}

TEST_F(OptimizerMergeTest, FunctionWithoutATwinIsReportedAsOne) {
    const LogCapture log(OptimizerLogger);
    optimize({Node(variable("a", Node(call("f")))), Node(variable("b", Node(call("g"))))});
    EXPECT_EQ(listFound(log), (std::map<std::string, std::vector<int>>{{"f", {1}}, {"g", {1}}}));
}

TEST_F(OptimizerMergeTest, EachKeyIsReportedOnItsOwn) {
    const Node pX(variable("x"));
    const Node pY(variable("y"));
    const LogCapture log(OptimizerLogger);
    optimize({Node(variable("a", Node(call("f", {pX})))),
              Node(variable("b", Node(call("f", {pY})))),
              Node(variable("c", Node(call("f", {pX})))), Node(variable("d", Node(call("f"))))});
    EXPECT_EQ(listFound(log)["f"], (std::vector<int>{2, 1, 1}));
}

TEST_F(OptimizerMergeTest, SumsOfSwappedSidesStayTwoNodes) {
    const Optimized script("inputvar x\ninputvar y\na = x + y\nb = y + x\nc = x + y\n");
    EXPECT_NE(script.computing("s.a"), script.computing("s.b"));
    EXPECT_EQ(script.computing("s.a"), script.computing("s.c"));
}

TEST_F(OptimizerMergeTest, CallsOverSeparateConstantsOfOneValueStayTwoNodes) {
    const Node pA(variable("a", Node(call("sum", {Node(constant({1.0}))}))));
    const Node pB(variable("b", Node(call("sum", {Node(constant({1.0}))}))));
    const LogCapture log(OptimizerLogger);
    optimize({pA, pB});
    EXPECT_NE(Handle<VariableImpl>(pA)->getValue(), Handle<VariableImpl>(pB)->getValue());
    EXPECT_EQ(listFound(log)["sum"], (std::vector<int>{1, 1}));
}

TEST_F(OptimizerMergeTest, CallsOnOneNamedConstantBecomeOneNode) {
    const Optimized script("one = 1\na = sum(one)\nb = sum(one)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_TRUE(script.hasLogged("found 2 similar instance(s) of the function sum"));
}

TEST_F(OptimizerMergeTest, EqualLiteralsOfAScriptAreOneConstantAndTheirCallsOneNode) {
    const Optimized script("a = sum(1)\nb = sum(1)\nc = sum(2)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.c"));
}

TEST_F(OptimizerMergeTest, EqualWindowsBecomeOneThatMovesOnOncePerFrame) {
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

TEST_F(OptimizerMergeTest, WindowsOfOneSizeMergeWhereverTheSizeComesFrom) {
    const Optimized script("inputvar x\n"
                           "window<n>(y) = slidingWindow<n>(y)\n"
                           "a = slidingWindow<3>(x)\n"
                           "b = window<3>(x)\n"
                           "c = window<2>(x)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_NE(script.computing("s.a"), script.computing("s.c"));
}

TEST_F(OptimizerMergeTest, CallsOfAScriptFunctionMergeWithTheirBodies) {
    const Optimized script("inputvar x\ntwice(y) = y + y\na = twice(x)\nb = twice(x)\n");
    EXPECT_EQ(script.computing("s.a"), script.computing("s.b"));
    EXPECT_TRUE(script.hasLogged("found 2 similar instance(s) of the function s.twice"));
}

TEST_F(OptimizerMergeTest, ConcatenationsOfOneFlatListBecomeOneNodeHoweverTheyNest) {
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

TEST_F(OptimizerMergeTest, InputsWithOneVectorStayTwo) {
    const DoubleVector vFrame{1.0};
    const Handle<VariableImpl> pX = variable("x", Node(new DomainValueNoCopyImpl(vFrame)));
    const Handle<VariableImpl> pY = variable("y", Node(new DomainValueNoCopyImpl(vFrame)));
    const auto pA = variable("a", Node(call("f", {Node(pX)})));
    const auto pB = variable("b", Node(call("f", {Node(pY)})));
    optimize({Node(pA), Node(pB)});
    EXPECT_NE(pA->getValue(), pB->getValue());
}

TEST_F(OptimizerMergeTest, CallsAboveMergedCallsMergeWhateverTheirNames) {
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

TEST_F(OptimizerMergeTest, SurvivorIsTheInstanceWithMoreNodes) {
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

TEST_F(OptimizerMergeTest, SurvivorAmongTheInstancesOfMostNodesIsTheFirst) {
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

TEST_F(OptimizerMergeTest, ComplexityIsCountedAnewBehindAMerge) {
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

TEST_F(OptimizerMergeTest, NodeWithSeveralParentsIsNotReplacedByItself) {
    const Node pShared(call("f"));
    const Node pA(variable("a", pShared));
    const Node pB(variable("b", pShared));
    const LogCapture log(OptimizerLogger);
    optimize({pA, pB, Node(variable("c", pA))});
    EXPECT_EQ(listFound(log)["f"], std::vector<int>{3});
    EXPECT_EQ(parentsOf(*pShared), nodesOf({pA, pB}));
}

TEST_F(OptimizerMergeTest, TwinWithThreeParentsMovesCompletelyWithAFailedAssertion) {
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

TEST_F(OptimizerMergeTest, TwinUsedTwiceByOneParentMovesCompletely) {
    const Node pBest(call("f"));
    const Handle<RecordingFunction> pTwin = call("f");
    const Handle<RecordingFunction> pParent(new RecordingFunction("g"));
    pParent->addChild(Node(pTwin), true);
    pParent->addChild(Node(pTwin), true);
    optimize({Node(variable("first", pBest)), Node(pParent)});
    EXPECT_EQ(childrenOf(*pParent), nodesOf({pBest, pBest}));
    EXPECT_EQ(parentsOf(*pTwin), Nodes());
}

TEST_F(OptimizerMergeTest, BeyondTheLimitOfVisitsATwinMovesCompletelyToo) {
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

TEST_F(OptimizerMergeTest, UnknownKindOfNodeFailsAnAssertionOnEachLevelWhoeverReadsTheLog) {
    for (const log4cplus::LogLevel level :
         {log4cplus::ERROR_LOG_LEVEL, log4cplus::DEBUG_LOG_LEVEL}) {
        const LogCapture log(OptimizerLogger, level);
        optimize({Node(variable("x", Node(new RecordingNode)))});
        EXPECT_EQ(takeAssertions(), Texts(2, "false && \"Unknown expression type\"")) << level;
    }
    VisitLimit limit;
    add(limit.m_Dictionnary, variable("x", Node(new RecordingNode)));
    optimize(limit.m_Dictionnary);
    EXPECT_EQ(takeAssertions(), Texts(2, "false && \"Unknown expression type\""));
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

TEST_F(OptimizerMergeTest, MergingAndFlatteningAskNoAncestors) {
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

/// Does the first of two calls of that name survive, where who reads the log walks over a part of
/// the graph? Calls of the two other names, over one call each, are equal but for what is below.
bool doesFirstSurvive(const char* in_szName, const char* in_szBelow, const char* in_szBeside,
                      bool in_bWalk) {
    const Node pX(variable("x"));
    const Node pShort(variable("q", Node(call(in_szBelow, {pX}))));
    const Node pLong(variable("q", Node(call(in_szBelow, {Node(variable("w", pX))}))));
    const Node pFirstPart(variable("g", pShort));
    const Node pSecondPart(variable("g", pLong));
    const auto pFirst = variable("first", Node(call(in_szName, {pFirstPart})));
    const auto pSecond = variable("second", Node(call(in_szName, {pSecondPart})));
    const Node pKept = pFirst->getValue();
    Dictionnary dictionnary("in");
    for (const auto& pEntry :
         {pFirst, pSecond, variable("third", Node(call(in_szBeside, {pFirstPart}))),
          variable("fourth", Node(call(in_szBeside, {pSecondPart})))}) {
        dictionnary.add(Handle<Expression>(pEntry), false);
    }
    Dictionnary out("out");
    const LogCapture log(OptimizerLogger);
    std::optional<WalkingReader> reader;
    if (in_bWalk) {
        reader.emplace(OptimizerLogger, *pShort);
    }
    EXPECT_TRUE(Optimizer().run(dictionnary, out));
    EXPECT_EQ(pFirst->getValue(), pSecond->getValue());
    return pFirst->getValue() == pKept;
}

// Functions come in the order of a table of hashes: some of these names come in each order.
TEST_F(OptimizerMergeTest, SurvivorIsTheSameWhoeverReadsTheLog) {
    for (char c = 'c'; c != 'z'; ++c) {
        const std::string strBeside(1, c);
        const std::string strBelow(1, static_cast<char>(c - 1));
        const std::string strName(1, static_cast<char>(c - 2));
        const auto doesSurvive = [&](bool in_bWalk) {
            return doesFirstSurvive(strName.c_str(), strBelow.c_str(), strBeside.c_str(), in_bWalk);
        };
        EXPECT_EQ(doesSurvive(false), doesSurvive(true)) << strName;
    }
}

/// Would like to stand above and below another when a child of it is replaced.
class SuspiciousFunction : public RecordingFunction {
public:
    SuspiciousFunction() : RecordingFunction("suspicious") {}

    Node m_pAbove;

protected:
    void replaceChild_i(ExpressionBaseImpl&, const Handle<ExpressionBaseImpl>&) override {
        addChild(m_pAbove, true);
    }
};

TEST_F(OptimizerMergeTest, LinksThatAHostMakesOnTheWayAreChecked) {
    const Node pBest(call("f"));
    const Handle<SuspiciousFunction> pHost(new SuspiciousFunction);
    pHost->addChild(Node(call("f")), true);
    const Handle<RecordingFunction> pAbove(new RecordingFunction("g"));
    const Handle<RecordingFunction> pTop(new RecordingFunction("h"));
    pAbove->addChild(Node(pHost), true);
    pTop->addChild(Node(pAbove), true);
    pHost->m_pAbove = pTop;
    optimize({Node(variable("first", pBest)), Node(pTop)});
    EXPECT_EQ(takeAssertions(), Texts{"!isParent( *in_pChild ) && \"Can't loop on a parent!\""});
    EXPECT_EQ(childrenOf(*pHost), nodesOf({pBest}));
    pHost->m_pAbove = Node();
}

/// Would like the same when it is replaced itself.
class SuspiciousTwin : public RecordingFunction {
public:
    using RecordingFunction::RecordingFunction;

    bool replace(const Handle<ExpressionBaseImpl>& in_pNewExpression) override {
        addChild(m_pAbove, true);
        return RecordingFunction::replace(in_pNewExpression);
    }

    Node m_pAbove;
};

TEST_F(OptimizerMergeTest, LinksThatAReplacedTwinMakesAreChecked) {
    const Handle<SuspiciousTwin> pTwin(new SuspiciousTwin("f"));
    const Handle<RecordingFunction> pAbove(new RecordingFunction("g"));
    pAbove->addChild(Node(pTwin), true);
    pTwin->m_pAbove = pAbove;
    optimize({Node(variable("first", Node(call("f")))), Node(pAbove)});
    EXPECT_EQ(takeAssertions(), Texts{"!isParent( *in_pChild ) && \"Can't loop on a parent!\""});
    EXPECT_EQ(parentsOf(*pTwin), Nodes());
    pTwin->m_pAbove = Node();
}

/// Says how many parents it has when it is replaced.
class ReplacedFunction : public RecordingFunction {
public:
    using RecordingFunction::RecordingFunction;

    bool replace(const Handle<ExpressionBaseImpl>& in_pNewExpression) override {
        m_vParents.push_back(getParentEnd() - getParentBegin());
        return RecordingFunction::replace(in_pNewExpression);
    }

    std::vector<std::ptrdiff_t> m_vParents;
};

TEST_F(OptimizerMergeTest, TwinIsAskedToReplaceItselfAsOftenAsItIsVisited) {
    for (const bool bBeyond : {false, true}) {
        VisitLimit limit;
        Dictionnary few("few");
        Dictionnary& dictionnary = bBeyond ? limit.m_Dictionnary : few;
        const Handle<ReplacedFunction> pTwin(new ReplacedFunction("f"));
        add(dictionnary, variable("first", Node(call("f"))));
        add(dictionnary, variable("second", Node(pTwin)));
        add(dictionnary, variable("third", Node(pTwin)));
        if (bBeyond) {
            add(dictionnary, variable("fourth", Node(pTwin)));
            add(dictionnary, variable("fifth", Node(pTwin)));
        }
        optimize(dictionnary);
        EXPECT_EQ(pTwin->m_vParents,
                  bBeyond ? (std::vector<std::ptrdiff_t>{2}) : (std::vector<std::ptrdiff_t>{2, 0}));
        EXPECT_EQ(parentsOf(*pTwin), Nodes());
    }
}

} // namespace

} // namespace Velmora::Math::Xpr
