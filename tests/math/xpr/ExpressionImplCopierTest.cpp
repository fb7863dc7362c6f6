#include <velmora/math/xpr/ExpressionImplCopier.h>

#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class ExpressionImplCopierTest : public GraphTest {
protected:
    Handle<RecordingNode> node(const char* in_szName = "node") {
        return Handle<RecordingNode>(new RecordingNode(in_szName, &m_vCalls));
    }

    static void add(RecordingNode& inout_Parent, const Handle<RecordingNode>& in_pChild) {
        inout_Parent.addChild(Handle<ExpressionBaseImpl>(in_pChild), true);
    }

    Calls m_vCalls;
};

TEST_F(ExpressionImplCopierTest, NewCopierKnowsNothing) {
    const ExpressionImplCopier copier;
    EXPECT_TRUE(copier.getCopy(*node()).isNull());
    EXPECT_TRUE(copier.getParameterCopy(ParameterImpl()).isNull());
    EXPECT_STREQ(ExpressionImplCopier::getMemAccountName(), "ExpressionImplCopier");
}

TEST_F(ExpressionImplCopierTest, RegisteredCopyIsFoundAndHeld) {
    const auto pSource = node();
    const RecordingNode* pCopy = nullptr;
    ExpressionImplCopier copier;
    {
        const auto pNode = node();
        pCopy = pNode.get();
        EXPECT_TRUE(copier.registerCopy(*pSource, Handle<ExpressionBaseImpl>(pNode)));
    }
    EXPECT_EQ(copier.getCopy(*pSource).get(), pCopy);
    EXPECT_EQ(copier.getCopy(*pSource).getReferenceCount(), 2);
}

TEST_F(ExpressionImplCopierTest, NullCopyIsRefused) {
    ExpressionImplCopier copier;
    EXPECT_FALSE(copier.registerCopy(*node(), Handle<ExpressionBaseImpl>()));
    EXPECT_FALSE(copier.registerParameter(ParameterImpl(), Handle<ParameterImpl>()));
    EXPECT_EQ(takeAssertions(), (Texts{"!in_pCopy.isNull()", "!in_pCopy.isNull()"}));
}

TEST_F(ExpressionImplCopierTest, SecondCopyIsRefusedAndTheFirstStands) {
    ExpressionImplCopier copier;
    const auto pSource = node();
    const auto pFirst = node();
    copier.registerCopy(*pSource, Handle<ExpressionBaseImpl>(pFirst));
    EXPECT_FALSE(copier.registerCopy(*pSource, Handle<ExpressionBaseImpl>(node())));
    EXPECT_EQ(takeErrors(),
              Texts{logged(CopierLogger, "Original expression Id is already in map, should not "
                                         "have tried to register its copy.")});
    EXPECT_EQ(copier.getCopy(*pSource).get(), pFirst.get());
}

TEST_F(ExpressionImplCopierTest, SecondCopyOfAParameterIsRefusedAndTheFirstStands) {
    ExpressionImplCopier copier;
    const Handle<ParameterImpl> pSource(new ParameterImpl);
    const Handle<ParameterImpl> pFirst(new ParameterImpl);
    EXPECT_TRUE(copier.registerParameter(*pSource, pFirst));
    EXPECT_FALSE(copier.registerParameter(*pSource, Handle<ParameterImpl>(new ParameterImpl)));
    EXPECT_EQ(takeErrors(),
              Texts{logged(CopierLogger, "Original Parameter Id is already in map, should not have "
                                         "tried to register its copy.")});
    EXPECT_EQ(copier.getParameterCopy(*pSource).get(), pFirst.get());
}

TEST_F(ExpressionImplCopierTest, EveryOperationIsTraced) {
    const auto pNode = node();
    const Handle<ParameterImpl> pParameter(new ParameterImpl);
    ExpressionImplCopier copier;
    LogCapture logs(CopierLogger, log4cplus::TRACE_LOG_LEVEL);
    copier.getCopy(*pNode);
    copier.getParameterCopy(*pParameter);
    copier.registerCopy(*pNode, Handle<ExpressionBaseImpl>(pNode));
    copier.registerParameter(*pParameter, pParameter);
    Texts vExpected;
    for (const char* szOperation :
         {"getCopy", "getParameterCopy", "registerCopy", "registerParameter"}) {
        for (const char* szMark : {"ENTER: ", "EXIT: "}) {
            vExpected.push_back(logged(
                CopierLogger, szMark + ("ExpressionImplCopier::" + std::string(szOperation))));
        }
    }
    EXPECT_EQ(take(logs, log4cplus::TRACE_LOG_LEVEL), vExpected);
}

