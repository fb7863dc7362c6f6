#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/InvalidExpression.h>

#include "support/AllocationCounter.h"
#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

const char* const NullExpression = "Can't set a null expression";
const char* const ForeignExpression = "Must use same implementation base for all expressions.";

/// A variable that shows which of its hooks were called.
class OpenVariable : public VariableImpl {
public:
    using VariableImpl::getDomainValue;
    using VariableImpl::replaceChild_i;

    std::vector<bool> m_vChecks;

protected:
    bool setValue_i(const Handle<Expression>& in_pExpression, bool in_bCheck) override {
        m_vChecks.push_back(in_bCheck);
        return VariableImpl::setValue_i(in_pExpression, in_bCheck);
    }
};

class VariableImplTest : public GraphTest {
protected:
    static Handle<OpenVariable> variable(const char* in_szName = "x") {
        Handle<OpenVariable> pVariable(new OpenVariable);
        pVariable->setName(in_szName);
        return pVariable;
    }

    static Handle<RecordingNode> node(double in_dValue = 1.0) {
        Handle<RecordingNode> pNode(new RecordingNode);
        pNode->m_vResult[0] = in_dValue;
        return pNode;
    }

    template <class T>
    static bool bind(VariableImpl& inout_Variable, const Handle<T>& in_pValue) {
        Variable& variable = inout_Variable;
        return variable.setValue(Handle<Expression>(in_pValue));
    }
};

TEST_F(VariableImplTest, FreshVariableIsUnnamedAndHasNoValue) {
    const Handle<VariableImpl> pVariable(new VariableImpl);
    EXPECT_STREQ(pVariable->getName(), "unamed variable");
    EXPECT_TRUE(pVariable->getValue().isNull());
    EXPECT_STREQ(VariableImpl::TypeName(), "Variable");
    EXPECT_STREQ(VariableImpl::getMemAccountName(), "VariableImpl");
}

TEST_F(VariableImplTest, EvaluationWithoutAValueFails) {
    const Handle<VariableImpl> pVariable(new VariableImpl);
    DoubleVector vValue{1.0};
    EXPECT_FALSE(pVariable->evaluate(vValue));
    EXPECT_EQ(takeErrors(),
              Texts{logged(NodeLogger, "Can't evaluate a variable (unamed variable) without "
                                       "setting its value first!")});
    EXPECT_EQ(valuesOf(vValue), Values{1.0});
    EXPECT_FALSE(pVariable->isValid());
}

TEST_F(VariableImplTest, NameIsACopyAndNullIsRefused) {
    std::string strName("speed");
    const auto pVariable = variable(strName.c_str());
    strName = "other";
    EXPECT_STREQ(pVariable->getName(), "speed");
    pVariable->setName(nullptr);
    EXPECT_EQ(takeAssertions(), Texts{"0 != in_szName"});
    EXPECT_STREQ(pVariable->getName(), "speed");
}

TEST_F(VariableImplTest, PassesTheValueOnWithoutACopy) {
    const auto pVariable = variable();
    const auto pNode = node();
    EXPECT_TRUE(bind(*pVariable, pNode));
    EXPECT_EQ(pVariable->getValue().get(), pNode.get());
    EXPECT_EQ(childrenOf(*pVariable), Nodes{pNode.get()});
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pVariable->evaluate(pValue));
    EXPECT_EQ(pValue.get(), &pNode->m_vResult);
}

TEST_F(VariableImplTest, ValidValueIsNotComputedAgain) {
    Calls vCalls;
    const Handle<RecordingNode> pNode(new RecordingNode("node", &vCalls));
    const auto pVariable = variable();
    bind(*pVariable, pNode);
    evaluated(*pNode);
    vCalls.clear();
    EXPECT_EQ(evaluated(*pVariable), Values{1.0});
    EXPECT_EQ(vCalls, Calls());
}

TEST_F(VariableImplTest, NullExpressionIsRefused) {
    const auto pVariable = variable();
    const auto pNode = node();
    Variable& target = *pVariable;
    EXPECT_FALSE(target.setValue(Handle<Expression>()));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, NullExpression)});
    bind(*pVariable, pNode);
    EXPECT_FALSE(target.setValue(Handle<Expression>()));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, NullExpression)});
    EXPECT_EQ(pVariable->getValue().get(), pNode.get());
}

