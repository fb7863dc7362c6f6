#include <velmora/math/xpr/BinaryOperatorImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/InvalidVariable.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include <algorithm>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

std::string noValue(const std::string& in_strLeft) {
    return logged(NodeLogger, "Can't evaluate a variable (" + in_strLeft +
                                  ") without setting its value first!");
}

class BinaryOperatorImplTest : public GraphTest {
protected:
    static Handle<RecordingBinary> binary() { return Handle<RecordingBinary>(new RecordingBinary); }

    Handle<RecordingNode> node(double in_dValue = 1.0, const char* in_szName = "node") {
        Handle<RecordingNode> pNode(new RecordingNode(in_szName, &m_vCalls));
        pNode->m_vResult[0] = in_dValue;
        return pNode;
    }

    template <class T>
    static void setLeft(BinaryOperator& inout_Operator, const Handle<T>& in_pValue) {
        inout_Operator.getLeftArgument()->setValue(Handle<Expression>(in_pValue));
    }

    template <class T>
    static void setRight(BinaryOperator& inout_Operator, const Handle<T>& in_pValue) {
        inout_Operator.getRightArgument()->setValue(Handle<Expression>(in_pValue));
    }

    static Handle<ExpressionBaseImpl> left(const BinaryOperator& in_Operator) {
        return Handle<ExpressionBaseImpl>(in_Operator.getLeftArgument());
    }

    static Handle<ExpressionBaseImpl> right(const BinaryOperator& in_Operator) {
        return Handle<ExpressionBaseImpl>(in_Operator.getRightArgument());
    }

    Calls m_vCalls;
};

TEST_F(BinaryOperatorImplTest, NewOperatorHasTwoArgumentsWithoutAValue) {
    const auto pOperator = binary();
    ASSERT_EQ(pOperator->getArgumentCount(), 2u);
    const std::string strId = std::to_string(pOperator->getId());
    EXPECT_EQ(pOperator->getArgument(std::size_t(0))->getName(), "Left&" + strId);
    EXPECT_EQ(pOperator->getArgument(1)->getName(), "Right&" + strId);
    EXPECT_EQ(pOperator->getLeftArgument().get(), pOperator->getArgument("Left").get());
    EXPECT_EQ(pOperator->getRightArgument().get(), pOperator->getArgument("Right").get());
    EXPECT_TRUE(Handle<VariableImpl>(pOperator->getLeftArgument())->getValue().isNull());
    EXPECT_STREQ(BinaryOperatorImplNoT::getMemAccountName(), "BinaryOperatorImpl");
}

TEST_F(BinaryOperatorImplTest, NameIsUnamedUnlessGiven) {
    struct Unnamed : BinaryOperatorImpl<Unnamed> {
        bool calculate(const DoubleVector&, const DoubleVector&, DoubleVector&) override {
            return true;
        }
    };
    EXPECT_STREQ(Handle<Unnamed>(new Unnamed)->getName(), "unamed");
    EXPECT_STREQ(Handle<RecordingBinary>(new RecordingBinary("g"))->getName(), "g");
}

TEST_F(BinaryOperatorImplTest, OperatorIsCountedUnderTheAccountOfItsFrame) {
    const std::size_t uiBefore = MemAccounts::get("BinaryOperatorImpl").liveBlocks;
    const auto pOperator = binary();
    const auto pNew = pOperator->createNew();
    EXPECT_EQ(MemAccounts::get("BinaryOperatorImpl").liveBlocks, uiBefore + 2);
    EXPECT_FALSE(Handle<RecordingBinary>(pNew).isNull());
    EXPECT_STREQ(pNew->getName(), "record");
}

