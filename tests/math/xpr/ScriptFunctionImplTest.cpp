#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/InvalidExpression.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

/// A script function that shows what its derived classes may call.
class OpenScriptFunction : public ScriptFunctionImpl {
public:
    explicit OpenScriptFunction(const char* in_szName = "f") : ScriptFunctionImpl(in_szName) {}
    using ScriptFunctionImpl::addChild;
    using ScriptFunctionImpl::isDependantOf_i;
    using ScriptFunctionImpl::replaceChild_i;
};

class ScriptFunctionImplTest : public GraphTest {
protected:
    static Handle<OpenScriptFunction> function(const char* in_szName = "f") {
        return Handle<OpenScriptFunction>(new OpenScriptFunction(in_szName));
    }

    Handle<RecordingNode> node(double in_dValue = 1.0) {
        Handle<RecordingNode> pNode(new RecordingNode("body", &m_vCalls));
        pNode->m_vResult[0] = in_dValue;
        return pNode;
    }

    template <class T>
    static bool implement(ScriptFunctionImpl& inout_Function, const Handle<T>& in_pBody) {
        return inout_Function.setImplementation(Handle<Expression>(in_pBody));
    }

    /// f(x) = x + 10
    static Handle<ScriptFunctionImpl> addTen() {
        Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("addTen"));
        pFunction->addArgument("x");
        const Handle<OperatorPlus> pSum(new OperatorPlus);
        pSum->getLeftArgument()->setValue(Handle<Expression>(pFunction->getArgument("x")));
        pSum->getRightArgument()->setValue(Handle<Expression>(constant({10.0})));
        implement(*pFunction, pSum);
        return pFunction;
    }

    static void call(FunctionBaseImpl& inout_Function, double in_dValue) {
        inout_Function.getArgument("x")->setValue(Handle<Expression>(constant({in_dValue})));
    }

    Calls m_vCalls;
};

TEST_F(ScriptFunctionImplTest, NewFunctionHasItsNameAndNoBody) {
    const auto pFunction = function("f");
    EXPECT_STREQ(pFunction->getName(), "f");
    EXPECT_TRUE(pFunction->getImplementation().isNull());
    EXPECT_STREQ(ScriptFunctionImpl::getMemAccountName(), "ScriptFunctionImpl");
}

TEST_F(ScriptFunctionImplTest, EvaluationWithoutABodyFails) {
    const auto pFunction = function();
    DoubleVector vValue{1.0};
    EXPECT_FALSE(pFunction->evaluate(vValue));
    EXPECT_EQ(takeErrors(),
              Texts{logged(LeafLogger, "setImplementation() must be called before evaluate()")});
    EXPECT_FALSE(pFunction->isValid());
}

TEST_F(ScriptFunctionImplTest, NullBodyIsRefused) {
    const auto pFunction = function();
    EXPECT_FALSE(pFunction->setImplementation(Handle<Expression>()));
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, "Can't set a null implementation")});
    EXPECT_TRUE(pFunction->getImplementation().isNull());
}

TEST_F(ScriptFunctionImplTest, ForeignBodyIsRefused) {
    const auto pFunction = function();
    EXPECT_FALSE(implement(*pFunction, Handle<Expression>(new InvalidExpression)));
    EXPECT_EQ(takeErrors(),
              Texts{logged(LeafLogger, "Must use same implementation base for all expressions.")});
    EXPECT_TRUE(pFunction->getImplementation().isNull());
    EXPECT_EQ(childrenOf(*pFunction), Nodes());
}

TEST_F(ScriptFunctionImplTest, BodyIsAChildWhoseValueIsHandedOut) {
    const auto pFunction = function();
    const auto pBody = node();
    EXPECT_TRUE(implement(*pFunction, pBody));
    EXPECT_EQ(pFunction->getImplementation().get(), pBody.get());
    EXPECT_EQ(childrenOf(*pFunction), Nodes{pBody.get()});
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pFunction->evaluate(pValue));
    EXPECT_EQ(pValue.get(), &pBody->m_vResult);
    pBody->invalidate();
    EXPECT_FALSE(pFunction->isValid());
}

