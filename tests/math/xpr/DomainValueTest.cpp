#include <velmora/math/xpr/DomainValueNoCopyImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/GraphTest.h"
#include "support/HostVector.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class DomainValueTest : public GraphTest {
protected:
    static Handle<DomainValueNoCopyImpl> domainValue(const DoubleVector& in_vValue) {
        return Handle<DomainValueNoCopyImpl>(new DomainValueNoCopyImpl(in_vValue));
    }
};

TEST_F(DomainValueTest, WordOfTheClassIsDomainValue) {
    const DoubleVector vValue{1.0};
    EXPECT_STREQ(DomainValueBase::TypeName(), "DomainValue");
    EXPECT_FALSE(Handle<DomainValue>(domainValue(vValue)).isNull());
}

TEST_F(DomainValueTest, StandsForTheVectorItselfAndNotForACopy) {
    DoubleVector vValue{1.0};
    const auto pValue = domainValue(vValue);
    LimitedObjPtr<DoubleVector> pResult;
    EXPECT_TRUE(pValue->evaluate(pResult));
    EXPECT_EQ(pResult.get(), &vValue);
    EXPECT_EQ(&pValue->getValue(), &vValue);
    EXPECT_TRUE(pValue->pointsAt(vValue));
    vValue[0] = 2.0;
    EXPECT_EQ(evaluated(*pValue), Values{2.0});
}

TEST_F(DomainValueTest, DependsOnNothing) {
    const DoubleVector vValue{1.0};
    const auto pValue = domainValue(vValue);
    EXPECT_FALSE(pValue->isDependantOf(Handle<ExpressionBaseImpl>(new RecordingNode)));
    EXPECT_FALSE(pValue->isDependantOf(Handle<ExpressionBaseImpl>(domainValue(vValue))));
}

TEST_F(DomainValueTest, SetOnAValidNodeInvalidatesAllAncestors) {
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    const auto pValue = domainValue(vFirst);
    const Handle<RecordingNode> pMiddle(new RecordingNode);
    const Handle<RecordingNode> pTop(new RecordingNode);
    pMiddle->addChild(Handle<ExpressionBaseImpl>(pValue), true);
    pTop->addChild(Handle<ExpressionBaseImpl>(pMiddle), true);
    pTop->m_bReadsChildren = true;
    pMiddle->m_bReadsChildren = true;
    evaluated(*pTop);
    EXPECT_TRUE(pValue->setValue(vSecond));
    EXPECT_FALSE(pTop->isValid());
    EXPECT_FALSE(pMiddle->isValid());
    EXPECT_FALSE(pValue->isValid());
    EXPECT_EQ(evaluated(*pValue), Values{2.0});
}

TEST_F(DomainValueTest, SetOnAnInvalidNodeInvalidatesNothing) {
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    const auto pValue = domainValue(vFirst);
    const Handle<RecordingNode> pParent(new RecordingNode);
    pParent->addChild(Handle<ExpressionBaseImpl>(pValue), true);
    evaluated(*pParent);
    EXPECT_TRUE(pValue->setValue(vSecond));
    EXPECT_TRUE(pParent->isValid());
    EXPECT_TRUE(pValue->pointsAt(vSecond));
}

TEST_F(DomainValueTest, SetToTheSameVectorInvalidatesToo) {
    const DoubleVector vValue{1.0};
    const auto pValue = domainValue(vValue);
    evaluated(*pValue);
    EXPECT_TRUE(pValue->setValue(vValue));
    EXPECT_FALSE(pValue->isValid());
}

TEST_F(DomainValueTest, NameFollowsTheVectorThatWasSetAndIsKeptInBetween) {
    DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0, 3.0};
    const auto pValue = domainValue(vFirst);
    const char* szName = pValue->getName();
    EXPECT_STREQ(szName, "DomainValue_[1]");
    vFirst[0] = 4.0;
    EXPECT_EQ(pValue->getName(), szName);
    EXPECT_STREQ(pValue->getName(), "DomainValue_[1]");
    pValue->setValue(vSecond);
    EXPECT_STREQ(pValue->getName(), "DomainValue_[2 3]");
}

TEST_F(DomainValueTest, TakingACopyIsNotSupported) {
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    const auto pValue = domainValue(vFirst);
    EXPECT_FALSE(pValue->setValueCopy(vSecond));
    EXPECT_EQ(takeAssertions(), Texts{"false && \"not supported for this implementation\""});
    EXPECT_TRUE(pValue->pointsAt(vFirst));
}

