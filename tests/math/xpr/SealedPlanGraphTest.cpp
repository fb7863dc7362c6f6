// The plan of sealed graphs that are made by hand: what is computed, how often, and what a host may
// do on the way.

#include "math/xpr/src/SealedPlan.h"

#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/OptimizerGraphs.h"
#include "support/GraphTest.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

using Node = Handle<ExpressionBaseImpl>;
using Testing::argument;
using Testing::binary;
using Testing::bind;
using Testing::bindAll;
using Testing::constant;
using Testing::evaluated;
using Testing::RecordingBinary;
using Testing::valueOf;
using Testing::Values;
using Testing::variable;

/// A sealed graph of operators that count their calculations:
///
///     shared = {x, one}, left = {shared, y}, right = {shared, shared}, top = {left, right}
struct CountedGraph {
    using Counts = std::vector<unsigned>;

    CountedGraph() {
        set(m_pX, m_vX);
        set(m_pY, m_vY);
        m_pShared = operatorOver(Node(m_pX), Node(constant({0.0})));
        m_pLeft = operatorOver(Node(m_pShared), Node(m_pY));
        m_pRight = operatorOver(Node(m_pShared), Node(m_pShared));
        m_pTop = operatorOver(Node(m_pLeft), Node(m_pRight));
        m_pTop->seal();
    }

    static Handle<RecordingBinary> operatorOver(const Node& in_pLeft, const Node& in_pRight) {
        const Handle<RecordingBinary> pOperator(new RecordingBinary);
        bind(*pOperator, 0, in_pLeft);
        bind(*pOperator, 1, in_pRight);
        return pOperator;
    }

    static void set(const Handle<VariableImpl>& in_pVariable, const DoubleVector& in_vValue) {
        Variable& interface = *in_pVariable;
        interface.setValue(in_vValue);
    }

    /// The calculations since the last call: of the shared one, left, right and top.
    Counts takeCounts() {
        Counts vCounts;
        for (const auto& pOperator : {m_pShared, m_pLeft, m_pRight, m_pTop}) {
            vCounts.push_back(pOperator->m_uiCalculations);
            pOperator->m_uiCalculations = 0;
        }
        return vCounts;
    }

    DoubleVector m_vX{1.0};
    DoubleVector m_vNextX{2.0};
    DoubleVector m_vY{5.0};
    Handle<VariableImpl> m_pX = variable("x");
    Handle<VariableImpl> m_pY = variable("y");
    Handle<RecordingBinary> m_pShared;
    Handle<RecordingBinary> m_pLeft;
    Handle<RecordingBinary> m_pRight;
    Handle<RecordingBinary> m_pTop;
};

using Counts = CountedGraph::Counts;
using SealedPlanGraphTest = Testing::GraphTest;

TEST_F(SealedPlanGraphTest, EveryNodeIsComputedOnceAFrameAndOnlyIfWhatItReadsHasChanged) {
    CountedGraph graph;
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{1, 0, 5, 1, 0, 1, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 1, 1}));
    evaluated(*graph.m_pTop);
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 0, 0, 0}));
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2, 0, 5, 2, 0, 2, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 1, 1}));
    CountedGraph::set(graph.m_pY, graph.m_vNextX);
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2, 0, 2, 2, 0, 2, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 1, 0, 1}));
}

TEST_F(SealedPlanGraphTest, WhatWasAskedForAheadIsNotComputedAgain) {
    CountedGraph graph;
    EXPECT_EQ(evaluated(*graph.m_pRight), (Values{1, 0, 1, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{1, 0, 1, 0}));
    evaluated(*graph.m_pTop);
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 1, 0, 1}));
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    EXPECT_FALSE(graph.m_pRight->isValid());
    EXPECT_FALSE(graph.m_pTop->isValid());
    EXPECT_TRUE(graph.m_pY->getValue()->isValid());
}

TEST_F(SealedPlanGraphTest, WhatAnOperatorOfTheHostEvaluatesOnTheWayIsNotComputedAgain) {
    CountedGraph graph;
    graph.m_pLeft->m_OnCalculation = [&] { evaluated(*graph.m_pRight); };
    for (int iFrame = 0; iFrame != 6; ++iFrame) {
        CountedGraph::set(graph.m_pX, iFrame % 2 == 0 ? graph.m_vNextX : graph.m_vX);
        evaluated(*graph.m_pTop);
        EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 1, 1})) << iFrame;
    }
}

