#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <velmora/DiskFileSystem.h>
#include <velmora/math/xpr/InvalidVariable.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include <set>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class ExpressionBaseImplTest : public GraphTest {
protected:
    Handle<RecordingNode> node(const char* in_szName = "node") {
        return Handle<RecordingNode>(new RecordingNode(in_szName, &m_vCalls));
    }

    /// The calls since the last one.
    Calls takeCalls() { return std::exchange(m_vCalls, Calls()); }

    Calls m_vCalls;
};

/// A node whose pointer form of `evaluate` is its own.
class OwnEvaluationNode : public RecordingNode {
public:
    using RecordingNode::evaluate;
    bool evaluate(LimitedObjPtr<DoubleVector>& out) override {
        out = &m_vOwn;
        return true;
    }

    DoubleVector m_vOwn{7.0};
};

TEST_F(ExpressionBaseImplTest, IdentifiersAreUniqueAndNeverReused) {
    std::set<unsigned long> setIds;
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(setIds.insert(node()->getId()).second);
    }
}

TEST_F(ExpressionBaseImplTest, NewNodeIsEmptyInvalidAndNotSealed) {
    const auto pNode = node();
    EXPECT_STREQ(pNode->getType(), "");
    EXPECT_STREQ(pNode->getSourceInfo(), "");
    EXPECT_FALSE(pNode->isValid());
    EXPECT_FALSE(pNode->isSealed());
    EXPECT_EQ(pNode->getParentBegin(), pNode->getParentEnd());
    EXPECT_EQ(pNode->getChildBegin(), pNode->getChildEnd());
    EXPECT_EQ(textOf(*pNode), "");
}

/// An interface of a host's that doesn't share the library's.
class OwnFace : public Expression {};

// Its `Expression` isn't that of the node which a host may join it with, and doesn't know of it.
static_assert(!ObjectCastShortcut<ExpressionBaseImpl, OwnFace>::EXISTS);
static_assert(ObjectCastShortcut<ExpressionBaseImpl, Expression>::EXISTS);
static_assert(ObjectCastShortcut<ExpressionBaseImpl, Variable>::EXISTS);
static_assert(!ObjectCastShortcut<ExpressionBaseImpl, Object>::EXISTS);

TEST_F(ExpressionBaseImplTest, ACastToANodeGivesTheSameFromEveryInterface) {
    const Handle<OperatorPlus> pPlus(new OperatorPlus);
    const Handle<Function> pFunction(pPlus);
    const Handle<BinaryOperator> pOperator(pPlus);
    const Handle<Object> pObject(pPlus);
    EXPECT_EQ(Handle<ExpressionBaseImpl>(pFunction).get(), pPlus.get());
    EXPECT_EQ(Handle<ExpressionBaseImpl>(pOperator).get(), pPlus.get());
    EXPECT_EQ(Handle<ExpressionBaseImpl>(pObject).get(), pPlus.get());
    EXPECT_EQ(pPlus.getReferenceCount(), 4);
    // A host may have variables that are no nodes of the library's.
    const Handle<Variable> pForeign(new InvalidVariable);
    EXPECT_TRUE(Handle<ExpressionBaseImpl>(pForeign).isNull());
    EXPECT_TRUE(Handle<ExpressionBaseImpl>(Handle<Variable>()).isNull());
}

TEST_F(ExpressionBaseImplTest, LabelAndSourceInfoAreStoredAsCopies) {
    const auto pNode = node();
    std::string strText("label");
    pNode->setType(strText.c_str());
    pNode->setSourceInfo(strText.c_str());
    strText = "other";
    EXPECT_STREQ(pNode->getType(), "label");
    EXPECT_STREQ(pNode->getSourceInfo(), "label");
}

TEST_F(ExpressionBaseImplTest, NullLabelIsRefusedAndLeavesTheLabel) {
    const auto pNode = node();
    pNode->setType("label");
    pNode->setType(nullptr);
    EXPECT_EQ(takeAssertions(), Texts{"in_szType"});
    EXPECT_STREQ(pNode->getType(), "label");
}