TEST_F(ScriptFunctionImplTest, BodyThatMakesALoopIsRefusedAsAChildAndStored) {
    const auto pFunction = function();
    const Handle<VariableImpl> pAbove(new VariableImpl);
    Variable& above = *pAbove;
    above.setValue(Handle<Expression>(pFunction));
    EXPECT_TRUE(implement(*pFunction, pAbove));
    EXPECT_EQ(takeAssertions(), Texts{"!isParent( *in_pChild ) && \"Can't loop on a parent!\""});
    EXPECT_EQ(pFunction->getImplementation().get(), static_cast<ExpressionBaseImpl*>(pAbove.get()));
    EXPECT_EQ(childrenOf(*pFunction), Nodes());
    // Opens the loop, which would keep both alive.
    above.setValue(Handle<Expression>(constant({1.0})));
}

TEST_F(ScriptFunctionImplTest, SecondBodyLeavesTheFirstAChild) {
    const auto pFunction = function();
    const auto pFirst = node(1.0);
    const auto pSecond = node(2.0);
    implement(*pFunction, pFirst);
    implement(*pFunction, pSecond);
    EXPECT_EQ(childrenOf(*pFunction), (Nodes{pFirst.get(), pSecond.get()}));
    EXPECT_EQ(evaluated(*pFunction), Values{2.0});
}

TEST_F(ScriptFunctionImplTest, FailingBodyMakesNoFailingFunction) {
    const auto pFunction = function();
    const auto pBody = node();
    implement(*pFunction, pBody);
    pBody->m_bEvaluates = false;
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pFunction->evaluate(pValue));
    EXPECT_TRUE(pValue.isNull());
    EXPECT_TRUE(pFunction->isValid());

    pBody->m_bEvaluates = true;
    pFunction->invalidate();
    evaluated(*pFunction);
    pBody->m_bEvaluates = false;
    pBody->invalidate();
    EXPECT_TRUE(pFunction->evaluate(pValue));
    EXPECT_EQ(pValue.get(), &pBody->m_vResult);
}

TEST_F(ScriptFunctionImplTest, ValidBodyIsHandedOutWithoutANewEvaluation) {
    const auto pFunction = function();
    const auto pBody = node();
    implement(*pFunction, pBody);
    evaluated(*pBody);
    ASSERT_FALSE(pFunction->isValid());
    m_vCalls.clear();
    EXPECT_EQ(evaluated(*pFunction), Values{1.0});
    EXPECT_EQ(m_vCalls, Calls());
}

TEST_F(ScriptFunctionImplTest, ArgumentsFeedTheBody) {
    const auto pFunction = addTen();
    call(*pFunction, 1.0);
    EXPECT_EQ(evaluated(*pFunction), Values{11.0});
    call(*pFunction, 2.0);
    EXPECT_FALSE(pFunction->isValid());
    EXPECT_EQ(evaluated(*pFunction), Values{12.0});
}

TEST_F(ScriptFunctionImplTest, CopiesHaveArgumentsAndValuesOfTheirOwn) {
    const auto pFunction = addTen();
    call(*pFunction, 1.0);
    const Handle<ScriptFunctionImpl> pFirst(pFunction->copy());
    const Handle<ScriptFunctionImpl> pSecond(pFunction->copy());
    ASSERT_FALSE(pFirst.isNull());
    EXPECT_STREQ(pFirst->getName(), "addTen");
    call(*pFirst, 2.0);
    call(*pSecond, 3.0);
    EXPECT_EQ(evaluated(*pFunction), Values{11.0});
    EXPECT_EQ(evaluated(*pFirst), Values{12.0});
    EXPECT_EQ(evaluated(*pSecond), Values{13.0});
    EXPECT_EQ(pFirst->getArgument("x")->getName(), "x&" + std::to_string(pFirst->getId()));
    // The body reads the copy's own argument.
    EXPECT_TRUE(pFirst->getImplementation()->getChildAt(0)->isChild(*pFirst->getChildAt(0)));
}

TEST_F(ScriptFunctionImplTest, CopyOfAFunctionWithoutABodyHasNone) {
    const Handle<ScriptFunctionImpl> pCopy(function("f")->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "f");
    EXPECT_TRUE(pCopy->getImplementation().isNull());
}

TEST_F(ScriptFunctionImplTest, BodyThatCanNotBeCopiedIsRefusedByTheCopy) {
    const auto pFunction = function();
    const auto pBody = node();
    pBody->m_bCopies = false;
    implement(*pFunction, pBody);
    const Handle<ScriptFunctionImpl> pCopy(pFunction->copy());
    EXPECT_TRUE(pCopy->getImplementation().isNull());
    EXPECT_EQ(takeErrors(), (Texts{logged(NodeLogger, "Failed to copy the expression: "),
                                   logged(LeafLogger, "Can't set a null implementation")}));
}

