// Whoever owns parts of a graph may die in any order, and a host goes on using the nodes that it
// has kept: nobody follows a link to what is dead, nothing is left, and the values are those of a
// graph of which nobody has died.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "robustness/Allocations.h"
#include "robustness/EveryCase.h"
#include "robustness/GraphOwners.h"
#include "support/AssertionCapture.h"

namespace Velmora::Testing {

namespace {

using Order = std::vector<Step>;

constexpr std::size_t MaxSteps = 5;

/// Of the orders of more than one step, an ordinary run takes one in so many.
constexpr std::size_t Stride = 499;

std::string textOf(const Order& in_vOrder) {
    std::string strText;
    for (const Step eStep : in_vOrder) {
        strText += strText.empty() ? "" : ", ";
        strText += GraphOwners::nameOf(eStep);
    }
    return strText;
}

/// All orders of that many different steps that begin with these.
template <class F>
void forEachOrder(Order& inout_vOrder, std::size_t in_uiSteps, std::size_t in_uiKinds,
                  const F& in_Function) {
    if (inout_vOrder.size() == in_uiSteps) {
        in_Function(inout_vOrder);
        return;
    }
    for (std::size_t uiKind = 0; uiKind != in_uiKinds; ++uiKind) {
        const auto eStep = static_cast<Step>(uiKind);
        if (std::find(inout_vOrder.begin(), inout_vOrder.end(), eStep) == inout_vOrder.end()) {
            inout_vOrder.push_back(eStep);
            forEachOrder(inout_vOrder, in_uiSteps, in_uiKinds, in_Function);
            inout_vOrder.pop_back();
        }
    }
}

class DestructionOrdersTest : public testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        // What lives for ever from its first use on.
        m_uiNodes = GraphOwners::countNodes(GetParam());
        valuesBehind({}, true, 0, GraphOwners::Destruction::Real);
    }

    std::vector<double> valuesBehind(const Order& in_vOrder, bool in_bUseBetween,
                                     std::size_t in_uiKept, GraphOwners::Destruction in_eHow) {
        GraphOwners owners(GetParam(), in_uiKept, in_eHow);
        const auto use = [&owners] {
            for (const Step eUse : {Step::Evaluate, Step::SetInput, Step::Evaluate, Step::SetKept,
                                    Step::Evaluate, Step::DumpAndInvalidate, Step::Evaluate}) {
                owners.run(eUse);
            }
        };
        for (const Step eStep : in_vOrder) {
            owners.run(eStep);
            if (in_bUseBetween) {
                use();
            }
        }
        use();
        return owners.getValues();
    }

    /// Whether an order leaves the values and the memory as they have to be.
    testing::AssertionResult isSafe(const Order& in_vOrder, bool in_bUseBetween,
                                    std::size_t in_uiKept) {
        ++m_uiOrders;
        const std::size_t uiLiveBlocks = Allocations::getLiveBlocks();
        const auto problem = [&](const char* in_szWhat) {
            return testing::AssertionFailure() << in_szWhat << " behind: " << textOf(in_vOrder)
                                               << "; kept node " << in_uiKept % m_uiNodes;
        };
        if (valuesBehind(in_vOrder, in_bUseBetween, in_uiKept, GraphOwners::Destruction::Real) !=
            valuesBehind(in_vOrder, in_bUseBetween, in_uiKept, GraphOwners::Destruction::Noted)) {
            return problem("other values");
        }
        if (m_Assertions.count() != 0) {
            return problem(m_Assertions.expressions().front().c_str());
        }
        if (Allocations::getLiveBlocks() != uiLiveBlocks) {
            return problem("blocks are left");
        }
        return testing::AssertionSuccess();
    }

    /// Calls the function with all orders of up to `MaxSteps` steps, or with some of them.
    template <class F>
    void forOrders(std::size_t in_uiKinds, const F& in_Function) {
        std::size_t uiOrder = 0;
        for (std::size_t uiSteps = 1; uiSteps <= MaxSteps; ++uiSteps) {
            Order vOrder;
            forEachOrder(vOrder, uiSteps, in_uiKinds, [&](const Order& in_vOrder) {
                const std::size_t uiStride = isEveryCaseAsked() || uiSteps == 1 ? 1 : Stride;
                if (uiOrder++ % uiStride == 0 && !HasFailure()) {
                    in_Function(in_vOrder);
                }
            });
        }
        if (isEveryCaseAsked()) {
            std::printf("%zu orders, %zu nodes\n", m_uiOrders, m_uiNodes);
        }
    }

    AssertionCapture m_Assertions;
    std::size_t m_uiNodes = 0;
    std::size_t m_uiOrders = 0;
};

INSTANTIATE_TEST_SUITE_P(Linked, DestructionOrdersTest, testing::Values(false));
INSTANTIATE_TEST_SUITE_P(Optimized, DestructionOrdersTest, testing::Values(true));

TEST_P(DestructionOrdersTest, NodesOutliveTheirOwnersInEveryOrder) {
    forOrders(DestructionCount, [&](const Order& in_vOrder) {
        // The nodes take turns, and each has been kept behind every single destruction.
        const std::size_t uiNodes = in_vOrder.size() == 1 && isEveryCaseAsked() ? m_uiNodes : 1;
        for (std::size_t uiNode = 0; uiNode != uiNodes; ++uiNode) {
            EXPECT_TRUE(isSafe(in_vOrder, true, m_uiOrders));
        }
    });
}

TEST_P(DestructionOrdersTest, UsesAndDestructionsMixInEveryOrder) {
    forOrders(StepCount,
              [&](const Order& in_vOrder) { EXPECT_TRUE(isSafe(in_vOrder, false, m_uiOrders)); });
}

} // namespace

} // namespace Velmora::Testing
