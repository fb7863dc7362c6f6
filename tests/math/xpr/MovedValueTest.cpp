// A node of the host's may be evaluated once more in the middle of a frame, and hand out something
// else then. What has read it before keeps what it has got, sealed or not.

#include <array>
#include <functional>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/OptimizerGraphs.h"
#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

using Testing::argument;
using Testing::bind;
using Testing::evaluated;
using Testing::variable;
using Node = Handle<ExpressionBaseImpl>;
using Values = std::vector<double>;

/// Hands out {1, 2} and {10, 20} in turn, in one vector or in two.
class MovingNode : public Testing::RecordingNode {
public:
    explicit MovingNode(bool in_bInPlace) : m_bInPlace(in_bInPlace) {}

    void restart() { m_uiNext = 0; }

protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        DoubleVector& vValue = m_Values[m_bInPlace ? 0 : m_uiNext];
        vValue = m_uiNext == 0 ? DoubleVector{1.0, 2.0} : DoubleVector{10.0, 20.0};
        m_uiNext = 1 - m_uiNext;
        out = &vValue;
        return true;
    }

    bool getSealedInputs(std::vector<ExpressionBaseImpl*>&) const override { return true; }

private:
    bool m_bInPlace;
    std::size_t m_uiNext = 0;
    std::array<DoubleVector, 2> m_Values;
};

/// A sum that computes itself.
class FunctionTotal : public SingleVariableFunctionImpl,
                      public NoParamFunctionImpl,
                      public NoMemoryFunctionImpl {
public:
    FunctionTotal() : SingleVariableFunctionImpl("total", "x") {}

    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector& vX = *firstArgument(in_ArgNameToDomain);
        out.push_back(std::accumulate(vX.begin(), vX.end(), 0.0));
        return true;
    }
};

/// One that is left to a reduction.
class FunctionReducing : public FunctionTotal {
public:
    static Reductions::Kind reductionOf(const FunctionReducing&) { return Reductions::Kind::Sum; }
};

/// An operator of the host's, and the total of what the node hands out, side by side.
template <class F>
class MovedValues {
public:
    MovedValues(bool in_bInPlace, bool in_bSealed)
        : m_pNode(new MovingNode(in_bInPlace)),
          m_pValue(variable("value", Node(m_pNode))),
          m_pTotal(new UserFunctionImpl<F>) {
        bind(*m_pTotal, 0, Node(m_pValue));
        Testing::bindAll(*m_pTop, {Node(m_pHost), Node(m_pTotal)});
        setInput();
        if (in_bSealed) {
            m_pTop->seal();
        }
        for (int iFrame = 0; iFrame != 6; ++iFrame) {
            computeFrame();
        }
    }

    /// The total of a frame in which the host evaluates that on the way, and the node once more.
    double computeFrameBehind(ExpressionBaseImpl& inout_Read) {
        m_pHost->m_OnCalculation = [&] {
            evaluated(inout_Read);
            LimitedObjPtr<DoubleVector> pValue;
            EXPECT_TRUE(m_pNode->doEvaluate(pValue));
            EXPECT_EQ(*pValue->begin(), 10.0);
        };
        const double dTotal = computeFrame();
        m_pHost->m_OnCalculation = nullptr;
        return dTotal;
    }

    ExpressionBaseImpl& getTotal() { return *m_pTotal; }
    ExpressionBaseImpl& getArgument() { return *argument(*m_pTotal, 0); }

private:
    void setInput() { static_cast<Variable&>(*m_pX).setValue(m_vOne); }

    double computeFrame() {
        setInput();
        m_pNode->restart();
        m_pNode->invalidate();
        return evaluated(*m_pTop).back();
    }

    const DoubleVector m_vOne{1.0};
    const Handle<VariableImpl> m_pX = variable("x");
    const Handle<Testing::RecordingBinary> m_pHost =
        Testing::binary<Testing::RecordingBinary>(Node(m_pX), Node(m_pX));
    const Handle<MovingNode> m_pNode;
    const Handle<VariableImpl> m_pValue;
    const Handle<UserFunctionImpl<F>> m_pTotal;
    const Handle<OperatorConcatenate> m_pTop{new OperatorConcatenate};
};

class MovedValueTest : public Testing::GraphTest, public testing::WithParamInterface<bool> {};

TEST_P(MovedValueTest, TotalThatIsReducedStays) {
    for (const bool bInPlace : {false, true}) {
        MovedValues<FunctionReducing> values(bInPlace, GetParam());
        EXPECT_EQ(values.computeFrameBehind(values.getTotal()), 3.0) << bInPlace;
    }
}

TEST_P(MovedValueTest, ReductionReadsWhatItsArgumentHas) {
    MovedValues<FunctionReducing> values(false, GetParam());
    EXPECT_EQ(values.computeFrameBehind(values.getArgument()), 3.0);
}

TEST_P(MovedValueTest, FunctionReadsWhatItsArgumentHas) {
    MovedValues<FunctionTotal> values(false, GetParam());
    EXPECT_EQ(values.computeFrameBehind(values.getArgument()), 3.0);
}

INSTANTIATE_TEST_SUITE_P(, MovedValueTest, testing::Bool());

} // namespace