TEST_F(ScriptFunctionImplTest, ReplaceChildHookFollowsTheBodyOnly) {
    const auto pFunction = function();
    const auto pBody = node();
    const auto pOther = node();
    const Handle<ExpressionBaseImpl> pNew(node());
    implement(*pFunction, pBody);
    pFunction->replaceChild_i(*pOther, pNew);
    EXPECT_EQ(pFunction->getImplementation().get(), pBody.get());
    pFunction->replaceChild_i(*pBody, pNew);
    EXPECT_EQ(pFunction->getImplementation().get(), pNew.get());
}

TEST_F(ScriptFunctionImplTest, BodiesReplacedOneAfterTheOtherLeaveNothingDeadBehind) {
    const auto pFunction = function();
    implement(*pFunction, node(1.0));
    evaluated(*pFunction);
    for (const double dValue : {2.0, 3.0, 4.0}) {
        ExpressionBaseImpl& old = *pFunction->getImplementation();
        old.replace(Handle<ExpressionBaseImpl>(node(dValue)));
        EXPECT_EQ(evaluated(*pFunction), Values{1.0});
    }
    pFunction->invalidate();
    EXPECT_EQ(evaluated(*pFunction), Values{4.0});
}

TEST_F(ScriptFunctionImplTest, FailureBehindAReplacedBodyGivesNoPointerIntoTheOld) {
    const auto pFunction = function();
    implement(*pFunction, node(1.0));
    evaluated(*pFunction);
    pFunction->invalidate();
    const auto pFailing = node();
    pFailing->m_bEvaluates = false;
    pFunction->getImplementation()->replace(Handle<ExpressionBaseImpl>(pFailing));
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pFunction->evaluate(pValue));
    EXPECT_TRUE(pValue.isNull());
}

TEST_F(ScriptFunctionImplTest, ConfigureAndResetSucceed) {
    const auto pFunction = addTen();
    call(*pFunction, 1.0);
    evaluated(*pFunction);
    EXPECT_TRUE(pFunction->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_FALSE(pFunction->isValid());
    EXPECT_TRUE(pFunction->reset());
    EXPECT_EQ(evaluated(*pFunction), Values{11.0});
}

TEST_F(ScriptFunctionImplTest, SealedBodyComputesTheSame) {
    const auto pFunction = addTen();
    const Handle<Variable> pInput(new VariableImpl);
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    pInput->setValue(vFirst);
    pFunction->getArgument("x")->setValue(Handle<Expression>(pInput));
    pFunction->seal();
    EXPECT_EQ(evaluated(*pFunction), Values{11.0});
    pInput->setValue(vSecond);
    EXPECT_FALSE(pFunction->isValid());
    EXPECT_EQ(evaluated(*pFunction), Values{12.0});
}

TEST_F(ScriptFunctionImplTest, RecognisesItselfByThePointerOfItsName) {
    const auto pFunction = function("f");
    EXPECT_TRUE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(pFunction)));
    EXPECT_FALSE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(function("f"))));
    EXPECT_FALSE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(new VariableImpl)));
}

TEST_F(ScriptFunctionImplTest, RecognisesAFunctionBelowThatItImplements) {
    const auto pFunction = function("f");
    const auto pOuter = function("g");
    const auto pOther = function("h");
    pFunction->addChild(Handle<ExpressionBaseImpl>(pOther), false);
    pFunction->addChild(Handle<ExpressionBaseImpl>(pOuter), false);
    EXPECT_FALSE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(pOuter)));
    // Refused as a child, since it stands above, but stored as the body.
    EXPECT_TRUE(implement(*pOuter, pFunction));
    EXPECT_EQ(takeAssertions().size(), 1u);
    EXPECT_TRUE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(pOuter)));
    EXPECT_FALSE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(pOther)));
    // Opens the loop, which would keep both alive.
    EXPECT_TRUE(implement(*pOuter, node()));
}

TEST_F(ScriptFunctionImplTest, RecognitionAsksNoLeafForItsName) {
    const auto pFunction = function();
    const auto pNode = node();
    EXPECT_FALSE(pFunction->isDependantOf_i(Handle<ExpressionBaseImpl>(pNode)));
    EXPECT_EQ(pNode->m_uiNamesAsked, 0u);
}

} // namespace

} // namespace Velmora::Math::Xpr