TEST_F(SealedPlanGraphTest, InputThatAnOperatorOfTheHostSetsOnTheWayIsReadBehindIt) {
    const DoubleVector vOne{1.0}, vTwo{2.0};
    const auto pX = variable("x");
    const auto pY = variable("y");
    CountedGraph::set(pX, vOne);
    CountedGraph::set(pY, vOne);
    const auto pFirst = CountedGraph::operatorOver(Node(pX), Node(constant({0.0})));
    const auto pSecond = CountedGraph::operatorOver(Node(pY), Node(constant({0.0})));
    const auto pTop = CountedGraph::operatorOver(Node(pFirst), Node(pSecond));
    pTop->seal();
    for (int iFrame = 0; iFrame != 8; ++iFrame) {
        const DoubleVector& vValue = iFrame % 2 == 0 ? vOne : vTwo;
        pFirst->m_OnCalculation = [&] { CountedGraph::set(pY, vValue); };
        CountedGraph::set(pX, vValue);
        const double dValue = *vValue.begin();
        EXPECT_EQ(evaluated(*pTop), (Values{dValue, 0, dValue, 0})) << iFrame;
        EXPECT_TRUE(pSecond->isValid());
    }
    pFirst->m_OnCalculation = nullptr;
}

/// A sealed `top = (host + y * 1) + z * 1`, in which the host's operator over x does something on
/// its way. All but that one are the library's.
struct GraphWithAHost {
    GraphWithAHost() {
        for (const auto& pInput : {m_pX, m_pY, m_pZ}) {
            CountedGraph::set(pInput, m_vOne);
        }
        m_pTop->seal();
    }
    ~GraphWithAHost() { m_pHost->m_OnCalculation = nullptr; }

    const DoubleVector m_vOne{1.0}, m_vTwo{2.0}, m_vThree{3.0};
    Handle<VariableImpl> m_pX = variable("x");
    Handle<VariableImpl> m_pY = variable("y");
    Handle<VariableImpl> m_pZ = variable("z");
    Node m_pNumber{constant({1.0})};
    Handle<RecordingBinary> m_pHost = CountedGraph::operatorOver(Node(m_pX), Node(constant({})));
    Handle<OperatorMultiply> m_pOfY = binary<OperatorMultiply>(Node(m_pY), m_pNumber);
    Handle<OperatorMultiply> m_pOfZ = binary<OperatorMultiply>(Node(m_pZ), m_pNumber);
    Handle<OperatorPlus> m_pSum = binary<OperatorPlus>(Node(m_pHost), Node(m_pOfY));
    Handle<OperatorPlus> m_pTop = binary<OperatorPlus>(Node(m_pSum), Node(m_pOfZ));
};

/// Which inputs a host sets ahead of a frame: one of them, so that what is new is a single path, or
/// several.
class HostOnTheWayTest : public Testing::GraphTest, public testing::WithParamInterface<bool> {
protected:
    static void setAhead(GraphWithAHost& inout_Graph, const DoubleVector& in_vValue) {
        CountedGraph::set(inout_Graph.m_pX, in_vValue);
        if (GetParam()) {
            CountedGraph::set(inout_Graph.m_pZ, in_vValue);
        }
    }
    double fromZ(double in_dSet) const { return GetParam() ? in_dSet : 1.0; }
};

TEST_P(HostOnTheWayTest, InputThatIsSetReachesTheLibrarysOperators) {
    GraphWithAHost graph;
    for (int iFrame = 0; iFrame != 12; ++iFrame) {
        const DoubleVector& vValue = iFrame % 2 == 0 ? graph.m_vOne : graph.m_vTwo;
        graph.m_pHost->m_OnCalculation = [&] { CountedGraph::set(graph.m_pY, vValue); };
        setAhead(graph, vValue);
        const double dValue = *vValue.begin();
        EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2 * dValue + fromZ(dValue)})) << iFrame;
        EXPECT_TRUE(graph.m_pOfY->isValid());
    }
    graph.m_pHost->m_OnCalculation = nullptr;
    CountedGraph::set(graph.m_pY, graph.m_vThree);
    EXPECT_FALSE(graph.m_pTop->isValid());
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2 + 3 + fromZ(2)}));
}