TEST_F(VariableImplTest, ForeignExpressionIsRefused) {
    const auto pVariable = variable();
    const auto pNode = node();
    bind(*pVariable, pNode);
    EXPECT_FALSE(bind(*pVariable, Handle<Expression>(new InvalidExpression)));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, ForeignExpression)});
    EXPECT_EQ(pVariable->getValue().get(), pNode.get());
    EXPECT_EQ(childrenOf(*pVariable), Nodes{pNode.get()});
}

TEST_F(VariableImplTest, NewValueTakesThePlaceOfTheOld) {
    const auto pVariable = variable();
    const auto pUser = node();
    const auto pOld = node(1.0);
    const auto pNew = node(2.0);
    pUser->addChild(Handle<ExpressionBaseImpl>(pVariable), true);
    pUser->m_bReadsChildren = true;
    bind(*pVariable, pOld);
    evaluated(*pUser);
    EXPECT_TRUE(bind(*pVariable, pNew));
    EXPECT_EQ(parentsOf(*pOld), Nodes());
    EXPECT_EQ(parentsOf(*pNew), Nodes{pVariable.get()});
    EXPECT_EQ(childrenOf(*pVariable), Nodes{pNew.get()});
    EXPECT_FALSE(pVariable->isValid());
    EXPECT_FALSE(pUser->isValid());
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
    EXPECT_EQ(pOld.getReferenceCount(), 1);
}

TEST_F(VariableImplTest, FailingValueMakesNoFailingVariable) {
    const auto pVariable = variable();
    const auto pNode = node();
    bind(*pVariable, pNode);
    LimitedObjPtr<DoubleVector> pFirst;
    EXPECT_TRUE(pVariable->evaluate(pFirst));

    pNode->m_bEvaluates = false;
    pNode->invalidate();
    LimitedObjPtr<DoubleVector> pSecond;
    EXPECT_TRUE(pVariable->evaluate(pSecond));
    EXPECT_EQ(pSecond.get(), pFirst.get());
    EXPECT_TRUE(pVariable->isValid());
    EXPECT_FALSE(pNode->isValid());
}

TEST_F(VariableImplTest, ValueThatFailsFromTheStartGivesTrueAndANullPointer) {
    const auto pVariable = variable();
    const auto pNode = node();
    pNode->m_bEvaluates = false;
    bind(*pVariable, pNode);
    DoubleVector vBefore;
    LimitedObjPtr<DoubleVector> pValue(&vBefore);
    EXPECT_TRUE(pVariable->evaluate(pValue));
    EXPECT_TRUE(pValue.isNull());
    EXPECT_TRUE(pVariable->isValid());
}

TEST_F(VariableImplTest, VectorBecomesADomainValueThatPointsAtIt) {
    const auto pVariable = variable();
    const DoubleVector vValue{1.0};
    Variable& target = *pVariable;
    EXPECT_TRUE(target.setValue(vValue));
    const Handle<DomainValueNoCopyImpl> pDomainValue(pVariable->getValue());
    ASSERT_FALSE(pDomainValue.isNull());
    EXPECT_TRUE(pDomainValue->pointsAt(vValue));
    EXPECT_EQ(pVariable->getDomainValue().get(), pDomainValue.get());
    // Unlike an expression it is linked without the checks.
    EXPECT_EQ(pVariable->m_vChecks, std::vector<bool>{false});
    bind(*pVariable, node());
    EXPECT_EQ(pVariable->m_vChecks, (std::vector<bool>{false, true}));
    EXPECT_TRUE(pVariable->getDomainValue().isNull());
}

