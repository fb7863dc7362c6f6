#include <velmora/math/xpr/ParameterImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

const char* const NoParent = "Specified parameter is not a valid parent";

/// A parameter that shows what its derived classes may call.
class OpenParameter : public ParameterImpl {
public:
    using ParameterImpl::addParent;
    using ParameterImpl::removeParent;
    using ParameterImpl::setChild;
};

/// A parameter of another make.
class ForeignParameter : public Parameter {
public:
    std::ostream& write(std::ostream& out_Stream) const override { return out_Stream; }
    const char* getName() const override { return "foreign"; }
    bool setValue(const Handle<Parameter>&) override { return false; }
    bool setValue(const ParameterValue&) override { return false; }
    const ParameterValue& getValue() const override { return m_Value; }

private:
    ParameterValue m_Value;
};

using Parents = std::vector<const ParameterImpl*>;

Parents parentsOf(const ParameterImpl& in_Parameter) {
    Parents vParents;
    for (auto ite = in_Parameter.getParentBegin(); ite != in_Parameter.getParentEnd(); ++ite) {
        vParents.push_back(ite->get());
    }
    return vParents;
}

class ParameterImplTest : public GraphTest {
protected:
    /// A parameter of the test's function.
    Handle<OpenParameter> parameter() {
        Handle<OpenParameter> pParameter(new OpenParameter);
        pParameter->setParentFunction(m_Function);
        return pParameter;
    }

    static bool link(ParameterImpl& inout_Parameter, const Handle<OpenParameter>& in_pSource) {
        Parameter& parameter = inout_Parameter;
        return parameter.setValue(Handle<Parameter>(in_pSource));
    }

    static bool set(ParameterImpl& inout_Parameter, const ParameterValue& in_Value) {
        Parameter& parameter = inout_Parameter;
        return parameter.setValue(in_Value);
    }

    void SetUp() override {
        GraphTest::SetUp();
        m_Function = Handle<RecordingFunction>(new RecordingFunction);
    }

    void TearDown() override {
        m_Function = Handle<RecordingFunction>();
        GraphTest::TearDown();
    }

    Handle<RecordingFunction> m_Function;
};

TEST_F(ParameterImplTest, NewParameterIsEmpty) {
    const Handle<ParameterImpl> pParameter(new ParameterImpl);
    EXPECT_STREQ(pParameter->getName(), "");
    EXPECT_FALSE(pParameter->hasDirectValue());
    EXPECT_TRUE(pParameter->getValue().isEmpty());
    EXPECT_EQ(&pParameter->getLeafChild(), pParameter.get());
    EXPECT_EQ(parentsOf(*pParameter), Parents());
    EXPECT_STREQ(ParameterImpl::getMemAccountName(), "ParameterImpl");
}

TEST_F(ParameterImplTest, IdentifiersAreANumberSpaceOfTheirOwn) {
    const unsigned long ulFirst = parameter()->getId();
    Handle<RecordingNode>(new RecordingNode);
    EXPECT_EQ(parameter()->getId(), ulFirst + 1);
}

TEST_F(ParameterImplTest, NameIsACopyAndNullIsRefused) {
    const auto pParameter = parameter();
    std::string strName("size");
    pParameter->setName(strName.c_str());
    strName = "other";
    EXPECT_STREQ(pParameter->getName(), "size");
    pParameter->setName(nullptr);
    EXPECT_EQ(takeAssertions(), Texts{"in_szName"});
    EXPECT_STREQ(pParameter->getName(), "size");
}

TEST_F(ParameterImplTest, DirectValueIsSetWithAndWithoutAFunction) {
    for (const auto& pParameter : {parameter(), Handle<OpenParameter>(new OpenParameter)}) {
        EXPECT_TRUE(set(*pParameter, ParameterValue(3)));
        EXPECT_TRUE(pParameter->hasDirectValue());
        EXPECT_EQ(pParameter->getValue(), ParameterValue(3));
        EXPECT_TRUE(set(*pParameter, ParameterValue("text")));
        EXPECT_EQ(pParameter->getValue(), ParameterValue("text"));
        EXPECT_TRUE(set(*pParameter, ParameterValue()));
        EXPECT_FALSE(pParameter->hasDirectValue());
    }
}