TEST_F(BinaryOperatorImplTest, WithoutALeftValueTheLeftSideFails) {
    const auto pOperator = binary();
    const auto pRight = node();
    setRight(*pOperator, pRight);
    DoubleVector vResult{5.0};
    EXPECT_FALSE(pOperator->evaluate(vResult));
    EXPECT_EQ(takeErrors(), (Texts{noValue(pOperator->getLeftArgument()->getName()),
                                   logged(NodeLogger, "Failed to evaluate left expression")}));
    EXPECT_EQ(m_vCalls, Calls());
    EXPECT_EQ(pOperator->m_uiCalculations, 0u);
    EXPECT_EQ(valuesOf(vResult), Values{5.0});
}

TEST_F(BinaryOperatorImplTest, WithoutARightValueTheRightSideFailsBehindTheLeft) {
    const auto pOperator = binary();
    setLeft(*pOperator, node());
    DoubleVector vResult;
    EXPECT_FALSE(pOperator->evaluate(vResult));
    EXPECT_EQ(takeErrors(), (Texts{noValue(pOperator->getRightArgument()->getName()),
                                   logged(NodeLogger, "Failed to evaluate right expression")}));
    EXPECT_EQ(m_vCalls, Calls{"node.evaluate_i"});
    EXPECT_TRUE(left(*pOperator)->isValid());
    EXPECT_EQ(pOperator->m_uiCalculations, 0u);
}

TEST_F(BinaryOperatorImplTest, LeftSideIsEvaluatedFirstAndTheResultBelongsToTheOperator) {
    const auto pOperator = binary();
    const auto pLeft = node(1.0, "left");
    const auto pRight = node(2.0, "right");
    setLeft(*pOperator, pLeft);
    setRight(*pOperator, pRight);
    m_vCalls.clear();
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_TRUE(pOperator->evaluate(pValue));
    EXPECT_EQ(m_vCalls, (Calls{"left.evaluate_i", "right.evaluate_i"}));
    EXPECT_EQ(pOperator->m_pLeft, &pLeft->m_vResult);
    EXPECT_EQ(pOperator->m_pRight, &pRight->m_vResult);
    EXPECT_EQ(pValue.get(), pOperator->m_pOut);
    EXPECT_EQ(valuesOf(*pValue), (Values{1.0, 2.0}));
    EXPECT_TRUE(left(*pOperator)->isValid());
}

TEST_F(BinaryOperatorImplTest, ResultKeepsItsBlockFromFrameToFrame) {
    const auto pOperator = binary();
    setLeft(*pOperator, node());
    setRight(*pOperator, node());
    LimitedObjPtr<DoubleVector> pValue;
    pOperator->evaluate(pValue);
    const double* pBlock = pValue->begin();
    pOperator->invalidate();
    pOperator->evaluate(pValue);
    EXPECT_EQ(pValue->begin(), pBlock);
    EXPECT_EQ(pOperator->m_uiCalculations, 2u);
}

TEST_F(BinaryOperatorImplTest, FailedCalculationFailsTheOperator) {
    const auto pOperator = binary();
    setLeft(*pOperator, node());
    setRight(*pOperator, node());
    pOperator->m_bCalculates = false;
    LimitedObjPtr<DoubleVector> pValue;
    EXPECT_FALSE(pOperator->evaluate(pValue));
    EXPECT_TRUE(pValue.isNull());
    EXPECT_FALSE(pOperator->isValid());
}

TEST_F(BinaryOperatorImplTest, SideThatNeverHadAValueFailsWithTheOperatorsName) {
    for (const bool bSealed : {false, true}) {
        for (const bool bLeft : {false, true}) {
            SCOPED_TRACE(bSealed ? "sealed" : "not sealed");
            const auto pOperator = binary();
            const auto pGood = node();
            const auto pFailing = node();
            pFailing->m_bEvaluates = false;
            pOperator->setSourceInfo("s.xpr(1,2)");
            setLeft(*pOperator, bLeft ? pFailing : pGood);
            setRight(*pOperator, bLeft ? pGood : pFailing);
            if (bSealed) {
                pOperator->seal();
            }
            DoubleVector vResult{5.0};
            EXPECT_FALSE(pOperator->evaluate(vResult));
            EXPECT_EQ(takeErrors(),
                      Texts{logged(NodeLogger, "s.xpr(1,2):no value to compute from: record")});
            EXPECT_EQ(valuesOf(vResult), Values{5.0});
            EXPECT_EQ(pOperator->m_uiCalculations, 0u);
            EXPECT_FALSE(pOperator->isValid());
        }
    }
}

