#include <velmora/math/xpr/XaryFunction.h>

#include <algorithm>

#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class XaryFunctionTest : public GraphTest {
protected:
    /// A function whose arguments have these values.
    static Handle<RecordingXary> xary(const std::vector<Handle<RecordingNode>>& in_vValues) {
        Handle<RecordingXary> pFunction(new RecordingXary);
        for (std::size_t ui = 0; ui != in_vValues.size(); ++ui) {
            pFunction->addArgument(("a" + std::to_string(ui)).c_str());
            pFunction->getArgument(ui)->setValue(Handle<Expression>(in_vValues[ui]));
        }
        return pFunction;
    }

    static Handle<RecordingNode> node() { return Handle<RecordingNode>(new RecordingNode); }

    static bool evaluate(Expression& inout_Expression) {
        LimitedObjPtr<DoubleVector> pValue;
        return inout_Expression.evaluate(pValue);
    }
};

TEST_F(XaryFunctionTest, NamesOfTheOperators) {
    EXPECT_STREQ(OperatorConcatenate::getNameStatic(), "concat");
    EXPECT_STREQ(OperatorIf::getNameStatic(), "if");
    EXPECT_STREQ(Handle<OperatorConcatenate>(new OperatorConcatenate)->getName(), "unamed");
    EXPECT_STREQ(Handle<OperatorConcatenate>(new OperatorConcatenate("concat"))->getName(),
                 "concat");
    EXPECT_STREQ(Handle<OperatorIf>(new OperatorIf)->getName(), "if");
    EXPECT_STREQ(Handle<OperatorIf>(new OperatorIf("choose"))->getName(), "choose");
    EXPECT_STREQ(Handle<RecordingXary>(new RecordingXary)->getName(), "unamed");
}

TEST_F(XaryFunctionTest, NewOperatorsHaveNoArguments) {
    EXPECT_EQ(Handle<OperatorConcatenate>(new OperatorConcatenate)->getArgumentCount(), 0u);
    EXPECT_EQ(Handle<OperatorIf>(new OperatorIf)->getArgumentCount(), 0u);
}

TEST_F(XaryFunctionTest, OperatorIsCountedUnderTheAccountOfItsFrame) {
    EXPECT_STREQ(XaryFunctionNoT::getMemAccountName(), "XaryFunctionNoT");
    const std::size_t uiBefore = MemAccounts::get("XaryFunctionNoT").liveBlocks;
    const auto pFunction = xary({});
    const auto pNew = pFunction->createNew();
    EXPECT_EQ(MemAccounts::get("XaryFunctionNoT").liveBlocks, uiBefore + 2);
    EXPECT_FALSE(Handle<RecordingXary>(pNew).isNull());
}

TEST_F(XaryFunctionTest, InputsAreTheArgumentsBeforeSealing) {
    const auto pFunction = xary({node(), node()});
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pFunction->evaluate(pValue));
    EXPECT_EQ(pFunction->m_vInputs, childrenOf(*pFunction));
    EXPECT_EQ(pValue.get(), pFunction->m_pOut);
    EXPECT_FALSE(pFunction->getChildAt(0)->isValid()) << "the frame evaluates nothing itself";
}

TEST_F(XaryFunctionTest, ChangedArgumentsAreSeenBeforeSealing) {
    const auto pFunction = xary({node(), node()});
    evaluate(*pFunction);
    pFunction->addArgument("a0");
    pFunction->addArgument("a2");
    pFunction->invalidate();
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs.size(), 3u);
    EXPECT_EQ(pFunction->m_vInputs, childrenOf(*pFunction));
}

TEST_F(XaryFunctionTest, WithoutArgumentsTheListIsEmpty) {
    const auto pFunction = xary({});
    EXPECT_TRUE(evaluate(*pFunction));
    EXPECT_EQ(pFunction->m_uiCalculations, 1u);
    EXPECT_EQ(pFunction->m_vInputs, Nodes());
    pFunction->seal();
    pFunction->invalidate();
    EXPECT_TRUE(evaluate(*pFunction));
    EXPECT_EQ(pFunction->m_vInputs, Nodes());
}

