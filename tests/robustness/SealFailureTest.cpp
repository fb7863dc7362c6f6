// Memory may run out while a graph of more paths than can be walked is sealed: some of its nodes
// are sealed then, and none has a plan. Values follow the inputs all the same, and the graph can be
// sealed later.

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <new>

#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "robustness/Allocations.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {

namespace {

using Math::DoubleVector;
using namespace Math::Xpr;

/// x, each line twice the one before.
class DoublingGraph {
public:
    static constexpr int Lines = 40;

    DoublingGraph() {
        set(m_vOne);
        Handle<Expression> pLast(m_pX);
        for (int iLine = 0; iLine != Lines; ++iLine) {
            m_pLast = Handle<OperatorPlus>(new OperatorPlus);
            const Function& function = *m_pLast;
            function.getArgument(std::size_t(0))->setValue(pLast);
            function.getArgument(1)->setValue(pLast);
            pLast = Handle<Expression>(m_pLast);
        }
    }

    void setOne() { set(m_vOne); }
    void setThree() { set(m_vThree); }

    ExpressionBaseImpl& getLast() { return *m_pLast; }

    /// How often x is in the value; 0 for no value.
    double evaluate() {
        DoubleVector vResult;
        return m_pLast->evaluate(vResult) ? std::ldexp(vResult[0], -Lines) : 0.0;
    }

private:
    void set(const DoubleVector& in_vValue) {
        Variable& variable = *m_pX;
        variable.setValue(in_vValue);
    }

    const DoubleVector m_vOne{1.0};
    const DoubleVector m_vThree{3.0};
    const Handle<VariableImpl> m_pX{new VariableImpl};
    Handle<OperatorPlus> m_pLast;
};

/// Whether memory ran out.
bool sealWith(ExpressionBaseImpl& inout_Root, std::size_t in_uiAllocations) {
    Allocations::failBehind(in_uiAllocations);
    bool bThrown = false;
    try {
        inout_Root.seal();
    } catch (const std::bad_alloc&) {
        bThrown = true;
    }
    Allocations::stopFailing();
    EXPECT_EQ(bThrown, Allocations::hasFailed()) << in_uiAllocations;
    return bThrown;
}

TEST(SealFailureTest, GraphThatIsSealedInPartsFollowsItsInputs) {
    const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
    std::size_t uiAllocations = 0;
    for (bool bFailed = true; bFailed; ++uiAllocations) {
        DoublingGraph graph;
        EXPECT_EQ(graph.evaluate(), 1.0);
        bFailed = sealWith(graph.getLast(), uiAllocations);
        graph.setThree();
        EXPECT_FALSE(graph.getLast().isValid()) << uiAllocations;
        // A node that lacks what it reads says so.
        const double dThree = graph.evaluate();
        EXPECT_TRUE(dThree == 3.0 || (bFailed && dThree == 0.0)) << dThree << ' ' << uiAllocations;
        graph.getLast().seal();
        graph.setOne();
        EXPECT_EQ(graph.evaluate(), 1.0) << uiAllocations;
        graph.setThree();
        EXPECT_EQ(graph.evaluate(), 3.0) << uiAllocations;
    }
    EXPECT_GT(uiAllocations, 20U);
}

} // namespace

} // namespace Velmora::Testing