TEST_P(HostOnTheWayTest, NodeThatIsInvalidatedIsComputedAgainAndReachesItsReaders) {
    GraphWithAHost graph;
    for (int iFrame = 0; iFrame != 12; ++iFrame) {
        const DoubleVector& vValue = iFrame % 2 == 0 ? graph.m_vOne : graph.m_vTwo;
        graph.m_pHost->m_OnCalculation = [&] { graph.m_pOfY->invalidate(); };
        setAhead(graph, vValue);
        const double dValue = *vValue.begin();
        EXPECT_EQ(evaluated(*graph.m_pTop), (Values{dValue + 1 + fromZ(dValue)})) << iFrame;
        EXPECT_TRUE(graph.m_pOfY->isValid());
    }
    graph.m_pHost->m_OnCalculation = nullptr;
    CountedGraph::set(graph.m_pY, graph.m_vThree);
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2 + 3 + fromZ(2)}));
}

TEST_P(HostOnTheWayTest, ArgumentThatOperatorsReadPastIsEvaluatedLikeTheRest) {
    GraphWithAHost graph;
    setAhead(graph, graph.m_vTwo);
    evaluated(*graph.m_pTop);
    graph.m_pHost->m_OnCalculation = [&] { evaluated(*argument(*graph.m_pSum, 1)); };
    for (int iFrame = 0; iFrame != 4; ++iFrame) {
        const DoubleVector& vValue = iFrame % 2 == 0 ? graph.m_vOne : graph.m_vTwo;
        setAhead(graph, vValue);
        CountedGraph::set(graph.m_pY, vValue);
        const double dValue = *vValue.begin();
        EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2 * dValue + fromZ(dValue)})) << iFrame;
    }
}

TEST_P(HostOnTheWayTest, GraphThatIsSealedAnewIsComputedToTheEnd) {
    GraphWithAHost graph;
    bool bSeals = false;
    graph.m_pHost->m_OnCalculation = [&] {
        if (std::exchange(bSeals, false)) {
            graph.m_pTop->seal();
        }
    };
    for (int iFrame = 0; iFrame != 8; ++iFrame) {
        bSeals = iFrame % 2 != 0;
        const DoubleVector& vValue = iFrame % 4 < 2 ? graph.m_vOne : graph.m_vTwo;
        setAhead(graph, vValue);
        const double dValue = *vValue.begin();
        EXPECT_EQ(evaluated(*graph.m_pTop), (Values{dValue + 1 + fromZ(dValue)})) << iFrame;
        EXPECT_FALSE(bSeals);
    }
}

INSTANTIATE_TEST_SUITE_P(, HostOnTheWayTest, testing::Bool());

/// A host's function that makes its argument longer.
class FunctionPad : public SingleVariableFunctionImpl,
                    public NoParamFunctionImpl,
                    public NoMemoryFunctionImpl {
public:
    FunctionPad() : SingleVariableFunctionImpl("pad", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        DoubleVector& vArgument = *in_ArgNameToDomain.begin()->second;
        while (vArgument.size() < 1000) {
            vArgument.push_back(0.0);
        }
        out.push_back(*vArgument.begin());
        return true;
    }
};

TEST_F(SealedPlanGraphTest, ArgumentsThatAFunctionOfTheHostChangesAreComputedAnew) {
    const auto pX = variable("x");
    const DoubleVector vOne{1.0}, vTwo{2.0};
    CountedGraph::set(pX, vOne);
    const Node pDouble(binary<OperatorMultiply>(Node(pX), Node(constant({2.0}))));
    const Handle<UserFunctionImpl<FunctionPad>> pPad(new UserFunctionImpl<FunctionPad>);
    bind(*pPad, 0, pDouble);
    const Node pLonger(binary<OperatorMultiply>(pDouble, Node(constant({3.0}))));
    const Handle<OperatorConcatenate> pTop(new OperatorConcatenate);
    bindAll(*pTop, {Node(pPad), pLonger});
    pTop->seal();
    for (int iFrame = 0; iFrame != 8; ++iFrame) {
        const DoubleVector& vX = iFrame % 2 == 0 ? vOne : vTwo;
        CountedGraph::set(pX, vX);
        const Values vResult = evaluated(*pTop);
        ASSERT_EQ(vResult.size(), 1001U) << iFrame;
        EXPECT_EQ(vResult[0], 2 * vX[0]) << iFrame;
        EXPECT_EQ(vResult[1], 6 * vX[0]) << iFrame;
        EXPECT_EQ(vResult[2], 0.0) << iFrame;
    }
}