TEST_F(ParameterImplTest, EmptyTextIsADirectValue) {
    const auto pParameter = parameter();
    set(*pParameter, ParameterValue(""));
    EXPECT_TRUE(pParameter->hasDirectValue());
}

TEST_F(ParameterImplTest, ChainGivesTheValueOfItsLeaf) {
    const auto pA = parameter();
    const auto pB = parameter();
    const auto pC = parameter();
    EXPECT_TRUE(link(*pA, pB));
    EXPECT_TRUE(link(*pB, pC));
    EXPECT_EQ(&pA->getLeafChild(), pC.get());
    EXPECT_TRUE(pA->getValue().isEmpty());
    set(*pC, ParameterValue(3));
    EXPECT_EQ(pA->getValue(), ParameterValue(3));
    set(*pA, ParameterValue(1));
    set(*pB, ParameterValue(2));
    EXPECT_EQ(pA->getValue(), ParameterValue(3));
    EXPECT_TRUE(pA->hasDirectValue());
    set(*pC, ParameterValue());
    EXPECT_TRUE(pA->getValue().isEmpty());
}

TEST_F(ParameterImplTest, LinkIsKnownToTheParameterBelow) {
    const auto pSource = parameter();
    const auto pFirst = parameter();
    const auto pSecond = parameter();
    link(*pFirst, pSource);
    link(*pSecond, pSource);
    EXPECT_EQ(parentsOf(*pSource), (Parents{pFirst.get(), pSecond.get()}));
}

TEST_F(ParameterImplTest, NullUnlinksAndTheDirectValueShowsAgain) {
    const auto pParameter = parameter();
    const auto pSource = parameter();
    set(*pParameter, ParameterValue(1));
    set(*pSource, ParameterValue(2));
    link(*pParameter, pSource);
    EXPECT_TRUE(link(*pParameter, Handle<OpenParameter>()));
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, NoParent)});
    EXPECT_EQ(pParameter->getValue(), ParameterValue(1));
    EXPECT_EQ(parentsOf(*pSource), Parents());
}

TEST_F(ParameterImplTest, NullOnAParameterWithoutALinkLogsNothing) {
    EXPECT_TRUE(link(*parameter(), Handle<OpenParameter>()));
}

TEST_F(ParameterImplTest, SecondLinkLogsOneFailedRemovalAndTakesThePlaceOfTheFirst) {
    const auto pParameter = parameter();
    const auto pFirst = parameter();
    const auto pSecond = parameter();
    link(*pParameter, pFirst);
    EXPECT_TRUE(link(*pParameter, pSecond));
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, NoParent)});
    EXPECT_EQ(parentsOf(*pFirst), Parents());
    EXPECT_EQ(parentsOf(*pSecond), Parents{pParameter.get()});
    EXPECT_EQ(&pParameter->getLeafChild(), pSecond.get());
}

TEST_F(ParameterImplTest, ForeignParameterIsRefusedAndTheOldLinkIsHalfGone) {
    auto pParameter = parameter();
    const auto pSource = parameter();
    set(*pSource, ParameterValue(2));
    link(*pParameter, pSource);
    Parameter& target = *pParameter;
    EXPECT_FALSE(target.setValue(Handle<Parameter>(new ForeignParameter)));
    EXPECT_EQ(takeErrors(),
              Texts{logged(LeafLogger, "Must use same implementation base for all parameters.")});
    EXPECT_EQ(pParameter->getValue(), ParameterValue(2));
    EXPECT_EQ(parentsOf(*pSource), Parents());
    pParameter = nullptr;
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, NoParent)});
}

TEST_F(ParameterImplTest, LinkWithoutAFunctionFailsAnAssertionAndStands) {
    const Handle<ParameterImpl> pParameter(new ParameterImpl);
    const auto pSource = parameter();
    EXPECT_TRUE(link(*pParameter, pSource));
    EXPECT_EQ(takeAssertions(), Texts{"!m_pParentFunction.isNull()"});
    EXPECT_EQ(&pParameter->getLeafChild(), pSource.get());
}

