#include "math/xpr/src/GraphWalk.h"

#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include <cmath>
#include <limits>

#include "math/xpr/src/ExpressionComplexity.h"
#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class GraphWalkTest : public GraphTest {
protected:
    Handle<RecordingNode> node(const char* in_szName = "node") {
        return Handle<RecordingNode>(new RecordingNode(in_szName, &m_vCalls));
    }

    static void add(RecordingNode& inout_Parent, const Handle<RecordingNode>& in_pChild) {
        inout_Parent.addChild(Handle<ExpressionBaseImpl>(in_pChild), true);
    }

    static Nodes collected(GraphWalk& inout_Walk, ExpressionBaseImpl& in_Root) {
        const auto vNodes = inout_Walk.collect(in_Root);
        return Nodes(vNodes.begin(), vNodes.end());
    }

    /// A variable over x0 = input, xi = x(i-1) + x(i-1), so that 2 to the power of the doublings
    /// paths lead down.
    static Handle<VariableImpl> doubled(const Handle<VariableImpl>& in_pInput, int in_iDoublings) {
        Handle<VariableImpl> pTop(in_pInput);
        for (int i = 0; i < in_iDoublings; ++i) {
            const Handle<OperatorPlus> pSum(new OperatorPlus);
            pSum->getLeftArgument()->setValue(Handle<Expression>(pTop));
            pSum->getRightArgument()->setValue(Handle<Expression>(pTop));
            pTop = Handle<VariableImpl>(new VariableImpl);
            Variable& variable = *pTop;
            variable.setValue(Handle<Expression>(pSum));
        }
        return pTop;
    }

    /// A chain of that many recording nodes, the root first.
    std::vector<Handle<RecordingNode>> chain(std::size_t in_uiLength) {
        std::vector<Handle<RecordingNode>> vNodes(in_uiLength);
        for (std::size_t ui = in_uiLength; ui-- > 0;) {
            vNodes[ui] = Handle<RecordingNode>(new RecordingNode);
            vNodes[ui]->m_bReadsChildren = true;
            if (ui + 1 != in_uiLength) {
                add(*vNodes[ui], vNodes[ui + 1]);
            }
        }
        return vNodes;
    }

    Calls m_vCalls;
};

TEST_F(GraphWalkTest, EveryNodeComesOnceBehindAllOfItsParents) {
    const auto pTop = node();
    const auto pLeft = node();
    const auto pRight = node();
    const auto pShared = node();
    add(*pTop, pLeft);
    add(*pTop, pShared);
    add(*pTop, pRight);
    add(*pLeft, pShared);
    add(*pRight, pShared);
    GraphWalk walk;
    EXPECT_EQ(collected(walk, *pTop),
              (Nodes{pTop.get(), pLeft.get(), pRight.get(), pShared.get()}));
}

TEST_F(GraphWalkTest, ThePathsFromSeveralRootsAreAsManyInEitherOrder) {
    // Longer than what is looked at to tell from which end to count.
    const auto vChain = chain(300);
    EXPECT_TRUE(GraphWalk::isShort({vChain.front().get(), vChain.back().get()}));
    EXPECT_TRUE(GraphWalk::isShort({vChain.back().get(), vChain.front().get()}));
    const auto pInput = Handle<VariableImpl>(new VariableImpl);
    const auto pTop = doubled(pInput, 40);
    EXPECT_FALSE(GraphWalk::isShort({pTop.get(), pInput.get()}));
    EXPECT_FALSE(GraphWalk::isShort({pInput.get(), pTop.get()}));
}

TEST_F(GraphWalkTest, LaterCallsGiveWhatIsNew) {
    const auto pFirst = node();
    const auto pSecond = node();
    const auto pShared = node();
    add(*pFirst, pShared);
    add(*pSecond, pShared);
    GraphWalk walk;
    EXPECT_EQ(collected(walk, *pFirst), (Nodes{pFirst.get(), pShared.get()}));
    EXPECT_EQ(collected(walk, *pSecond), Nodes{pSecond.get()});
    EXPECT_EQ(collected(walk, *pSecond), Nodes());
}

TEST_F(GraphWalkTest, WalkIsShortUpToTheLimitOfVisits) {
    // The top, 255 nodes below it and 256 visits of the leaf below each of them.
    ASSERT_EQ(ExpressionBaseImpl::MaxVisitsPerWalk, 65536u);
    const auto pTop = node();
    const auto pLeaf = node();
    for (int i = 0; i < 255; ++i) {
        const auto pMiddle = node();
        add(*pTop, pMiddle);
        for (int j = 0; j < 256; ++j) {
            pMiddle->addChild(Handle<ExpressionBaseImpl>(pLeaf), false);
        }
    }
    EXPECT_TRUE(GraphWalk::isShort(*pTop));
    EXPECT_TRUE(GraphWalk::isShort({pTop.get()}));
    EXPECT_FALSE(GraphWalk::isShort({pTop.get(), pLeaf.get()}));
    pTop->addChild(Handle<ExpressionBaseImpl>(pLeaf), false);
    EXPECT_FALSE(GraphWalk::isShort(*pTop));
}