TEST_F(ExpressionBaseImplTest, EvaluatedTwiceComputesOnce) {
    const auto pNode = node();
    LimitedObjPtr<DoubleVector> pFirst;
    LimitedObjPtr<DoubleVector> pSecond;
    EXPECT_TRUE(pNode->evaluate(pFirst));
    EXPECT_TRUE(pNode->isValid());
    EXPECT_TRUE(pNode->evaluate(pSecond));
    EXPECT_EQ(takeCalls(), Calls{"node.evaluate_i"});
    EXPECT_EQ(pFirst.get(), &pNode->m_vResult);
    EXPECT_EQ(pSecond.get(), &pNode->m_vResult);
}

TEST_F(ExpressionBaseImplTest, InvalidatedInBetweenComputesTwice) {
    const auto pNode = node();
    LimitedObjPtr<DoubleVector> pValue;
    pNode->evaluate(pValue);
    pNode->invalidate();
    EXPECT_FALSE(pNode->isValid());
    pNode->evaluate(pValue);
    EXPECT_EQ(takeCalls(), (Calls{"node.evaluate_i", "node.evaluate_i"}));
}

TEST_F(ExpressionBaseImplTest, QuickInvalidateInvalidates) {
    const auto pNode = node();
    evaluated(*pNode);
    pNode->quickInvalidate();
    EXPECT_FALSE(pNode->isValid());
}

TEST_F(ExpressionBaseImplTest, FailedEvaluationLeavesTheOutputAndTheNodeInvalid) {
    const auto pNode = node();
    pNode->m_bEvaluates = false;
    DoubleVector vBefore{3.0};
    LimitedObjPtr<DoubleVector> pValue(&vBefore);
    EXPECT_FALSE(pNode->evaluate(pValue));
    EXPECT_EQ(pValue.get(), &vBefore);
    EXPECT_FALSE(pNode->isValid());
    EXPECT_FALSE(pNode->evaluate(vBefore));
    EXPECT_EQ(valuesOf(vBefore), Values{3.0});
}

TEST_F(ExpressionBaseImplTest, DoEvaluateComputesAValidNodeAgain) {
    const auto pNode = node();
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pNode->doEvaluate(pValue));
    EXPECT_TRUE(pNode->doEvaluate(pValue));
    EXPECT_TRUE(pNode->isValid());
    EXPECT_EQ(pValue.get(), &pNode->m_vResult);
    EXPECT_EQ(takeCalls().size(), 2u);
}

TEST_F(ExpressionBaseImplTest, FailedDoEvaluateLeavesTheFlagAsItWas) {
    const auto pNode = node();
    pNode->m_bEvaluates = false;
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_FALSE(pNode->doEvaluate(pValue));
    EXPECT_FALSE(pNode->isValid());

    pNode->m_bEvaluates = true;
    evaluated(*pNode);
    pNode->m_bEvaluates = false;
    EXPECT_FALSE(pNode->doEvaluate(pValue));
    EXPECT_TRUE(pNode->isValid());
    EXPECT_TRUE(pValue.isNull());
}

TEST_F(ExpressionBaseImplTest, QuickEvaluateHandsOutTheValue) {
    const auto pNode = node();
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pNode->quickEvaluate(pValue));
    EXPECT_TRUE(pNode->quickEvaluate(pValue));
    EXPECT_EQ(pValue.get(), &pNode->m_vResult);
    EXPECT_TRUE(pNode->isValid());
    EXPECT_EQ(takeCalls(), Calls{"node.evaluate_i"});
}

TEST_F(ExpressionBaseImplTest, FailedQuickEvaluateIsTrueAndChangesNothing) {
    const auto pNode = node();
    pNode->m_bEvaluates = false;
    DoubleVector vBefore;
    LimitedObjPtr<DoubleVector> pValue(&vBefore);
    EXPECT_TRUE(pNode->quickEvaluate(pValue));
    EXPECT_EQ(pValue.get(), &vBefore);
    EXPECT_FALSE(pNode->isValid());
}