TEST_F(BinaryOperatorImplTest, ArgumentsAreKeptFromTheFirstCallOn) {
    const auto pOperator = binary();
    const Handle<Variable> pOldLeft = pOperator->getLeftArgument();
    pOperator->addArgument("Left");
    pOperator->addArgument("Right");
    EXPECT_EQ(pOperator->getLeftArgument().get(), pOldLeft.get());
    EXPECT_NE(pOperator->getArgument("Left").get(), pOldLeft.get());
    EXPECT_EQ(pOperator->getRightArgument().get(), pOperator->getArgument("Right").get());
}

TEST_F(BinaryOperatorImplTest, MissingArgumentsAreReportedAndInvalid) {
    struct Orphan : RecordingBinary {
        using RecordingBinary::getArgument;
        Handle<Variable> getArgument(const char*) const override { return Handle<Variable>(); }
    };
    const Handle<Orphan> pOrphan(new Orphan);
    EXPECT_FALSE(Handle<InvalidVariable>(pOrphan->getLeftArgument()).isNull());
    EXPECT_EQ(takeErrors(),
              Texts{logged(NodeLogger, "Can't get left argument. Make sure it was successfully set "
                                       "before calling this method.")});
    EXPECT_FALSE(Handle<InvalidVariable>(pOrphan->getRightArgument()).isNull());
    EXPECT_EQ(takeErrors(),
              Texts{logged(NodeLogger, "Can't get right argument. Make sure it was successfully "
                                       "set before calling this method.")});
    EXPECT_EQ(pOrphan->getRightArgument().get(), pOrphan->getRightArgument().get());
    takeErrors();
    DoubleVector vResult;
    EXPECT_FALSE(pOrphan->evaluate(vResult));
    EXPECT_EQ(takeErrors(),
              (Texts{logged(NodeLogger, "Can't get left argument. Make sure it was successfully "
                                        "set before calling this method."),
                     logged(NodeLogger, "Failed to evaluate left expression")}));
    pOrphan->seal();
    EXPECT_EQ(takeAssertions(), (Texts{"!pExpr.isNull()", "!pExpr.isNull()"}));
    takeErrors();
    EXPECT_FALSE(pOrphan->evaluate(vResult));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, ":no value to compute from: record")});
}

TEST_F(BinaryOperatorImplTest, SealedOperatorLeavesItsArgumentsInvalid) {
    const auto pOperator = binary();
    const Handle<VariableImpl> pBetween(new VariableImpl);
    const auto pLeft = node(1.0);
    Variable& between = *pBetween;
    between.setValue(Handle<Expression>(pLeft));
    setLeft(*pOperator, pBetween);
    setRight(*pOperator, node(2.0));
    pOperator->seal();
    EXPECT_EQ(evaluated(*pOperator), (Values{1.0, 2.0}));
    EXPECT_TRUE(pLeft->isValid());
    EXPECT_FALSE(pBetween->isValid());
    EXPECT_FALSE(left(*pOperator)->isValid());
    EXPECT_FALSE(right(*pOperator)->isValid());
}

TEST_F(BinaryOperatorImplTest, SealedOperatorReadsThroughScriptFunctions) {
    const auto pOperator = binary();
    const auto pBody = node(3.0);
    const Handle<ScriptFunctionImpl> pFunction(new ScriptFunctionImpl("f"));
    pFunction->setImplementation(Handle<Expression>(pBody));
    setLeft(*pOperator, pFunction);
    setRight(*pOperator, pBody);
    pOperator->seal();
    EXPECT_EQ(evaluated(*pOperator), (Values{3.0, 3.0}));
    EXPECT_FALSE(pFunction->isValid());
    EXPECT_EQ(pOperator->m_pLeft, &pBody->m_vResult);
}