TEST_F(GraphWalkTest, OnlyTheOutermostWalkOnAThreadIsOutermost) {
    const GraphWalk::Outermost outer;
    EXPECT_TRUE(bool(outer));
    {
        const GraphWalk::Outermost inner;
        EXPECT_FALSE(bool(inner));
    }
    const GraphWalk::Outermost second;
    EXPECT_FALSE(bool(second));
}

TEST_F(GraphWalkTest, LongWalksVisitEachNodeOnceParentsFirstAndStopAtAFailure) {
    // As many links as make a walk along the paths too long.
    const auto pTop = node("top");
    const auto pMiddle = node("middle");
    const auto pBottom = node("bottom");
    for (int i = 0; i < 300; ++i) {
        pTop->addChild(Handle<ExpressionBaseImpl>(pMiddle), false);
        pMiddle->addChild(Handle<ExpressionBaseImpl>(pBottom), false);
    }
    m_vCalls.clear();
    EXPECT_TRUE(pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(m_vCalls, (Calls{"top.configure_i", "middle.configure_i", "bottom.configure_i"}));
    m_vCalls.clear();
    pMiddle->m_bConfigures = false;
    EXPECT_FALSE(pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(m_vCalls, (Calls{"top.configure_i", "middle.configure_i"}));
    m_vCalls.clear();
    pTop->seal();
    EXPECT_EQ(m_vCalls, (Calls{"top.seal_i", "middle.seal_i", "bottom.seal_i"}));
    for (const auto& pNode : {pTop, pMiddle, pBottom}) {
        EXPECT_TRUE(pNode->isSealed());
        evaluated(*pNode);
    }
    m_vCalls.clear();
    EXPECT_TRUE(pTop->reset());
    EXPECT_EQ(m_vCalls, (Calls{"top.reset", "top.reset_i", "middle.reset_i", "bottom.reset_i"}));
    for (const auto& pNode : {pTop, pMiddle, pBottom}) {
        EXPECT_FALSE(pNode->isValid());
    }
    m_vCalls.clear();
    pMiddle->m_bResets = false;
    EXPECT_FALSE(pTop->reset());
    EXPECT_EQ(m_vCalls, (Calls{"top.reset", "top.reset_i", "middle.reset_i"}));
}

TEST_F(GraphWalkTest, CircleThatAHostHasMadeIsNotShortAndWalksOverItEnd) {
    const auto pTop = node();
    const auto pBottom = node();
    add(*pTop, pBottom);
    // Counted before: what the walk left behind mustn't be taken for the count.
    ASSERT_TRUE(GraphWalk::isShort(*pTop));
    pBottom->addChild(Handle<ExpressionBaseImpl>(pTop), false);
    EXPECT_FALSE(GraphWalk::isShort(*pTop));
    EXPECT_FALSE(GraphWalk::isShort(*pBottom));
    EXPECT_TRUE(pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_TRUE(pTop->reset());
    EXPECT_EQ(ExpressionComplexity().of(*pTop), std::numeric_limits<unsigned long>::max());
    pTop->seal();
    EXPECT_TRUE(pTop->isSealed());
    EXPECT_TRUE(pBottom->isSealed());
    pTop->invalidate();
    EXPECT_FALSE(pTop->isValid());
    // Opens the circle, which would keep both alive.
    pBottom->replaceChild(*pTop, Handle<ExpressionBaseImpl>(node()), true);
    EXPECT_TRUE(GraphWalk::isShort(*pTop));
}

TEST_F(GraphWalkTest, FortyDoublingsAreCheckedSealedConfiguredAndResetAtOnce) {
    const Handle<VariableImpl> pInput(new VariableImpl);
    Variable& input = *pInput;
    const DoubleVector vOne{1.0};
    const DoubleVector vThree{3.0};
    const DoubleVector vFive{5.0};
    input.setValue(vOne);
    const auto pTop = doubled(pInput, 40);

    // Linking asks the ancestors of the input, which 2 to the 40th paths lead to.
    EXPECT_TRUE(input.setValue(Handle<Expression>(constant({2.0}))));
    EXPECT_TRUE(pInput->isDependantOf(Handle<ExpressionBaseImpl>(pTop)));
    EXPECT_FALSE(pInput->isDependantOf(Handle<ExpressionBaseImpl>(new VariableImpl)));
    EXPECT_TRUE(input.setValue(vOne));

    const double dFactor = std::ldexp(1.0, 40);
    EXPECT_TRUE(pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(evaluated(*pTop), Values{dFactor});
    EXPECT_TRUE(pTop->reset());
    EXPECT_FALSE(pTop->isValid());
    EXPECT_FALSE(pInput->isValid());
    EXPECT_EQ(evaluated(*pTop), Values{dFactor});
    pTop->seal();
    for (const DoubleVector* pFrame : {&vThree, &vFive}) {
        input.setValue(*pFrame);
        EXPECT_FALSE(pTop->isValid());
        EXPECT_EQ(evaluated(*pTop), Values{(*pFrame)[0] * dFactor});
    }
    EXPECT_TRUE(pTop->reset());
    EXPECT_EQ(evaluated(*pTop), Values{5.0 * dFactor});
    // Every sealed operator is registered with what it reads once for each side.
    const auto pSum = pTop->getValue();
    const auto pBelow = ExpressionBaseImpl::getYoungerChild(pSum->getChildAt(0));
    EXPECT_EQ(parentsOf(*pBelow).size(), 3u);
}

TEST_F(GraphWalkTest, FortyDoublingsAreCopiedWithWhatTheyShare) {
    const Handle<VariableImpl> pInput(new VariableImpl);
    Variable& input = *pInput;
    const DoubleVector vOne{1.0};
    input.setValue(vOne);
    const auto pCopy = doubled(pInput, 40)->copy();
    EXPECT_EQ(evaluated(*pCopy), Values{std::ldexp(1.0, 40)});
    EXPECT_EQ(GraphWalk().collect(*pCopy).size(), 40u * 4u + 2u);
}

TEST_F(GraphWalkTest, LongChainIsWalkedWithoutADeepStack) {
    auto vNodes = chain(LongChain);
    const auto pTop = vNodes.front();
    const auto pBottom = vNodes.back();
    EXPECT_TRUE(pBottom->isParent(*pTop));
    EXPECT_TRUE(pTop->configure(TSHandle<VirtualFileSystem>()));
    for (const bool bSealed : {false, true}) {
        if (bSealed) {
            pTop->seal();
        }
        evaluated(*pTop);
        EXPECT_TRUE(pBottom->isValid());
        pBottom->invalidate();
        EXPECT_FALSE(pTop->isValid());
    }
    EXPECT_TRUE(pTop->reset());
    vNodes.clear();
    const auto pCopy = pTop->copy();
    EXPECT_EQ(GraphWalk().collect(*pCopy).size(), std::size_t(LongChain));
}

TEST_F(GraphWalkTest, ChainThatIsShortEnoughForTheWalkAlongPathsNeedsNoDeepStackEither) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "deeper than the thread sanitizer follows";
#endif
    const auto vNodes = chain(ExpressionBaseImpl::MaxVisitsPerWalk);
    ASSERT_TRUE(GraphWalk::isShort(*vNodes.front()));
    EXPECT_TRUE(vNodes.front()->configure(TSHandle<VirtualFileSystem>()));
    vNodes.front()->seal();
    EXPECT_TRUE(vNodes.back()->isSealed());
    EXPECT_TRUE(vNodes.front()->reset());
}

TEST_F(GraphWalkTest, LongChainIsDestroyedWithoutADeepStack) {
    // Of recording nodes, and of variables, which hold their value twice.
    Handle<ExpressionBaseImpl> pTop(node());
    Handle<ExpressionBaseImpl> pVariables(node());
    for (int i = 1; i < LongChain; ++i) {
        const Handle<RecordingNode> pNext(new RecordingNode);
        pNext->addChild(pTop, true);
        pTop = Handle<ExpressionBaseImpl>(pNext);
        const Handle<VariableImpl> pVariable(new VariableImpl);
        Variable& variable = *pVariable;
        variable.setValue(Handle<Expression>(pVariables));
        pVariables = Handle<ExpressionBaseImpl>(pVariable);
    }
    pTop = nullptr;
    pVariables = nullptr;
}

TEST_F(GraphWalkTest, SealedChainOfOperatorsIsDestroyedWithoutADeepStack) {
    Handle<Expression> pTop(constant({1.0}));
    for (int i = 1; i < LongChain / 4; ++i) {
        const Handle<OperatorPlus> pSum(new OperatorPlus);
        pSum->getLeftArgument()->setValue(pTop);
        pSum->getRightArgument()->setValue(Handle<Expression>(constant({1.0})));
        pTop = Handle<Expression>(pSum);
    }
    const Handle<ExpressionBaseImpl> pNode(pTop);
    pNode->seal();
    EXPECT_EQ(evaluated(*pNode), Values{LongChain / 4.0});
}

} // namespace

} // namespace Velmora::Math::Xpr