TEST_F(ExpressionBaseImplTest, CopyingEvaluationGivesAVectorOfItsOwn) {
    const auto pNode = node();
    DoubleVector vValue;
    EXPECT_TRUE(pNode->evaluate(vValue));
    EXPECT_NE(vValue.begin(), pNode->m_vResult.begin());
    pNode->m_vResult[0] = 2.0;
    EXPECT_EQ(valuesOf(vValue), Values{1.0});
}

TEST_F(ExpressionBaseImplTest, CopyingEvaluationGoesThroughTheInterface) {
    const Handle<OwnEvaluationNode> pNode(new OwnEvaluationNode);
    EXPECT_EQ(evaluated(*pNode), Values{7.0});
}

TEST_F(ExpressionBaseImplTest, CopyingEvaluationOfAValueThatNeverWasFailsAndNamesTheNode) {
    const Handle<VariableImpl> pVariable(new VariableImpl);
    const auto pFailing = node();
    pFailing->m_bEvaluates = false;
    pVariable->setName("x");
    pVariable->setSourceInfo("s.xpr(1,2)");
    Variable& variable = *pVariable;
    variable.setValue(Handle<Expression>(pFailing));
    DoubleVector vValue{5.0};
    EXPECT_FALSE(pVariable->evaluate(vValue));
    EXPECT_EQ(valuesOf(vValue), Values{5.0});
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "s.xpr(1,2):no value to compute from: x")});
}

TEST_F(ExpressionBaseImplTest, SharedChildIsComputedOncePerEvaluationAndInvalidatedOnBothPaths) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    const auto pShared = node("shared");
    for (const auto& pParent : {pLeft, pRight}) {
        pParent->m_bReadsChildren = true;
        pParent->addChild(Handle<ExpressionBaseImpl>(pShared), true);
        pTop->addChild(Handle<ExpressionBaseImpl>(pParent), true);
    }
    pTop->m_bReadsChildren = true;
    takeCalls();
    const Calls vAll{"top.evaluate_i", "left.evaluate_i", "shared.evaluate_i", "right.evaluate_i"};

    evaluated(*pTop);
    EXPECT_EQ(takeCalls(), vAll);
    pShared->invalidate();
    for (const auto& pNode : {pTop, pLeft, pRight, pShared}) {
        EXPECT_FALSE(pNode->isValid());
    }
    evaluated(*pTop);
    EXPECT_EQ(takeCalls(), vAll);
}

TEST_F(ExpressionBaseImplTest, OnlyWhatDependsOnAChangedLeafIsComputedAgain) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    for (const auto& pChild : {pLeft, pRight}) {
        pTop->addChild(Handle<ExpressionBaseImpl>(pChild), true);
    }
    pTop->m_bReadsChildren = true;
    evaluated(*pTop);
    takeCalls();
    pRight->invalidate();
    EXPECT_TRUE(pLeft->isValid());
    evaluated(*pTop);
    EXPECT_EQ(takeCalls(), (Calls{"top.evaluate_i", "right.evaluate_i"}));
}

TEST_F(ExpressionBaseImplTest, InvalidatingAnInvalidNodeDoesNotWalk) {
    const auto pParent = node("parent");
    const auto pChild = node("child");
    pParent->addChild(Handle<ExpressionBaseImpl>(pChild), true);
    evaluated(*pParent);
    ASSERT_FALSE(pChild->isValid());
    pChild->invalidate();
    EXPECT_TRUE(pParent->isValid());
    pChild->invalidate_i();
    EXPECT_TRUE(pParent->isValid());
}