TEST_F(VariableImplTest, SecondVectorSwapsThePointerAndMakesNoNode) {
    const auto pVariable = variable();
    const auto pUser = node();
    pUser->addChild(Handle<ExpressionBaseImpl>(pVariable), true);
    pUser->m_bReadsChildren = true;
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& target = *pVariable;
    target.setValue(vFirst);
    const Handle<ExpressionBaseImpl> pDomainValue(pVariable->getValue());
    evaluated(*pUser);
    EXPECT_TRUE(target.setValue(vSecond));
    EXPECT_EQ(pVariable->getValue().get(), pDomainValue.get());
    EXPECT_EQ(pVariable->m_vChecks.size(), 1u);
    EXPECT_FALSE(pUser->isValid());
    EXPECT_FALSE(pVariable->isValid());
    EXPECT_FALSE(pDomainValue->isValid());
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
}

TEST_F(VariableImplTest, ValidVariableOverAnInvalidDomainValueIsInvalidatedByTheSwap) {
    const auto pVariable = variable();
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& target = *pVariable;
    target.setValue(vFirst);
    evaluated(*pVariable);
    // A node that doesn't tell its parents, as one whose links were made after sealing.
    pVariable->getValue()->removeParent(pVariable);
    pVariable->getValue()->invalidate();
    ASSERT_TRUE(pVariable->isValid());
    target.setValue(vSecond);
    EXPECT_FALSE(pVariable->isValid());
    pVariable->getValue()->addParent(pVariable);
}

TEST_F(VariableImplTest, ChangedContentsAreNotSeenWithoutASet) {
    const auto pVariable = variable();
    const auto pCopying = node();
    DoubleVector vValue{1.0};
    Variable& target = *pVariable;
    target.setValue(vValue);
    RecordingBinary sum;
    sum.getLeftArgument()->setValue(Handle<Expression>(pVariable));
    sum.getRightArgument()->setValue(Handle<Expression>(constant({5.0})));
    EXPECT_EQ(evaluated(sum), (Values{1.0, 5.0}));
    vValue[0] = 2.0;
    EXPECT_EQ(evaluated(sum), (Values{1.0, 5.0}));
    target.setValue(vValue);
    EXPECT_EQ(evaluated(sum), (Values{2.0, 5.0}));
}

TEST_F(VariableImplTest, BothWaysOfTakingAVectorAreLogged) {
    LogCapture logs(NodeLogger, log4cplus::DEBUG_LOG_LEVEL);
    const auto pVariable = variable("speed");
    const DoubleVector vValue{1.0};
    Variable& target = *pVariable;
    target.setValue(vValue);
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL),
              Texts{logged(NodeLogger, "set variable \"speed\" to a domain value. Creating a new "
                                       "domain value instance.")});
    target.setValue(vValue);
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL),
              Texts{logged(NodeLogger, "set variable \"speed\" to a domain value. Keeping same "
                                       "domain value instance --> just swap pointer.")});
}

TEST_F(VariableImplTest, SteadyFramesAllocateNothing) {
    const auto pVariable = variable();
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& target = *pVariable;
    target.setValue(vFirst);
    LimitedObjPtr<DoubleVector> pValue;
    pVariable->evaluate(pValue);
    const AllocationCounter counter;
    for (const DoubleVector* pVector : {&vSecond, &vFirst, &vSecond}) {
        target.setValue(*pVector);
        pVariable->evaluate(pValue);
    }
    const std::size_t uiAllocations = counter.allocations();
    EXPECT_EQ(uiAllocations, 0u);
    EXPECT_EQ(pValue.get(), &vSecond);
}

TEST_F(VariableImplTest, VariableSetToItselfFailsTheFirstCheckAndStoresTheHandle) {
    const auto pVariable = variable();
    EXPECT_TRUE(bind(*pVariable, pVariable));
    EXPECT_EQ(takeAssertions(),
              Texts{"in_pChild->getId() != this->getId() && \"Can't loop on self!\""});
    EXPECT_EQ(pVariable->getValue().get(), static_cast<ExpressionBaseImpl*>(pVariable.get()));
    EXPECT_EQ(childrenOf(*pVariable), Nodes());

    EXPECT_TRUE(bind(*pVariable, pVariable));
    EXPECT_EQ(takeAssertions(),
              Texts{"in_pNewChild->getId() != this->getId() && \"Can't loop on self!\""});
    // Opens the loop, which would keep the variable alive; it was never linked.
    EXPECT_TRUE(bind(*pVariable, node()));
    EXPECT_EQ(takeAssertions(), Texts{"iteFound != m_Childs.end()"});
}