TEST_F(BinaryOperatorImplTest, SealedOperatorIsInvalidatedByItsInputsDirectly) {
    const auto pOperator = binary();
    const Handle<VariableImpl> pInput(new VariableImpl);
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& input = *pInput;
    input.setValue(vFirst);
    setLeft(*pOperator, pInput);
    setRight(*pOperator, constant({9.0}));
    pOperator->seal();
    EXPECT_EQ(evaluated(*pOperator), (Values{1.0, 9.0}));
    input.setValue(vSecond);
    EXPECT_FALSE(pOperator->isValid());
    EXPECT_EQ(evaluated(*pOperator), (Values{2.0, 9.0}));
    EXPECT_EQ(pOperator->m_uiCalculations, 2u);
}

TEST_F(BinaryOperatorImplTest, SealedOperatorsInAChainAreInvalidatedUpToTheRoot) {
    const Handle<VariableImpl> pInput(new VariableImpl);
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    Variable& input = *pInput;
    input.setValue(vFirst);
    const Handle<OperatorPlus> pInner(new OperatorPlus);
    const Handle<OperatorPlus> pOuter(new OperatorPlus);
    setLeft(*pInner, pInput);
    setRight(*pInner, pInput);
    setLeft(*pOuter, pInner);
    setRight(*pOuter, pInput);
    pOuter->seal();
    EXPECT_EQ(evaluated(*pOuter), Values{3.0});
    input.setValue(vSecond);
    EXPECT_FALSE(pOuter->isValid());
    EXPECT_FALSE(pInner->isValid());
    EXPECT_EQ(evaluated(*pOuter), Values{6.0});
}

TEST_F(BinaryOperatorImplTest, SealingAddsAParentAndDestructionTakesItOut) {
    auto pOperator = binary();
    const auto pLeft = node();
    const auto pRight = node();
    setLeft(*pOperator, pLeft);
    setRight(*pOperator, pRight);
    const ExpressionBaseImpl* pLeftArgument = left(*pOperator).get();
    EXPECT_EQ(parentsOf(*pLeft), Nodes{pLeftArgument});
    pOperator->seal();
    EXPECT_EQ(parentsOf(*pLeft), (Nodes{pLeftArgument, pOperator.get()}));
    EXPECT_EQ(parentsOf(*pRight), (Nodes{right(*pOperator).get(), pOperator.get()}));
    pOperator = nullptr;
    EXPECT_EQ(parentsOf(*pLeft), Nodes());
    EXPECT_EQ(parentsOf(*pRight), Nodes());
}

TEST_F(BinaryOperatorImplTest, OperatorOfOneNodeOnBothSidesRegistersTwice) {
    auto pOperator = binary();
    const auto pShared = node();
    setLeft(*pOperator, pShared);
    setRight(*pOperator, pShared);
    pOperator->seal();
    EXPECT_EQ(parentsOf(*pShared).size(), 4u);
    pOperator = nullptr;
    EXPECT_EQ(parentsOf(*pShared), Nodes());
}