TEST_F(ExpressionBaseImplTest, InvalidationStopsAtAnInvalidNode) {
    const auto pTop = node("top");
    const auto pMiddle = node("middle");
    const auto pBottom = node("bottom");
    pTop->addChild(Handle<ExpressionBaseImpl>(pMiddle), true);
    pMiddle->addChild(Handle<ExpressionBaseImpl>(pBottom), true);
    evaluated(*pTop);
    evaluated(*pBottom);
    pBottom->invalidate();
    EXPECT_FALSE(pBottom->isValid());
    EXPECT_TRUE(pTop->isValid());
}

TEST_F(ExpressionBaseImplTest, ValueTravelsFromTheLeafAsOnePointer) {
    DoubleVector vHost{1.0, 2.0};
    const Handle<VariableImpl> pInput(new VariableImpl);
    const Handle<VariableImpl> pOuter(new VariableImpl);
    Variable& input = *pInput;
    Variable& outer = *pOuter;
    input.setValue(vHost);
    outer.setValue(Handle<Expression>(pInput));

    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pOuter->evaluate(pValue));
    EXPECT_EQ(pValue.get(), &vHost);
    EXPECT_TRUE(pInput->isValid());
    EXPECT_TRUE(pInput->getValue()->isValid());
    EXPECT_TRUE(pInput->evaluate(pValue));
    EXPECT_EQ(pValue.get(), &vHost);
}

TEST_F(ExpressionBaseImplTest, ConfigureReachesParentsBeforeChildrenAndHandsOnTheFileSystem) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    const auto pBottom = node("bottom");
    pTop->addChild(Handle<ExpressionBaseImpl>(pLeft), true);
    pTop->addChild(Handle<ExpressionBaseImpl>(pRight), true);
    pLeft->addChild(Handle<ExpressionBaseImpl>(pBottom), true);
    takeCalls();
    const TSHandle<VirtualFileSystem> pFileSystem(new DiskFileSystem);
    EXPECT_TRUE(pTop->configure(pFileSystem));
    EXPECT_EQ(takeCalls(), (Calls{"top.configure_i", "left.configure_i", "bottom.configure_i",
                                  "right.configure_i"}));
    EXPECT_EQ(pBottom->m_pFileSystem, pFileSystem.get());
}

TEST_F(ExpressionBaseImplTest, ConfigureStopsAtTheFirstRefusal) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    pTop->addChild(Handle<ExpressionBaseImpl>(pLeft), true);
    pTop->addChild(Handle<ExpressionBaseImpl>(pRight), true);
    takeCalls();
    pLeft->m_bConfigures = false;
    EXPECT_FALSE(pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(takeCalls(), (Calls{"top.configure_i", "left.configure_i"}));
    pTop->m_bConfigures = false;
    EXPECT_FALSE(pTop->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_EQ(takeCalls(), Calls{"top.configure_i"});
}

TEST_F(ExpressionBaseImplTest, ResetInvalidatesAndGoesDownThroughTheInterface) {
    const auto pAbove = node("above");
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    pAbove->addChild(Handle<ExpressionBaseImpl>(pTop), true);
    pTop->addChild(Handle<ExpressionBaseImpl>(pLeft), true);
    pTop->addChild(Handle<ExpressionBaseImpl>(pRight), true);
    pAbove->m_bReadsChildren = true;
    pTop->m_bReadsChildren = true;
    evaluated(*pAbove);
    takeCalls();
    EXPECT_TRUE(pTop->reset());
    EXPECT_EQ(takeCalls(), (Calls{"top.reset", "top.reset_i", "left.reset", "left.reset_i",
                                  "right.reset", "right.reset_i"}));
    for (const auto& pNode : {pAbove, pTop, pLeft, pRight}) {
        EXPECT_FALSE(pNode->isValid());
    }
}

TEST_F(ExpressionBaseImplTest, ResetStopsAtTheFirstFailure) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    pTop->addChild(Handle<ExpressionBaseImpl>(pLeft), true);
    pTop->addChild(Handle<ExpressionBaseImpl>(pRight), true);
    evaluated(*pTop);
    evaluated(*pRight);
    takeCalls();
    pLeft->m_bResets = false;
    EXPECT_FALSE(pTop->reset());
    EXPECT_EQ(takeCalls(), (Calls{"top.reset", "top.reset_i", "left.reset", "left.reset_i"}));
    EXPECT_FALSE(pTop->isValid());
    EXPECT_TRUE(pRight->isValid());
    evaluated(*pTop);
    takeCalls();
    pTop->m_bResets = false;
    EXPECT_FALSE(pTop->reset());
    EXPECT_EQ(takeCalls(), (Calls{"top.reset", "top.reset_i"}));
    EXPECT_FALSE(pTop->isValid());
}

