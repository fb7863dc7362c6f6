#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class ExpressionBaseImplSealTest : public GraphTest {
protected:
    Handle<RecordingNode> node(const char* in_szName = "node") {
        return Handle<RecordingNode>(new RecordingNode(in_szName, &m_vCalls));
    }

    Calls takeCalls() { return std::exchange(m_vCalls, Calls()); }

    static void add(RecordingNode& inout_Parent, const Handle<RecordingNode>& in_pChild) {
        inout_Parent.addChild(Handle<ExpressionBaseImpl>(in_pChild), true);
    }

    /// Does the invalidation of one node reach another?
    static bool reaches(RecordingNode& inout_Node, RecordingNode& inout_Parent) {
        evaluated(inout_Node);
        evaluated(inout_Parent);
        inout_Node.invalidate();
        return !inout_Parent.isValid();
    }

    Calls m_vCalls;
};

TEST_F(ExpressionBaseImplSealTest, EveryNodeBelowIsSealedParentsFirst) {
    const auto pAbove = node("above");
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    const auto pBottom = node("bottom");
    add(*pAbove, pTop);
    add(*pTop, pLeft);
    add(*pTop, pRight);
    add(*pLeft, pBottom);
    takeCalls();
    pTop->seal();
    EXPECT_EQ(takeCalls(), (Calls{"top.seal_i", "left.seal_i", "bottom.seal_i", "right.seal_i"}));
    EXPECT_FALSE(pAbove->isSealed());
    for (const auto& pNode : {pTop, pLeft, pRight, pBottom}) {
        EXPECT_TRUE(pNode->isSealed());
    }
}

TEST_F(ExpressionBaseImplSealTest, NodeIsSealedWhenItsHookRuns) {
    struct LookingNode : RecordingNode {
        void seal_i() override { m_bSealedInHook = isSealed(); }
        bool m_bSealedInHook = false;
    };
    const Handle<LookingNode> pNode(new LookingNode);
    pNode->seal();
    EXPECT_TRUE(pNode->m_bSealedInHook);
}

TEST_F(ExpressionBaseImplSealTest, SharedChildIsSealedOncePerPathAndReachesBothParents) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    const auto pShared = node("shared");
    add(*pTop, pLeft);
    add(*pTop, pRight);
    add(*pLeft, pShared);
    add(*pRight, pShared);
    takeCalls();
    pTop->seal();
    EXPECT_EQ(takeCalls(), (Calls{"top.seal_i", "left.seal_i", "shared.seal_i", "right.seal_i",
                                  "shared.seal_i"}));
    EXPECT_EQ(parentsOf(*pShared), (Nodes{pLeft.get(), pRight.get()}));
    EXPECT_TRUE(reaches(*pShared, *pLeft));
    EXPECT_TRUE(reaches(*pShared, *pRight));
}

TEST_F(ExpressionBaseImplSealTest, SealedInvalidationWalksLikeTheOther) {
    const auto pTop = node();
    const auto pMiddle = node();
    const auto pBottom = node();
    add(*pTop, pMiddle);
    add(*pMiddle, pBottom);
    pTop->seal();
    evaluated(*pMiddle);
    EXPECT_TRUE(reaches(*pBottom, *pTop));
    EXPECT_FALSE(pMiddle->isValid());
    // An invalid node in between still stops it.
    EXPECT_FALSE(reaches(*pBottom, *pTop));
}

TEST_F(ExpressionBaseImplSealTest, ParentAddedAfterSealingHearsNothingUntilTheNextSeal) {
    const auto pChild = node();
    const auto pEarly = node();
    const auto pLate = node();
    add(*pEarly, pChild);
    pChild->seal();
    add(*pLate, pChild);
    EXPECT_EQ(parentsOf(*pChild), (Nodes{pEarly.get(), pLate.get()}));
    EXPECT_TRUE(reaches(*pChild, *pEarly));
    EXPECT_FALSE(reaches(*pChild, *pLate));
    pChild->seal();
    EXPECT_TRUE(reaches(*pChild, *pEarly));
    EXPECT_TRUE(reaches(*pChild, *pLate));
}

TEST_F(ExpressionBaseImplSealTest, ParentRemovedAfterSealingHearsNothing) {
    const auto pChild = node();
    const auto pFirst = node();
    const auto pSecond = node();
    const auto pThird = node();
    for (const auto& pParent : {pFirst, pSecond, pThird}) {
        pChild->addParent(pParent);
    }
    pChild->seal();
    EXPECT_TRUE(pChild->removeParent(pSecond));
    EXPECT_TRUE(reaches(*pChild, *pFirst));
    EXPECT_FALSE(reaches(*pChild, *pSecond));
    EXPECT_TRUE(reaches(*pChild, *pThird));
    EXPECT_TRUE(pChild->removeParent(pThird));
    EXPECT_TRUE(pChild->removeParent(pFirst));
    EXPECT_FALSE(reaches(*pChild, *pFirst));
    EXPECT_FALSE(reaches(*pChild, *pThird));
}

TEST_F(ExpressionBaseImplSealTest, RemovingOneOfTwoEntriesLeavesTheOtherInForce) {
    const auto pChild = node();
    const auto pParent = node();
    pChild->addParent(pParent);
    pChild->addParent(pParent);
    pChild->seal();
    EXPECT_TRUE(pChild->removeParent(pParent));
    EXPECT_TRUE(reaches(*pChild, *pParent));
    EXPECT_TRUE(pChild->removeParent(pParent));
    EXPECT_FALSE(reaches(*pChild, *pParent));
}

TEST_F(ExpressionBaseImplSealTest, ParentThatCameAfterSealingIsRemovedFromTheListAlone) {
    const auto pChild = node();
    const auto pEarly = node();
    const auto pLate = node();
    pChild->addParent(pEarly);
    pChild->seal();
    pChild->addParent(pLate);
    EXPECT_TRUE(pChild->removeParent(pLate));
    EXPECT_EQ(parentsOf(*pChild), Nodes{pEarly.get()});
    EXPECT_TRUE(reaches(*pChild, *pEarly));
}

TEST_F(ExpressionBaseImplSealTest, DyingParentLeavesASealedChild) {
    const auto pChild = node();
    const auto pStaying = node();
    auto pDying = node();
    add(*pDying, pChild);
    add(*pStaying, pChild);
    pChild->seal();
    pDying = nullptr;
    EXPECT_TRUE(reaches(*pChild, *pStaying));
}

} // namespace

} // namespace Velmora::Math::Xpr