/// A host's node that may succeed without a value.
class NodeWithoutValue : public UserFunctionImpl<FunctionPad> {
public:
    bool m_bHasValue = true;

protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        const bool bSuccess = UserFunctionImpl::evaluate_i(out);
        if (!m_bHasValue) {
            out = nullptr;
        }
        return bSuccess;
    }
};

/// A concatenation of such a node and an operator, and another feature of the same plan.
struct GraphWithoutAValue {
    GraphWithoutAValue() {
        CountedGraph::set(m_pX, m_vOne);
        bind(*m_pHost, 0, Node(constant({1.0, 2.0})));
        bindAll(*m_pTop, {Node(m_pHost), Node(m_pBehind)});
        Dictionnary dictionnary("in");
        dictionnary.add(Handle<Expression>(variable("top", Node(m_pTop))), false);
        dictionnary.add(Handle<Expression>(variable("other", m_pOther)), false);
        Optimizer().sealExpressions(dictionnary);
    }

    /// Is the operator computed, and the concatenation, in a frame of the host's node?
    bool evaluate(int in_iFrame) {
        CountedGraph::set(m_pX, in_iFrame % 2 == 0 ? m_vOne : m_vTwo);
        m_pBehind->m_uiCalculations = 0;
        LimitedObjPtr<DoubleVector> pValue;
        const bool bEvaluated = m_pTop->evaluate(pValue);
        EXPECT_EQ(m_pBehind->m_uiCalculations, bEvaluated ? 1U : 0U) << in_iFrame;
        EXPECT_TRUE(m_pOther->evaluate(pValue));
        return bEvaluated;
    }

    const DoubleVector m_vOne{1.0};
    const DoubleVector m_vTwo{2.0};
    const Handle<VariableImpl> m_pX = variable("x");
    const Handle<NodeWithoutValue> m_pHost{new NodeWithoutValue};
    const Handle<RecordingBinary> m_pBehind =
        CountedGraph::operatorOver(Node(m_pX), Node(constant({0.0})));
    const Handle<OperatorConcatenate> m_pTop{new OperatorConcatenate};
    const Node m_pOther{binary<OperatorPlus>(Node(m_pX), Node(constant({1.0})))};
};

TEST_F(SealedPlanGraphTest, NothingIsComputedBehindAPartWithoutAValue) {
    GraphWithoutAValue graph;
    for (int iFrame = 0; iFrame != 12; ++iFrame) {
        graph.m_pHost->invalidate();
        graph.m_pHost->m_bHasValue = iFrame % 6 != 5;
        EXPECT_EQ(graph.evaluate(iFrame), graph.m_pHost->m_bHasValue) << iFrame;
        EXPECT_EQ(takeErrors().size(), graph.m_pHost->m_bHasValue ? 0U : 1U) << iFrame;
    }
}

TEST_F(SealedPlanGraphTest, NothingIsComputedBehindAPartThatStaysWithoutAValue) {
    GraphWithoutAValue graph;
    for (int iFrame = 0; iFrame != 12; ++iFrame) {
        if (iFrame == 4 || iFrame == 10) {
            graph.m_pHost->m_bHasValue = iFrame == 10;
            graph.m_pHost->invalidate();
        }
        EXPECT_EQ(graph.evaluate(iFrame), graph.m_pHost->m_bHasValue) << iFrame;
        EXPECT_EQ(takeErrors().size(), graph.m_pHost->m_bHasValue ? 0U : 1U) << iFrame;
    }
}