TEST_F(ExpressionBaseImplTest, DyingNodeLeavesItsChildren) {
    const auto pShared = node("shared");
    auto pFirst = node("first");
    auto pSecond = node("second");
    pFirst->addChild(Handle<ExpressionBaseImpl>(pShared), true);
    pSecond->addChild(Handle<ExpressionBaseImpl>(pShared), true);
    pFirst->addChild(Handle<ExpressionBaseImpl>(pShared), true);
    EXPECT_EQ(parentsOf(*pShared), (Nodes{pFirst.get(), pSecond.get(), pFirst.get()}));
    pFirst = nullptr;
    EXPECT_EQ(parentsOf(*pShared), Nodes{pSecond.get()});
    pSecond = nullptr;
    EXPECT_EQ(parentsOf(*pShared), Nodes());
    EXPECT_EQ(pShared.getReferenceCount(), 1);
}

TEST_F(ExpressionBaseImplTest, ChildDiesWithItsLastParent) {
    auto pFirst = node("first");
    auto pSecond = node("second");
    struct DyingNode : RecordingNode {
        explicit DyingNode(bool& out_bDead) : m_bDead(out_bDead) {}
        ~DyingNode() override { m_bDead = true; }
        bool& m_bDead;
    };
    bool bDead = false;
    {
        const Handle<ExpressionBaseImpl> pShared(new DyingNode(bDead));
        pFirst->addChild(pShared, true);
        pSecond->addChild(pShared, true);
    }
    pFirst = nullptr;
    EXPECT_FALSE(bDead);
    pSecond = nullptr;
    EXPECT_TRUE(bDead);
}

TEST_F(ExpressionBaseImplTest, YoungerChildOfNothingIsNothing) {
    EXPECT_TRUE(ExpressionBaseImpl::getYoungerChild(Handle<ExpressionBaseImpl>()).isNull());
    EXPECT_EQ(takeAssertions(), Texts{"!pExpr.isNull()"});
}

TEST_F(ExpressionBaseImplTest, YoungerChildStripsVariablesAndScriptFunctions) {
    const auto pNode = node();
    const Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("f"));
    const Handle<VariableImpl> pInner(new VariableImpl);
    const Handle<VariableImpl> pOuter(new VariableImpl);
    Variable& inner = *pInner;
    Variable& outer = *pOuter;
    const Handle<ExpressionBaseImpl> pTop(pOuter);

    EXPECT_EQ(ExpressionBaseImpl::getYoungerChild(pTop).get(), pTop.get());
    outer.setValue(Handle<Expression>(pInner));
    EXPECT_EQ(ExpressionBaseImpl::getYoungerChild(pTop).get(),
              static_cast<ExpressionBaseImpl*>(pInner.get()));
    inner.setValue(Handle<Expression>(pFunction));
    EXPECT_TRUE(ExpressionBaseImpl::getYoungerChild(pTop).isNull());
    pFunction->setImplementation(Handle<Expression>(pNode));
    EXPECT_EQ(ExpressionBaseImpl::getYoungerChild(pTop).get(), pNode.get());
    EXPECT_EQ(ExpressionBaseImpl::getYoungerChild(Handle<ExpressionBaseImpl>(pNode)).get(),
              pNode.get());
}

} // namespace

} // namespace Velmora::Math::Xpr