TEST_F(DomainValueTest, SettingAndReadingAreLogged) {
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0, 3.0};
    LogCapture logs(DomainValueLogger, log4cplus::DEBUG_LOG_LEVEL);
    const auto pValue = domainValue(vFirst);
    const std::string strId = std::to_string(pValue->getId());
    const std::string strSet =
        logged(DomainValueLogger, "DomainValueNoCopyImpl::setValue ID=" + strId);
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL), Texts{strSet});
    pValue->setValue(vSecond);
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL), Texts{strSet});
    pValue->getValue();
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL),
              Texts{logged(DomainValueLogger,
                           "DomainValueNoCopyImpl::getValue ID=" + strId + " val=[2 3]")});
}

TEST_F(DomainValueTest, ConstructionIsTraced) {
    const DoubleVector vValue{1.0};
    LogCapture logs(DomainValueLogger, log4cplus::TRACE_LOG_LEVEL);
    domainValue(vValue);
    EXPECT_EQ(take(logs, log4cplus::TRACE_LOG_LEVEL),
              (Texts{logged(DomainValueLogger, "ENTER: DomainValueBase::DomainValueBase"),
                     logged(DomainValueLogger, "EXIT: DomainValueBase::DomainValueBase")}));
}

TEST_F(DomainValueTest, CreateNewMakesANodeOfTheSameClass) {
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    const Handle<DomainValueBase> pNew(domainValue(vFirst)->createNew(vSecond));
    const Handle<DomainValueNoCopyImpl> pSame(pNew);
    ASSERT_FALSE(pSame.isNull());
    EXPECT_TRUE(pSame->pointsAt(vSecond));
}

TEST_F(DomainValueTest, CopyPointsAtTheSameVector) {
    const DoubleVector vValue{1.0};
    const auto pValue = domainValue(vValue);
    ExpressionImplCopier copier;
    const Handle<DomainValueNoCopyImpl> pCopy(pValue->copy(copier));
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_TRUE(pCopy->pointsAt(vValue));
    EXPECT_NE(pCopy->getId(), pValue->getId());
    EXPECT_EQ(pValue->copy(copier).get(), pCopy.get());
}

TEST_F(DomainValueTest, ResetAndConfigureSucceed) {
    const DoubleVector vValue{1.0};
    const auto pValue = domainValue(vValue);
    evaluated(*pValue);
    EXPECT_TRUE(pValue->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_TRUE(pValue->isValid());
    EXPECT_TRUE(pValue->reset());
    EXPECT_FALSE(pValue->isValid());
    EXPECT_TRUE(pValue->pointsAt(vValue));
}

TEST_F(DomainValueTest, VectorThatDiedIsReadNeitherByCopyingNorByLinkingNorByDestruction) {
    // Messages that show values are on, as when a host looks for a fault.
    const LogCapture logs("quillmark", log4cplus::TRACE_LOG_LEVEL);
    HostVector host(1.0);
    const DoubleVector vLive{2.0};
    const auto pValue = domainValue(*host);
    pValue->getName();
    evaluated(*pValue);
    const Handle<VariableImpl> pVariable(new VariableImpl);
    const Handle<VariableImpl> pOther(new VariableImpl);
    Variable& variable = *pVariable;
    Variable& other = *pOther;
    variable.setValue(Handle<Expression>(pValue));
    host.free();

    EXPECT_TRUE(other.setValue(Handle<Expression>(pValue)));
    EXPECT_FALSE(pValue->isDependantOf(Handle<ExpressionBaseImpl>(pVariable)) &&
                 pVariable->isDependantOf(Handle<ExpressionBaseImpl>(pValue)));
    EXPECT_FALSE(pVariable->isDependantOf(Handle<ExpressionBaseImpl>(pValue)));
    EXPECT_FALSE(pVariable->copy().isNull());
    pVariable->seal();
    EXPECT_TRUE(pVariable->reset());
    EXPECT_TRUE(pVariable->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_TRUE(pValue->replace(Handle<ExpressionBaseImpl>(constant({3.0}))));
    EXPECT_TRUE(variable.setValue(vLive));
    EXPECT_EQ(evaluated(*pOther), Values{3.0});
}

} // namespace

} // namespace Velmora::Math::Xpr