TEST_F(SealedPlanGraphTest, FailingNodeIsTriedForEachReader) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    graph.takeCounts();
    graph.m_pShared->m_bCalculates = false;
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    // Left reads it once and right twice, and what they read is what it has written.
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2, 0, 5, 2, 0, 2, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{3, 1, 1, 1}));
    EXPECT_FALSE(graph.m_pShared->isValid());
    EXPECT_TRUE(graph.m_pTop->isValid());
}

TEST_F(SealedPlanGraphTest, ChangeStopsAtANodeThatHasFailedAndReachesItsReadersByOtherWays) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    graph.m_pShared->m_bCalculates = false;
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    evaluated(*graph.m_pTop);
    graph.m_pShared->m_bCalculates = true;
    graph.takeCounts();
    CountedGraph::set(graph.m_pX, graph.m_vX);
    EXPECT_TRUE(graph.m_pTop->isValid());
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2, 0, 5, 2, 0, 2, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 0, 0, 0}));
    CountedGraph::set(graph.m_pY, graph.m_vX);
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{1, 0, 1, 2, 0, 2, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 0, 1}));
}

TEST_F(SealedPlanGraphTest, FramesBehindAFailureAreComputedOnceEachAgain) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    graph.m_pLeft->m_bCalculates = false;
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    evaluated(*graph.m_pTop);
    graph.m_pLeft->m_bCalculates = true;
    graph.takeCounts();
    for (int iFrame = 0; iFrame != 20; ++iFrame) {
        CountedGraph::set(graph.m_pX, iFrame % 2 == 0 ? graph.m_vX : graph.m_vNextX);
        EXPECT_EQ(evaluated(*graph.m_pTop).front(), iFrame % 2 == 0 ? 1.0 : 2.0);
        EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 1, 1})) << iFrame;
    }
}

TEST_F(SealedPlanGraphTest, ReaderThatDiesLeavesTheOthersInWorkingOrder) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    graph.m_pTop = CountedGraph::operatorOver(Node(graph.m_pLeft), Node(graph.m_pLeft));
    graph.m_pRight = CountedGraph::operatorOver(Node(graph.m_pX), Node(graph.m_pX));
    graph.takeCounts();
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    EXPECT_EQ(evaluated(*graph.m_pLeft), (Values{2, 0, 5}));
    EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 0, 0}));
    graph.m_pTop->seal();
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2, 0, 5, 2, 0, 5}));
    CountedGraph::set(graph.m_pX, graph.m_vX);
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{1, 0, 5, 1, 0, 5}));
}

TEST_F(SealedPlanGraphTest, ChangeReachesReadersThatWereSealedApart) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    const Handle<RecordingBinary> pOther =
        CountedGraph::operatorOver(Node(graph.m_pLeft), Node(graph.m_pY));
    pOther->seal();
    EXPECT_EQ(evaluated(*pOther), (Values{1, 0, 5, 5}));
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{1, 0, 5, 1, 0, 1, 0}));
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    EXPECT_FALSE(graph.m_pTop->isValid());
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{2, 0, 5, 2, 0, 2, 0}));
    EXPECT_EQ(evaluated(*pOther), (Values{2, 0, 5, 5}));
}

TEST_F(SealedPlanGraphTest, VariableThatIsBoundAnewHasItsNewValueFromThenOn) {
    const DoubleVector vSeven{7.0};
    for (const int iKind : {0, 1, 2}) {
        CountedGraph graph;
        const Handle<VariableImpl> pRoot = variable("root", Node(graph.m_pTop));
        pRoot->seal();
        EXPECT_EQ(evaluated(*pRoot), (Values{1, 0, 5, 1, 0, 1, 0}));
        Variable& interface = *pRoot;
        // A node of the same plan, one of none, and a vector.
        ASSERT_TRUE(iKind == 0   ? interface.setValue(Handle<Expression>(Node(graph.m_pLeft)))
                    : iKind == 1 ? interface.setValue(Handle<Expression>(Node(constant({7.0}))))
                                 : interface.setValue(vSeven));
        EXPECT_EQ(evaluated(*pRoot), iKind == 0 ? (Values{1, 0, 5}) : (Values{7})) << iKind;
        pRoot->seal();
        CountedGraph::set(graph.m_pX, graph.m_vNextX);
        EXPECT_EQ(evaluated(*pRoot), iKind == 0 ? (Values{2, 0, 5}) : (Values{7})) << iKind;
    }
}