TEST_F(VariableImplTest, ReplaceChildHookFollowsTheValueOnly) {
    const auto pVariable = variable();
    const auto pOld = node();
    const auto pOther = node();
    const Handle<ExpressionBaseImpl> pNew(node());
    bind(*pVariable, pOld);
    pVariable->replaceChild_i(*pOther, pNew);
    EXPECT_EQ(pVariable->getValue().get(), pOld.get());
    pVariable->replaceChild_i(*pOld, pVariable->getValue());
    EXPECT_EQ(pVariable->getValue().get(), pOld.get());
    pVariable->replaceChild_i(*pOld, pNew);
    EXPECT_EQ(pVariable->getValue().get(), pNew.get());
}

TEST_F(VariableImplTest, ReplacedValueComesInWithoutInvalidation) {
    const auto pVariable = variable();
    const auto pOld = node(1.0);
    const auto pNew = node(2.0);
    bind(*pVariable, pOld);
    evaluated(*pVariable);
    pOld->replace(Handle<ExpressionBaseImpl>(pNew));
    EXPECT_EQ(pVariable->getValue().get(), pNew.get());
    EXPECT_TRUE(pVariable->isValid());
    EXPECT_EQ(evaluated(*pVariable), Values{1.0});
    pVariable->invalidate();
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
}

TEST_F(VariableImplTest, ReplaceLeavesTheSecondPointerAtTheDomainValue) {
    const auto pVariable = variable();
    const auto pNew = node(3.0);
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& target = *pVariable;
    target.setValue(vFirst);
    const Handle<DomainValueNoCopyImpl> pDomainValue(pVariable->getValue());
    pDomainValue->replace(Handle<ExpressionBaseImpl>(pNew));
    EXPECT_EQ(pVariable->getDomainValue().get(), pDomainValue.get());
    EXPECT_TRUE(target.setValue(vSecond));
    EXPECT_TRUE(pDomainValue->pointsAt(vSecond));
    EXPECT_EQ(evaluated(*pVariable), Values{3.0});
}

TEST_F(VariableImplTest, ValuesReplacedOneAfterTheOtherLeaveNothingDeadBehind) {
    const auto pVariable = variable();
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& target = *pVariable;
    target.setValue(vFirst);
    evaluated(*pVariable);
    for (const double dValue : {3.0, 4.0, 5.0}) {
        ExpressionBaseImpl& old = *pVariable->getValue();
        old.replace(Handle<ExpressionBaseImpl>(node(dValue)));
        EXPECT_EQ(evaluated(*pVariable), Values{1.0});
    }
    pVariable->invalidate();
    EXPECT_EQ(evaluated(*pVariable), Values{5.0});
    for (const double dValue : {6.0, 7.0}) {
        ExpressionBaseImpl& old = *pVariable->getValue();
        old.replace(Handle<ExpressionBaseImpl>(node(dValue)));
    }
    EXPECT_EQ(evaluated(*pVariable), Values{5.0});
    // The second pointer still leads to the first domain value.
    EXPECT_TRUE(target.setValue(vSecond));
    EXPECT_EQ(evaluated(*pVariable), Values{7.0});
}

TEST_F(VariableImplTest, ValuesReplacedFrameByFrameDontPileUp) {
    const auto pVariable = variable();
    const Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("f"));
    std::vector<Handle<RecordingNode>> vValues;
    std::vector<Handle<RecordingNode>> vBodies;
    for (int i = 0; i != 10; ++i) {
        vValues.push_back(node(i));
        vBodies.push_back(node(i));
        if (i == 0) {
            Variable& target = *pVariable;
            target.setValue(Handle<Expression>(vValues.back()));
            pFunction->setImplementation(Handle<Expression>(vBodies.back()));
        } else {
            vValues[vValues.size() - 2]->replace(Handle<ExpressionBaseImpl>(vValues.back()));
            vBodies[vBodies.size() - 2]->replace(Handle<ExpressionBaseImpl>(vBodies.back()));
        }
        pVariable->invalidate();
        pFunction->invalidate();
        EXPECT_EQ(evaluated(*pVariable), Values{static_cast<double>(i)});
        EXPECT_EQ(evaluated(*pFunction), Values{static_cast<double>(i)});
    }
    // The last but one may still be held: the cached pointer led there.
    for (std::size_t ui = 0; ui + 2 != vValues.size(); ++ui) {
        EXPECT_EQ(vValues[ui].getReferenceCount(), 1u) << ui;
        EXPECT_EQ(vBodies[ui].getReferenceCount(), 1u) << ui;
    }
}