TEST_F(ExpressionImplCopierTest, DiamondIsCopiedToADiamondChildrenFirst) {
    const auto pTop = node("top");
    const auto pLeft = node("left");
    const auto pRight = node("right");
    const auto pShared = node("shared");
    add(*pTop, pLeft);
    add(*pTop, pRight);
    add(*pLeft, pShared);
    add(*pRight, pShared);
    m_vCalls.clear();
    ExpressionImplCopier copier;
    const auto pCopy = pTop->copy(copier);
    Calls vCopies;
    for (const std::string& strCall : m_vCalls) {
        if (strCall.find("copy_i") != std::string::npos) {
            vCopies.push_back(strCall);
        }
    }
    EXPECT_EQ(vCopies, (Calls{"top.copy_i", "left.copy_i", "shared.copy_i", "right.copy_i"}));
    ASSERT_EQ(childrenOf(*pCopy).size(), 2u);
    const auto pSharedCopy = pCopy->getChildAt(0)->getChildAt(0);
    EXPECT_EQ(pCopy->getChildAt(1)->getChildAt(0).get(), pSharedCopy.get());
    EXPECT_EQ(parentsOf(*pSharedCopy),
              (Nodes{pCopy->getChildAt(0).get(), pCopy->getChildAt(1).get()}));
    EXPECT_EQ(copier.getCopy(*pTop).get(), pCopy.get());
    EXPECT_EQ(copier.getCopy(*pShared).get(), pSharedCopy.get());
}

TEST_F(ExpressionImplCopierTest, RootsCopiedWithOneCopierShareWhatTheirSourcesShare) {
    const auto pFirst = node();
    const auto pSecond = node();
    const auto pShared = node();
    add(*pFirst, pShared);
    add(*pSecond, pShared);
    ExpressionImplCopier copier;
    const auto pFirstCopy = pFirst->copy(copier);
    const auto pSecondCopy = pSecond->copy(copier);
    EXPECT_EQ(pFirstCopy->getChildAt(0).get(), pSecondCopy->getChildAt(0).get());
    EXPECT_NE(pFirst->copy()->getChildAt(0).get(), pSecond->copy()->getChildAt(0).get());
}

TEST_F(ExpressionImplCopierTest, CopyHasANewIdentityAndTheLabels) {
    const auto pNode = node();
    pNode->setType("label");
    pNode->setSourceInfo("place");
    ExpressionImplCopier copier;
    const auto pCopy = pNode->copy(copier);
    EXPECT_NE(pCopy->getId(), pNode->getId());
    EXPECT_STREQ(pCopy->getType(), "label");
    EXPECT_STREQ(pCopy->getSourceInfo(), "place");
    EXPECT_EQ(pNode->copy(copier).get(), pCopy.get());
}

TEST_F(ExpressionImplCopierTest, FillAloneCarriesTheLabelsAndInvalidates) {
    const auto pSource = node();
    const auto pCopy = node();
    pSource->setType("label");
    pSource->setSourceInfo("place");
    evaluated(*pSource);
    evaluated(*pCopy);
    ExpressionImplCopier copier;
    pCopy->fill(*pSource, copier);
    EXPECT_STREQ(pCopy->getType(), "label");
    EXPECT_STREQ(pCopy->getSourceInfo(), "place");
    EXPECT_FALSE(pCopy->isValid());
    EXPECT_TRUE(pSource->isValid());
    EXPECT_NE(pCopy->getId(), pSource->getId());
    EXPECT_TRUE(copier.getCopy(*pSource).isNull());
}

TEST_F(ExpressionImplCopierTest, CopyIsInvalidAndNotSealedWhateverTheSourceIs) {
    const auto pTop = node();
    add(*pTop, node());
    pTop->m_bReadsChildren = true;
    pTop->seal();
    evaluated(*pTop);
    const Handle<RecordingNode> pCopy(pTop->copy());
    EXPECT_FALSE(pCopy->isValid());
    EXPECT_FALSE(pCopy->isSealed());
    const Handle<RecordingNode> pChild(pCopy->getChildAt(0));
    EXPECT_FALSE(pChild->isValid());
    EXPECT_FALSE(pChild->isSealed());
    EXPECT_TRUE(pTop->isValid());
}