TEST_F(ParameterImplTest, FunctionIsSetOnceItIsOne) {
    ParameterImpl parameter;
    EXPECT_TRUE(parameter.setParentFunction(m_Function));
    EXPECT_FALSE(parameter.setParentFunction(LimitedObjPtr<FunctionBaseImpl>()));
    EXPECT_EQ(takeAssertions(), Texts{"!in_pFunc.isNull()"});
}

TEST_F(ParameterImplTest, ParameterThatOutlivesItsFunctionTellsNobody) {
    m_Function->addParameter("p");
    const Handle<Parameter> pParameter = m_Function->getParameter("p");
    m_Function = Handle<RecordingFunction>();
    EXPECT_TRUE(pParameter->setValue(ParameterValue(1)));
    EXPECT_TRUE(pParameter->setValue(Handle<Parameter>()));
    EXPECT_EQ(takeAssertions(), Texts{"!m_pParentFunction.isNull()"});
}

TEST_F(ParameterImplTest, SetChildLinksWithoutAFunction) {
    const Handle<OpenParameter> pParameter(new OpenParameter);
    const auto pFirst = parameter();
    const auto pSecond = parameter();
    EXPECT_TRUE(pParameter->setChild(Handle<ParameterImpl>(pFirst)));
    EXPECT_EQ(parentsOf(*pFirst), Parents{pParameter.get()});
    EXPECT_TRUE(pParameter->setChild(Handle<ParameterImpl>(pSecond)));
    EXPECT_EQ(parentsOf(*pFirst), Parents());
    EXPECT_EQ(parentsOf(*pSecond), Parents{pParameter.get()});
    EXPECT_TRUE(pParameter->setChild(Handle<ParameterImpl>()));
    EXPECT_EQ(parentsOf(*pSecond), Parents());
}

TEST_F(ParameterImplTest, RemoveParentTakesOutTheFirstEntry) {
    const auto pParameter = parameter();
    const auto pFirst = parameter();
    const auto pSecond = parameter();
    pParameter->addParent(pFirst);
    pParameter->addParent(pSecond);
    pParameter->addParent(pFirst);
    EXPECT_TRUE(pParameter->removeParent(pFirst));
    EXPECT_EQ(parentsOf(*pParameter), (Parents{pSecond.get(), pFirst.get()}));
    EXPECT_TRUE(pParameter->removeParent(pFirst));
    EXPECT_FALSE(pParameter->removeParent(pFirst));
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, NoParent)});
    EXPECT_EQ(parentsOf(*pParameter), Parents{pSecond.get()});
}

TEST_F(ParameterImplTest, DyingParameterLeavesItsChild) {
    auto pParameter = parameter();
    const auto pSource = parameter();
    link(*pParameter, pSource);
    pParameter = nullptr;
    EXPECT_EQ(parentsOf(*pSource), Parents());
}

TEST_F(ParameterImplTest, DyingParameterLeavesTheRestOfAChainToAnotherThatReadsIt) {
    const auto pLeaf = parameter();
    set(*pLeaf, ParameterValue(7));
    auto pShared = parameter();
    link(*pShared, pLeaf);
    auto pDying = parameter();
    link(*pDying, pShared);
    const auto pReader = parameter();
    link(*pReader, pShared);
    pShared = nullptr;
    pDying = nullptr;
    EXPECT_EQ(pReader->getValue(), ParameterValue(7));
}

TEST_F(ParameterImplTest, DyingChainLeavesTheParameterThatAnotherHolds) {
    const auto pLeaf = parameter();
    auto pMiddle = parameter();
    link(*pMiddle, pLeaf);
    auto pDying = parameter();
    link(*pDying, pMiddle);
    pMiddle = nullptr;
    pDying = nullptr;
    EXPECT_EQ(parentsOf(*pLeaf), Parents());
}

TEST_F(ParameterImplTest, ParameterLivesAsLongAsAnotherTakesItsValue) {
    const auto pParameter = parameter();
    {
        const auto pSource = parameter();
        set(*pSource, ParameterValue(2));
        link(*pParameter, pSource);
    }
    EXPECT_EQ(pParameter->getValue(), ParameterValue(2));
}