TEST_F(XaryFunctionTest, FailedCalculationFailsTheFunction) {
    const auto pFunction = xary({});
    pFunction->m_bCalculates = false;
    EXPECT_FALSE(evaluate(*pFunction));
    EXPECT_FALSE(pFunction->isValid());
}

TEST_F(XaryFunctionTest, InputsAreTheComputingNodesAfterSealing) {
    const auto pFirst = node();
    const auto pSecond = node();
    auto pFunction = xary({pFirst, pSecond});
    pFunction->seal();
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, (Nodes{pFirst.get(), pSecond.get()}));
    EXPECT_EQ(parentsOf(*pFirst), (Nodes{pFunction->getChildAt(0).get(), pFunction.get()}));
    evaluated(*pSecond);
    pSecond->invalidate();
    EXPECT_FALSE(pFunction->isValid());
    pFunction = nullptr;
    EXPECT_EQ(parentsOf(*pFirst), Nodes());
    EXPECT_EQ(parentsOf(*pSecond), Nodes());
}

TEST_F(XaryFunctionTest, ValueSetAfterSealingIsNotSeen) {
    const auto pFirst = node();
    const auto pFunction = xary({pFirst});
    pFunction->seal();
    pFunction->getArgument(std::size_t(0))->setValue(Handle<Expression>(node()));
    pFunction->invalidate();
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, Nodes{pFirst.get()});
}

TEST_F(XaryFunctionTest, SealedFunctionHoldsAVariableWithoutAValueItself) {
    const Handle<RecordingXary> pFunction(new RecordingXary);
    pFunction->addArgument("a");
    pFunction->seal();
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, childrenOf(*pFunction));
    EXPECT_EQ(parentsOf(*pFunction->getChildAt(0)), Nodes(2, pFunction.get()));
}

TEST_F(XaryFunctionTest, SealingOverAFunctionWithoutABodyFailsAnAssertion) {
    const Handle<RecordingXary> pFunction(new RecordingXary);
    pFunction->addArgument("a");
    pFunction->getArgument("a")->setValue(Handle<Expression>(new ScriptFunctionImpl("f")));
    pFunction->seal();
    EXPECT_EQ(takeAssertions(), Texts{"!pExpr.isNull()"});
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, Nodes{nullptr});
}

TEST_F(XaryFunctionTest, SealingOverAMissingArgumentFailsAnAssertionAndGoesOn) {
    const Handle<RecordingXary> pFunction(new RecordingXary);
    const Handle<VariableImpl> pAbove(new VariableImpl);
    Variable& above = *pAbove;
    above.setValue(Handle<Expression>(pFunction));
    pFunction->addArgument("a", pAbove);
    pFunction->addArgument("b");
    EXPECT_EQ(takeAssertions().size(), 1u);
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, (Nodes{nullptr, pFunction->getChildAt(0).get()}));
    pFunction->seal();
    for (const std::string& strAssertion : takeAssertions()) {
        EXPECT_EQ(strAssertion, "!pExpr.isNull()");
    }
    pFunction->invalidate();
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, (Nodes{nullptr, pFunction->getChildAt(0).get()}));
}

TEST_F(XaryFunctionTest, FunctionSealedTwiceLeavesAnEntryBehindThatNothingFollows) {
    const auto pChild = node();
    auto pFunction = xary({pChild});
    pFunction->seal();
    pFunction->seal();
    EXPECT_EQ(parentsOf(*pChild).size(), 3u);
    pFunction = nullptr;
    EXPECT_EQ(parentsOf(*pChild).size(), 1u);
    evaluated(*pChild);
    pChild->invalidate();
    pChild->seal();
    evaluated(*pChild);
    pChild->invalidate();
    EXPECT_FALSE(pChild->isParent(*node()));
}