TEST_F(ExpressionImplCopierTest, FailedCopyIsLoggedWithTheTextOfTheNode) {
    struct WritingNode : RecordingNode {
        WritingNode() { m_bCopies = false; }
        std::ostream& write(std::ostream& out_Stream) const override {
            return out_Stream << "the text";
        }
    };
    const Handle<WritingNode> pNode(new WritingNode);
    ExpressionImplCopier copier;
    EXPECT_TRUE(pNode->copy(copier).isNull());
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Failed to copy the expression: the text")});
    EXPECT_TRUE(copier.getCopy(*pNode).isNull());
}

TEST_F(ExpressionImplCopierTest, CopyThatRegistersItselfFailsTheAssertionAndIsHandedOut) {
    struct HastyNode : RecordingNode {
        Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override {
            const Handle<ExpressionBaseImpl> pCopy = RecordingNode::copy_i(inout_Copier);
            inout_Copier.registerCopy(*this, pCopy);
            return pCopy;
        }
    };
    const Handle<HastyNode> pNode(new HastyNode);
    pNode->setType("label");
    ExpressionImplCopier copier;
    const auto pCopy = pNode->copy(copier);
    EXPECT_EQ(takeAssertions(), Texts{"in_Copier.registerCopy( *this, pCopy )"});
    EXPECT_EQ(takeErrors().size(), 1u);
    EXPECT_EQ(copier.getCopy(*pNode).get(), pCopy.get());
    EXPECT_STREQ(pCopy->getType(), "label");
}

TEST_F(ExpressionImplCopierTest, ExpressionsAndParametersOfOneNumberAreToldApart) {
    // The two are numbered independently: makes up for the lead that one of them has.
    Handle<ParameterImpl> pParameter(new ParameterImpl);
    Handle<ExpressionBaseImpl> pNode(node());
    while (pNode->getId() < pParameter->getId()) {
        pNode = Handle<ExpressionBaseImpl>(node());
    }
    while (pParameter->getId() < pNode->getId()) {
        pParameter = Handle<ParameterImpl>(new ParameterImpl);
    }
    ASSERT_EQ(pNode->getId(), pParameter->getId());
    ExpressionImplCopier copier;
    EXPECT_TRUE(copier.registerCopy(*pNode, pNode));
    EXPECT_TRUE(copier.getParameterCopy(*pParameter).isNull());
    EXPECT_TRUE(copier.registerParameter(*pParameter, pParameter));
}

TEST_F(ExpressionImplCopierTest, CopyOfAGraphComputesTheSameAndSharesNoNode) {
    const Handle<OperatorPlus> pSum(new OperatorPlus);
    const Handle<VariableImpl> pInput(new VariableImpl);
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{5.0};
    Variable& input = *pInput;
    input.setValue(vFirst);
    pSum->getLeftArgument()->setValue(Handle<Expression>(pInput));
    pSum->getRightArgument()->setValue(Handle<Expression>(pInput));
    ExpressionImplCopier copier;
    const auto pCopy = pSum->copy(copier);
    const Handle<Variable> pInputCopy(copier.getCopy(*pInput));
    EXPECT_EQ(evaluated(*pCopy), Values{2.0});
    pInputCopy->setValue(vSecond);
    EXPECT_EQ(evaluated(*pCopy), Values{10.0});
    EXPECT_EQ(evaluated(*pSum), Values{2.0});
}

TEST_F(ExpressionImplCopierTest, CopiedDomainVariableSharesItsDomainValue) {
    const Handle<DomainVariableImpl> pVariable(new DomainVariableImpl);
    ExpressionImplCopier copier;
    const Handle<DomainVariableImpl> pCopy(pVariable->copy(copier));
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_EQ(pCopy->getValue().get(), pVariable->getValue().get());
    EXPECT_TRUE(copier.getCopy(*pVariable->getValue()).isNull());
}

} // namespace

} // namespace Velmora::Math::Xpr