TEST_F(SealedPlanGraphTest, ParentThatAHostTakesOutIsNotToldOfAChange) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    ASSERT_TRUE(graph.m_pShared->removeParent(graph.m_pLeft.get()));
    CountedGraph::set(graph.m_pX, graph.m_vNextX);
    EXPECT_TRUE(graph.m_pLeft->isValid());
    EXPECT_EQ(evaluated(*graph.m_pTop), (Values{1, 0, 5, 2, 0, 2, 0}));
    graph.m_pShared->addParent(graph.m_pLeft.get());
}

TEST_F(SealedPlanGraphTest, OperatorWhoseArgumentWasReplacedFollowsWhatItReads) {
    const DoubleVector vOne{1.0}, vTwo{2.0}, vFive{5.0};
    const Handle<VariableImpl> pX = variable("x");
    const Handle<VariableImpl> pY = variable("y");
    CountedGraph::set(pX, vOne);
    CountedGraph::set(pY, vFive);
    const Handle<OperatorPlus> pSum = Testing::binary(Node(pX), Node(pY));
    // From here on it holds the argument itself.
    ASSERT_FALSE(pSum->getLeftArgument().isNull());
    pSum->addArgument("Left");
    pSum->seal();
    EXPECT_EQ(evaluated(*pSum), (Values{6}));
    CountedGraph::set(pX, vTwo);
    EXPECT_FALSE(pSum->isValid());
    EXPECT_EQ(evaluated(*pSum), (Values{7}));
}

TEST_F(SealedPlanGraphTest, ArgumentThatABuiltInDoesNotReadIsNotEvaluated) {
    const Handle<Expression> pCreated(Registry::getInstance().newExpression("sum"));
    const Handle<FunctionBaseImpl> pSum(pCreated);
    const DoubleVector vPair{1.0, 2.0}, vNext{3.0, 4.0};
    const Handle<VariableImpl> pInput = variable("x");
    CountedGraph::set(pInput, vPair);
    bind(*pSum, 0, Node(pInput));
    pSum->addArgument("extra");
    pSum->seal();
    const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
    EXPECT_EQ(evaluated(*pSum), (Values{3}));
    CountedGraph::set(pInput, vNext);
    EXPECT_EQ(evaluated(*pSum), (Values{7}));
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL), 0u);
}

TEST_F(SealedPlanGraphTest, BranchThatIsNotChosenIsNotComputed) {
    CountedGraph graph;
    const DoubleVector vOff{0.0}, vOn{1.0};
    const Handle<VariableImpl> pChoice = variable("choice");
    CountedGraph::set(pChoice, vOn);
    const Handle<OperatorIf> pIf(new OperatorIf);
    bindAll(*pIf, {Node(pChoice), Node(graph.m_pLeft), Node(graph.m_pRight)});
    pIf->seal();
    EXPECT_EQ(evaluated(*pIf), (Values{1, 0, 5}));
    EXPECT_EQ(graph.takeCounts(), (Counts{1, 1, 0, 0}));
    CountedGraph::set(pChoice, vOff);
    EXPECT_EQ(evaluated(*pIf), (Values{1, 0, 1, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 0, 1, 0}));
    CountedGraph::set(graph.m_pY, graph.m_vX);
    EXPECT_EQ(evaluated(*pIf), (Values{1, 0, 1, 0}));
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 0, 0, 0}));
}

TEST_F(SealedPlanGraphTest, CopyHasAWayOfItsOwn) {
    CountedGraph graph;
    evaluated(*graph.m_pTop);
    const Handle<RecordingBinary> pCopy(graph.m_pTop->copy());
    pCopy->seal();
    graph.takeCounts();
    EXPECT_EQ(evaluated(*pCopy), (Values{1, 0, 5, 1, 0, 1, 0}));
    EXPECT_EQ(pCopy->m_uiCalculations, 1u);
    EXPECT_EQ(graph.takeCounts(), (Counts{0, 0, 0, 0}));
    pCopy->invalidate();
    EXPECT_TRUE(graph.m_pTop->isValid());
}

} // namespace