TEST_F(XaryFunctionTest, ArgumentsThatOutliveAFunctionSealedTwiceDoNotFollowIt) {
    for (const std::size_t uiArguments : {2, 12}) {
        Handle<RecordingXary> pFunction(new RecordingXary);
        for (std::size_t ui = 0; ui != uiArguments; ++ui) {
            pFunction->addArgument(("a" + std::to_string(ui)).c_str());
        }
        // Without a value each is what the function reads, and its child as well.
        const Handle<ExpressionBaseImpl> pFirst = pFunction->getChildAt(0);
        pFunction->seal();
        pFunction->seal();
        EXPECT_EQ(parentsOf(*pFirst), Nodes(3, pFunction.get()));
        const ExpressionBaseImpl* const pGone = pFunction.get();
        pFunction = nullptr;
        const Nodes vParents = parentsOf(*pFirst);
        ASSERT_EQ(vParents.size(), 1u);
        EXPECT_NE(vParents.front(), pGone);
        const DoubleVector vOne{1.0};
        Variable& variable = *pFirst->asVariable();
        ASSERT_TRUE(variable.setValue(vOne));
        EXPECT_EQ(evaluated(*pFirst), Values{1.0});
        pFirst->invalidate();
        EXPECT_FALSE(pFirst->isValid());
    }
}

TEST_F(XaryFunctionTest, FunctionSealedAgainOverOtherNodesLeavesTheFirstOnes) {
    const auto pFirst = node();
    const auto pSecond = node();
    auto pFunction = xary({pFirst, pFirst});
    pFunction->seal();
    pFunction->getArgument(std::size_t(0))->setValue(Handle<Expression>(pSecond));
    pFunction->seal();
    pFunction->getArgument(1)->setValue(Handle<Expression>(pSecond));
    pFunction->seal();
    evaluate(*pFunction);
    EXPECT_EQ(pFunction->m_vInputs, Nodes(2, pSecond.get()));
    const Nodes vParents = parentsOf(*pFirst);
    EXPECT_EQ(std::count(vParents.begin(), vParents.end(), pFunction.get()), 0);
    evaluated(*pSecond);
    pSecond->invalidate();
    EXPECT_FALSE(pFunction->isValid());
    pFunction = nullptr;
    for (const auto& pNode : {pFirst, pSecond}) {
        evaluated(*pNode);
        pNode->invalidate();
        EXPECT_FALSE(pNode->isParent(*node()));
    }
}

TEST_F(XaryFunctionTest, CopyHasTheArgumentsAndIsNotSealed) {
    const Handle<OperatorConcatenate> pConcatenation(new OperatorConcatenate("concat"));
    for (const char* szName : {"a", "b"}) {
        pConcatenation->addArgument(szName);
        pConcatenation->getArgument(szName)->setValue(Handle<Expression>(constant({1.0, 2.0})));
        if (pConcatenation->getArgumentCount() == 1) {
            EXPECT_EQ(evaluated(*pConcatenation), (Values{1.0, 2.0}));
        }
    }
    pConcatenation->seal();
    const Handle<OperatorConcatenate> pCopy(pConcatenation->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "concat");
    EXPECT_EQ(evaluated(*pCopy), (Values{1.0, 2.0, 1.0, 2.0}));
    EXPECT_TRUE(pCopy->getChildAt(0)->isValid()) << "it reads its arguments";
}

TEST_F(XaryFunctionTest, ConfigureAndResetSucceed) {
    const auto pFunction = xary({node()});
    evaluate(*pFunction);
    EXPECT_TRUE(pFunction->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_FALSE(pFunction->isValid());
    EXPECT_TRUE(pFunction->reset());
    EXPECT_FALSE(pFunction->isDependantOf(Handle<ExpressionBaseImpl>(new VariableImpl)));
}

} // namespace

} // namespace Velmora::Math::Xpr