/// Whether a node, of which the caller holds a handle, has another owner.
bool isHeld(const Handle<RecordingNode>& in_pNode) {
    return in_pNode.getReferenceCount() > 1;
}

TEST_F(VariableImplTest, ValueThatWasHeldGoesWithTheNextThatComesBehindAnInvalidation) {
    const auto pVariable = variable();
    const Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("f"));
    const auto pFirst = node(1.0);
    const auto pSecond = node(2.0);
    bind(*pVariable, pFirst);
    pFunction->setImplementation(Handle<Expression>(pFirst));
    for (const auto& pOwner :
         {Handle<ExpressionBaseImpl>(pVariable), Handle<ExpressionBaseImpl>(pFunction)}) {
        evaluated(*pOwner);
        pOwner->replaceChild(*pFirst, Handle<ExpressionBaseImpl>(pSecond), true);
        EXPECT_TRUE(isHeld(pFirst));
        pOwner->invalidate();
        pOwner->replaceChild(*pSecond, Handle<ExpressionBaseImpl>(node(3.0)), true);
        EXPECT_EQ(evaluated(*pOwner), Values{3.0});
    }
    EXPECT_FALSE(isHeld(pFirst));
    EXPECT_FALSE(isHeld(pSecond));
}

// What has taken the place of the value passes on what it passed on itself, and may stop to.
TEST_F(VariableImplTest, ReplacedValueIsHeldThoughAnotherPassedItOnInBetween) {
    const Handle<RecordingNode> pOwner = node(2.0);
    const auto pVariable = variable();
    const auto pBetween = variable();
    bind(*pVariable, pOwner);
    bind(*pBetween, pOwner);
    evaluated(*pVariable);
    evaluated(*pBetween);
    pVariable->replaceChild(*pOwner, Handle<ExpressionBaseImpl>(pBetween), true);
    pVariable->replaceChild(*pBetween, Handle<ExpressionBaseImpl>(node(3.0)), true);
    bind(*pBetween, node(4.0));
    EXPECT_TRUE(pVariable->isValid());
    EXPECT_TRUE(isHeld(pOwner));
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
    pVariable->invalidate();
    EXPECT_EQ(evaluated(*pVariable), Values{3.0});
}

TEST_F(VariableImplTest, ValueBelowAReplacedVariableOrFunctionIsHeld) {
    const Handle<RecordingNode> pOwner = node(2.0);
    const auto pBetween = variable();
    bind(*pBetween, pOwner);
    const Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("f"));
    pFunction->setImplementation(Handle<Expression>(pBetween));
    const auto pVariable = variable();
    bind(*pVariable, pFunction);
    evaluated(*pVariable);
    pVariable->replaceChild(*pFunction, Handle<ExpressionBaseImpl>(node(3.0)), true);
    bind(*pBetween, node(4.0));
    EXPECT_TRUE(isHeld(pOwner));
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
}

/// Hands out a vector of its own each time, and fails from the second time on.
class TwoVectors : public RecordingNode {
protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override {
        out = m_bFirst ? &m_vFirst : &m_vSecond;
        const bool bFirst = m_bFirst;
        m_bFirst = false;
        return bFirst;
    }

private:
    bool m_bFirst = true;
    DoubleVector m_vFirst{2.0};
    DoubleVector m_vSecond{5.0};
};

