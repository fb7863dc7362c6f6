// Classes of a host's that derive from nodes of the library and evaluate less than these.

#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/GraphTest.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

/// Counts its calculations, as a function with memory does.
class CountingOperator : public BinaryOperatorImpl<CountingOperator> {
public:
    CountingOperator() : BinaryOperatorImpl("count") {}

    bool calculate(const DoubleVector&, const DoubleVector& in_Right, DoubleVector& out) override {
        ++m_iCalculations;
        out = in_Right;
        return true;
    }

    int m_iCalculations = 0;
};

/// Has a value of its own as long as it is closed.
template <class Base>
class Gate : public Base {
public:
    using Base::Base;

    bool m_bOpen = false;

protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        if (m_bOpen) {
            return Base::evaluate_i(out);
        }
        out = &m_vClosed;
        return true;
    }

private:
    DoubleVector m_vClosed{0.0};
};

class FirstInput : public OperatorConcatenate {
public:
    bool calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                   DoubleVector& out) override {
        return inout_vInputs.front()->evaluate(out);
    }
};

class DerivedNodeTest : public GraphTest {
protected:
    /// An operator over an input on both sides.
    struct Graph {
        Graph() {
            Variable& input = *m_pInput;
            input.setValue(m_vFrames[0]);
            m_pOperator->getLeftArgument()->setValue(Handle<Expression>(m_pInput));
            m_pOperator->getRightArgument()->setValue(Handle<Expression>(m_pInput));
        }

        const DoubleVector m_vFrames[2] = {DoubleVector{1.0}, DoubleVector{2.0}};
        const Handle<VariableImpl> m_pInput{new VariableImpl};
        const Handle<CountingOperator> m_pOperator{new CountingOperator};
    };

    /// The values in frames that are alike, so that a program would be made.
    static std::vector<Values> evaluateFrames(const Graph& in_Graph,
                                              ExpressionBaseImpl& inout_Root) {
        std::vector<Values> vValues;
        Variable& input = *in_Graph.m_pInput;
        for (int iFrame = 0; iFrame != 6; ++iFrame) {
            input.setValue(in_Graph.m_vFrames[iFrame % 2]);
            inout_Root.invalidate();
            vValues.push_back(evaluated(inout_Root));
        }
        return vValues;
    }

    template <class Node>
    static void expectClosedGateToComputeNothing(const Graph& in_Graph,
                                                 const Handle<Node>& in_pGate) {
        in_pGate->seal();
        EXPECT_EQ(evaluateFrames(in_Graph, *in_pGate), std::vector<Values>(6, Values{0.0}));
        EXPECT_EQ(in_Graph.m_pOperator->m_iCalculations, 0);
        EXPECT_FALSE(in_Graph.m_pOperator->isValid());
        in_pGate->m_bOpen = true;
        EXPECT_EQ(evaluateFrames(in_Graph, *in_pGate).back(), Values{2.0});
        EXPECT_EQ(in_Graph.m_pOperator->m_iCalculations, 6);
    }
};

TEST_F(DerivedNodeTest, VariableThatDoesNotReadItsValueHasItNotComputed) {
    const Graph graph;
    const Handle<Gate<VariableImpl>> pGate(new Gate<VariableImpl>);
    Variable& gate = *pGate;
    gate.setValue(Handle<Expression>(graph.m_pOperator));
    expectClosedGateToComputeNothing(graph, pGate);
}

TEST_F(DerivedNodeTest, ScriptFunctionThatDoesNotReadItsBodyHasItNotComputed) {
    const Graph graph;
    const Handle<Gate<ScriptFunctionImpl>> pGate(new Gate<ScriptFunctionImpl>("gate"));
    pGate->setImplementation(Handle<Expression>(graph.m_pOperator));
    expectClosedGateToComputeNothing(graph, pGate);
}

TEST_F(DerivedNodeTest, ConcatenationThatReadsOnePartHasTheOthersNotComputed) {
    const Graph graph;
    const Handle<FirstInput> pFirst(new FirstInput);
    pFirst->addArgument("a");
    pFirst->addArgument("b");
    pFirst->getArgument(std::size_t(0))->setValue(Handle<Expression>(graph.m_pInput));
    pFirst->getArgument(1)->setValue(Handle<Expression>(graph.m_pOperator));
    pFirst->seal();
    EXPECT_EQ(evaluateFrames(graph, *pFirst).back(), Values{2.0});
    EXPECT_EQ(graph.m_pOperator->m_iCalculations, 0);
    EXPECT_FALSE(graph.m_pOperator->isValid());
}

} // namespace

} // namespace Velmora::Math::Xpr