TEST_F(ParameterImplTest, CopyConstructorCopiesTheFieldsAndEntersNoList) {
    const auto pParent = parameter();
    const auto pParameter = parameter();
    const auto pSource = parameter();
    pParameter->setName("size");
    set(*pParameter, ParameterValue(1));
    link(*pParameter, pSource);
    link(*pParent, pParameter);
    const int iCount = pSource.getReferenceCount();
    {
        const ParameterImpl copy(*pParameter);
        EXPECT_EQ(copy.getId(), pParameter->getId());
        EXPECT_STREQ(copy.getName(), "size");
        EXPECT_TRUE(copy.hasDirectValue());
        EXPECT_EQ(&copy.getLeafChild(), pSource.get());
        EXPECT_EQ(parentsOf(copy), Parents{pParent.get()});
        EXPECT_EQ(pSource.getReferenceCount(), iCount + 1);
        EXPECT_EQ(parentsOf(*pSource), Parents{pParameter.get()});
    }
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, NoParent)});
    EXPECT_EQ(pSource.getReferenceCount(), iCount);
    EXPECT_EQ(&pParent->getLeafChild(), pSource.get());
}

TEST_F(ParameterImplTest, CopyValueCarriesTheDirectValueOrElseTheLink) {
    const auto pDirect = parameter();
    const auto pLinked = parameter();
    const auto pEmpty = parameter();
    const auto pSource = parameter();
    const auto pDestination = parameter();
    set(*pDirect, ParameterValue(1));
    set(*pSource, ParameterValue(2));
    link(*pLinked, pSource);

    pDirect->copyValue(*pDestination);
    EXPECT_EQ(pDestination->getValue(), ParameterValue(1));
    EXPECT_EQ(&pDestination->getLeafChild(), pDestination.get());
    pLinked->copyValue(*pDestination);
    EXPECT_EQ(&pDestination->getLeafChild(), pSource.get());
    EXPECT_EQ(parentsOf(*pSource), (Parents{pLinked.get(), pDestination.get()}));
    pEmpty->copyValue(*pDestination);
    EXPECT_EQ(takeErrors(), Texts{logged(LeafLogger, NoParent)});
    EXPECT_EQ(pDestination->getValue(), ParameterValue(1));
    EXPECT_EQ(parentsOf(*pSource), Parents{pLinked.get()});
}

TEST_F(ParameterImplTest, CopyValueOfALinkedParameterWithADirectValueCarriesTheValueInForce) {
    const auto pParameter = parameter();
    const auto pSource = parameter();
    const auto pDestination = parameter();
    set(*pParameter, ParameterValue(1));
    set(*pSource, ParameterValue(2));
    link(*pParameter, pSource);
    pParameter->copyValue(*pDestination);
    EXPECT_EQ(pDestination->getValue(), ParameterValue(2));
    EXPECT_EQ(&pDestination->getLeafChild(), pDestination.get());
}

TEST_F(ParameterImplTest, CopyHasANewIdentifierAndTheSameNameAndValue) {
    const auto pParameter = parameter();
    pParameter->setName("size");
    set(*pParameter, ParameterValue(1));
    ExpressionImplCopier copier;
    const auto pCopy = pParameter->copy(copier);
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_NE(pCopy->getId(), pParameter->getId());
    EXPECT_STREQ(pCopy->getName(), "size");
    EXPECT_EQ(pCopy->getValue(), ParameterValue(1));
    EXPECT_EQ(copier.getParameterCopy(*pParameter).get(), pCopy.get());
    EXPECT_EQ(pParameter->copy(copier).get(), pCopy.get());
    EXPECT_EQ(parentsOf(*pCopy), Parents());
}

TEST_F(ParameterImplTest, ChainIsCopiedWithWhatItShares) {
    const auto pFirst = parameter();
    const auto pSecond = parameter();
    const auto pSource = parameter();
    set(*pSource, ParameterValue(2));
    link(*pFirst, pSource);
    link(*pSecond, pSource);
    ExpressionImplCopier copier;
    const auto pFirstCopy = pFirst->copy(copier);
    const auto pSecondCopy = pSecond->copy(copier);
    const ParameterImpl& sourceCopy = pFirstCopy->getLeafChild();
    EXPECT_NE(&sourceCopy, pSource.get());
    EXPECT_EQ(&pSecondCopy->getLeafChild(), &sourceCopy);
    EXPECT_EQ(parentsOf(sourceCopy), (Parents{pFirstCopy.get(), pSecondCopy.get()}));
    EXPECT_EQ(parentsOf(*pSource), (Parents{pFirst.get(), pSecond.get()}));
    EXPECT_EQ(pFirstCopy->getValue(), ParameterValue(2));
}