TEST_F(BinaryOperatorImplTest, OperatorSealedTwiceLeavesAnEntryBehindThatNothingFollows) {
    const auto pChild = node();
    const auto pStaying = node();
    pStaying->addChild(Handle<ExpressionBaseImpl>(pChild), true);
    auto pOperator = binary();
    setLeft(*pOperator, pChild);
    setRight(*pOperator, constant({1.0}));
    pOperator->seal();
    pOperator->seal();
    const ExpressionBaseImpl* pGone = pOperator.get();
    const Nodes vBefore = parentsOf(*pChild);
    EXPECT_EQ(std::count(vBefore.begin(), vBefore.end(), pGone), 2);
    pOperator = nullptr;
    const Nodes vAfter = parentsOf(*pChild);
    EXPECT_EQ(vAfter.size(), 2u);
    EXPECT_EQ(vAfter.front(), pStaying.get());
    EXPECT_EQ(std::count(vAfter.begin(), vAfter.end(), pGone), 0);

    // All that walks towards the parents.
    evaluated(*pStaying);
    evaluated(*pChild);
    pChild->invalidate();
    EXPECT_FALSE(pStaying->isValid());
    pChild->seal();
    evaluated(*pStaying);
    evaluated(*pChild);
    pChild->invalidate();
    EXPECT_FALSE(pStaying->isValid());
    EXPECT_FALSE(pChild->isParent(*node()));
    EXPECT_FALSE(pChild->isDependantOf(Handle<ExpressionBaseImpl>(new VariableImpl)));
    EXPECT_FALSE(pChild->removeParent(node()));
    EXPECT_EQ(takeErrors().size(), 1u);
    EXPECT_EQ(takeAssertions(), Texts{"false"});
    EXPECT_EQ(textOf(*pChild), "");
    EXPECT_TRUE(pChild->replace(Handle<ExpressionBaseImpl>(constant({1.0}))));
    EXPECT_EQ(takeAssertions(), Texts{"iteFound != m_Childs.end()"});
    EXPECT_FALSE(pStaying->isChild(*pChild));
}

TEST_F(BinaryOperatorImplTest, OperatorSealedTwiceOverAnArgumentWithoutAValueLeavesIt) {
    // Here the operator is the argument's parent by its link as well.
    auto pOperator = binary();
    const Handle<ExpressionBaseImpl> pArgument = left(*pOperator);
    pOperator->seal();
    pOperator->seal();
    EXPECT_EQ(parentsOf(*pArgument), (Nodes(3, pOperator.get())));
    pOperator = nullptr;
    EXPECT_EQ(parentsOf(*pArgument).size(), 1u);
    pArgument->invalidate();
    Handle<Variable>(pArgument)->setValue(Handle<Expression>(constant({1.0})));
    evaluated(*pArgument);
    pArgument->invalidate();
    EXPECT_FALSE(pArgument->isValid());
}

TEST_F(BinaryOperatorImplTest, OperatorSealedAgainOverOtherNodesLeavesTheFirstOnes) {
    const auto pFirst = node(1.0);
    const auto pSecond = node(2.0);
    auto pOperator = binary();
    setLeft(*pOperator, pFirst);
    setRight(*pOperator, pFirst);
    pOperator->seal();
    setLeft(*pOperator, pSecond);
    pOperator->seal();
    EXPECT_EQ(evaluated(*pOperator), (Values{2.0, 1.0}));
    setRight(*pOperator, pSecond);
    pOperator->seal();
    pOperator->invalidate();
    EXPECT_EQ(evaluated(*pOperator), (Values{2.0, 2.0}));
    const Nodes vParents = parentsOf(*pFirst);
    EXPECT_EQ(std::count(vParents.begin(), vParents.end(), pOperator.get()), 0);
    pOperator = nullptr;
    for (const auto& pNode : {pFirst, pSecond}) {
        evaluated(*pNode);
        pNode->invalidate();
        pNode->seal();
        evaluated(*pNode);
        pNode->invalidate();
        EXPECT_FALSE(pNode->isParent(*node()));
    }
}

TEST_F(BinaryOperatorImplTest, FailedChildOfASealedOperatorLeavesTheValueBefore) {
    const auto pOperator = binary();
    const auto pLeft = node(1.0);
    const auto pRight = node(2.0);
    setLeft(*pOperator, pLeft);
    setRight(*pOperator, pRight);
    pOperator->seal();
    evaluated(*pOperator);
    pLeft->m_bEvaluates = false;
    pLeft->invalidate();
    pRight->m_vResult[0] = 3.0;
    EXPECT_FALSE(pOperator->isValid());
    EXPECT_EQ(evaluated(*pOperator), (Values{1.0, 3.0}));
    EXPECT_TRUE(pOperator->isValid());
}