TEST_F(VariableImplTest, ValueThatFailedBehindAnEarlierOneIsHeldBesideThatOne) {
    const auto pVariable = variable();
    const Handle<RecordingNode> pFirst = node(1.0);
    const Handle<RecordingNode> pFailing(new TwoVectors);
    bind(*pVariable, pFirst);
    evaluated(*pVariable);
    pVariable->replaceChild(*pFirst, Handle<ExpressionBaseImpl>(pFailing), true);
    pVariable->invalidate();
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
    pFailing->invalidate();
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
    pVariable->replaceChild(*pFailing, Handle<ExpressionBaseImpl>(node(3.0)), true);
    EXPECT_TRUE(isHeld(pFailing));
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
}

TEST_F(VariableImplTest, FailureBehindANewValueGivesNoPointerIntoTheOld) {
    const auto pVariable = variable();
    const auto pFailing = node();
    pFailing->m_bEvaluates = false;
    bind(*pVariable, node());
    evaluated(*pVariable);
    bind(*pVariable, pFailing);
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pVariable->evaluate(pValue));
    EXPECT_TRUE(pValue.isNull());

    bind(*pVariable, node());
    evaluated(*pVariable);
    pVariable->invalidate();
    pVariable->getValue()->replace(Handle<ExpressionBaseImpl>(pFailing));
    EXPECT_TRUE(pVariable->evaluate(pValue));
    EXPECT_TRUE(pValue.isNull());
}

TEST_F(VariableImplTest, EqualNamesMakeNoEqualVariables) {
    const auto pFirst = variable("x");
    const auto pSecond = variable("x");
    EXPECT_FALSE(pFirst->isDependantOf(Handle<ExpressionBaseImpl>(pSecond)));
    EXPECT_TRUE(pFirst->isDependantOf(Handle<ExpressionBaseImpl>(pFirst)));
}

TEST_F(VariableImplTest, RecognitionAsksNothingElseForItsName) {
    const auto pVariable = variable();
    const auto pNode = node();
    EXPECT_FALSE(pVariable->isDependantOf(Handle<ExpressionBaseImpl>(pNode)));
    EXPECT_EQ(pNode->m_uiNamesAsked, 0u);
}

TEST_F(VariableImplTest, ResetAndConfigureKeepTheValue) {
    const auto pVariable = variable();
    bind(*pVariable, node());
    evaluated(*pVariable);
    EXPECT_TRUE(pVariable->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_TRUE(pVariable->isValid());
    EXPECT_TRUE(pVariable->reset());
    EXPECT_FALSE(pVariable->isValid());
    EXPECT_EQ(evaluated(*pVariable), Values{1.0});
}

TEST_F(VariableImplTest, CopyHasTheNameAndACopyOfTheValue) {
    LogCapture logs(NodeLogger, log4cplus::DEBUG_LOG_LEVEL);
    const Handle<VariableImpl> pVariable(new VariableImpl);
    pVariable->setName("speed");
    bind(*pVariable, constant({1.0}));
    const Handle<VariableImpl> pCopy(pVariable->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "speed");
    EXPECT_NE(pCopy->getValue().get(), pVariable->getValue().get());
    EXPECT_EQ(evaluated(*pCopy), Values{1.0});
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL),
              Texts{logged(NodeLogger, "copy variable: [speed]")});
}

TEST_F(VariableImplTest, CopyOfAVariableWithoutAValueHasNone) {
    const Handle<VariableImpl> pCopy(variable("x")->copy());
    EXPECT_STREQ(pCopy->getName(), "x");
    EXPECT_TRUE(pCopy->getValue().isNull());
}

TEST_F(VariableImplTest, ValueThatCanNotBeCopiedIsRefusedByTheCopy) {
    const auto pVariable = variable();
    const auto pNode = node();
    pNode->m_bCopies = false;
    bind(*pVariable, pNode);
    const Handle<VariableImpl> pCopy(pVariable->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_TRUE(pCopy->getValue().isNull());
    EXPECT_EQ(takeErrors(), (Texts{logged(NodeLogger, "Failed to copy the expression: "),
                                   logged(NodeLogger, NullExpression)}));
}

} // namespace

} // namespace Velmora::Math::Xpr