TEST_F(ParameterImplTest, CopyOfAParameterWithBothKeepsTheValueInForceAndNoLink) {
    const auto pParameter = parameter();
    const auto pSource = parameter();
    set(*pParameter, ParameterValue(1));
    set(*pSource, ParameterValue(2));
    link(*pParameter, pSource);
    ExpressionImplCopier copier;
    const auto pCopy = pParameter->copy(copier);
    EXPECT_EQ(&pCopy->getLeafChild(), pCopy.get());
    EXPECT_EQ(pCopy->getValue(), ParameterValue(2));
    EXPECT_TRUE(copier.getParameterCopy(*pSource).isNull());
}

TEST_F(ParameterImplTest, ReplaceMovesEveryParent) {
    const auto pOld = parameter();
    const auto pNew = parameter();
    std::vector<Handle<OpenParameter>> vParents;
    Parents vExpected;
    for (int i = 0; i < 3; ++i) {
        vParents.push_back(parameter());
        link(*vParents.back(), pOld);
        vExpected.push_back(vParents.back().get());
    }
    EXPECT_TRUE(pOld->replace(Handle<ParameterImpl>(pNew)));
    EXPECT_EQ(parentsOf(*pOld), Parents());
    EXPECT_EQ(parentsOf(*pNew), vExpected);
    for (const auto& pParent : vParents) {
        EXPECT_EQ(&pParent->getLeafChild(), pNew.get());
    }
    EXPECT_EQ(pOld.getReferenceCount(), 1);
}

TEST_F(ParameterImplTest, ReplaceByNullUnlinksEveryParent) {
    const auto pOld = parameter();
    const auto pParent = parameter();
    link(*pParent, pOld);
    EXPECT_TRUE(pOld->replace(Handle<ParameterImpl>()));
    EXPECT_EQ(parentsOf(*pOld), Parents());
    EXPECT_EQ(&pParent->getLeafChild(), pParent.get());
}

TEST_F(ParameterImplTest, ReplaceByItselfFails) {
    const auto pParameter = parameter();
    const auto pParent = parameter();
    link(*pParent, pParameter);
    EXPECT_FALSE(pParameter->replace(Handle<ParameterImpl>(pParameter)));
    EXPECT_EQ(takeAssertions(), Texts{"in_pNewParameter != this"});
    EXPECT_EQ(parentsOf(*pParameter), Parents{pParent.get()});
}

TEST_F(ParameterImplTest, ParameterHeldByItsParentsAloneLivesUntilReplaceIsDone) {
    const auto pFirst = parameter();
    const auto pSecond = parameter();
    const auto pNew = parameter();
    ParameterImpl* pOld = nullptr;
    {
        const auto pHeld = parameter();
        link(*pFirst, pHeld);
        link(*pSecond, pHeld);
        pOld = pHeld.get();
    }
    EXPECT_TRUE(pOld->replace(Handle<ParameterImpl>(pNew)));
    EXPECT_EQ(parentsOf(*pNew), (Parents{pFirst.get(), pSecond.get()}));
}

TEST_F(ParameterImplTest, LongChainIsReadCopiedAndDestroyedWithoutADeepStack) {
    Handle<OpenParameter> pTop = parameter();
    set(*pTop, ParameterValue(7));
    for (int i = 1; i < LongChain; ++i) {
        const auto pNext = parameter();
        pNext->setChild(Handle<ParameterImpl>(pTop));
        pTop = pNext;
    }
    EXPECT_EQ(pTop->getValue(), ParameterValue(7));
    ExpressionImplCopier copier;
    EXPECT_EQ(pTop->copy(copier)->getValue(), ParameterValue(7));
    pTop = nullptr;
}

} // namespace

} // namespace Velmora::Math::Xpr