TEST_F(BinaryOperatorImplTest, ValueBeforeSealingServesAFailureAfterIt) {
    const auto pOperator = binary();
    const auto pLeft = node(1.0);
    setLeft(*pOperator, pLeft);
    setRight(*pOperator, node(2.0));
    evaluated(*pOperator);
    pOperator->seal();
    pLeft->m_bEvaluates = false;
    pLeft->invalidate();
    EXPECT_EQ(evaluated(*pOperator), (Values{1.0, 2.0}));
}

TEST_F(BinaryOperatorImplTest, ValueOfANodeThatIsGoneServesNoFailure) {
    const auto pFailing = node();
    pFailing->m_bEvaluates = false;
    for (const bool bSealedBefore : {false, true}) {
        for (const bool bLeft : {true, false}) {
            const auto pOperator = binary();
            setLeft(*pOperator, node(1.0));
            setRight(*pOperator, node(2.0));
            if (bSealedBefore) {
                pOperator->seal();
            }
            evaluated(*pOperator);
            bLeft ? setLeft(*pOperator, pFailing) : setRight(*pOperator, pFailing);
            pOperator->seal();
            pOperator->invalidate();
            DoubleVector vResult;
            EXPECT_FALSE(pOperator->evaluate(vResult)) << bLeft;
            EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, ":no value to compute from: record")});
        }
    }
}

TEST_F(BinaryOperatorImplTest, SealedOperatorGoesOnReadingTheNodeThatItFound) {
    const auto pOperator = binary();
    setLeft(*pOperator, node(1.0));
    setRight(*pOperator, node(2.0));
    pOperator->seal();
    setLeft(*pOperator, node(5.0));
    pOperator->invalidate();
    EXPECT_EQ(evaluated(*pOperator), (Values{1.0, 2.0}));
}

TEST_F(BinaryOperatorImplTest, CopyHasTheNameAndCopiesOfTheArguments) {
    const Handle<RecordingBinary> pOperator(new RecordingBinary("mine"));
    setLeft(*pOperator, constant({1.0}));
    setRight(*pOperator, constant({2.0}));
    pOperator->seal();
    evaluated(*pOperator);
    const Handle<RecordingBinary> pCopy(pOperator->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "mine");
    EXPECT_EQ(childrenOf(*pCopy).size(), 2u);
    EXPECT_FALSE(pCopy->isValid());
    EXPECT_EQ(evaluated(*pCopy), (Values{1.0, 2.0}));
    EXPECT_TRUE(left(*pCopy)->isValid()) << "the copy isn't sealed";
    EXPECT_NE(left(*pCopy).get(), left(*pOperator).get());
    EXPECT_NE(pCopy->m_pOut, pOperator->m_pOut);
}

TEST_F(BinaryOperatorImplTest, ConfigureAndResetSucceedAndInvalidate) {
    const auto pOperator = binary();
    setLeft(*pOperator, node());
    setRight(*pOperator, node());
    evaluated(*pOperator);
    EXPECT_TRUE(pOperator->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_FALSE(pOperator->isValid());
    evaluated(*pOperator);
    EXPECT_TRUE(pOperator->reset());
    EXPECT_FALSE(pOperator->isValid());
    EXPECT_EQ(evaluated(*pOperator), (Values{1.0, 1.0}));
}

TEST_F(BinaryOperatorImplTest, RecognisesNothingInItself) {
    const auto pOperator = binary();
    EXPECT_FALSE(pOperator->isDependantOf(Handle<ExpressionBaseImpl>(pOperator)));
    EXPECT_FALSE(pOperator->isDependantOf(Handle<ExpressionBaseImpl>(new VariableImpl)));
}

} // namespace

} // namespace Velmora::Math::Xpr
