#include <velmora/math/xpr/DomainVariableImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class DomainVariableImplTest : public GraphTest {
protected:
    static Handle<DomainVariableImpl> variable() {
        return Handle<DomainVariableImpl>(new DomainVariableImpl);
    }

    static Handle<DomainValueNoCopyImpl> domainValueOf(const DomainVariableImpl& in_Variable) {
        return Handle<DomainValueNoCopyImpl>(in_Variable.getValue());
    }

    template <class T>
    static bool bind(VariableImpl& inout_Variable, const Handle<T>& in_pValue) {
        Variable& variable = inout_Variable;
        return variable.setValue(Handle<Expression>(in_pValue));
    }

    static bool feed(VariableImpl& inout_Variable, const DoubleVector& in_vValue) {
        Variable& variable = inout_Variable;
        return variable.setValue(in_vValue);
    }
};

TEST_F(DomainVariableImplTest, FreshVariableIsZero) {
    const auto pVariable = variable();
    EXPECT_EQ(evaluated(*pVariable), Values{0.0});
    EXPECT_FALSE(domainValueOf(*pVariable).isNull());
    EXPECT_STREQ(pVariable->getName(), "unamed variable");
    EXPECT_STREQ(DomainVariableImpl::getMemAccountName(), "DomainVariableImpl");
    EXPECT_STREQ(DomainVariableImpl::TypeName(), "Variable");
}

TEST_F(DomainVariableImplTest, VectorSwapsThePointerOfItsDomainValue) {
    const auto pVariable = variable();
    const auto pDomainValue = domainValueOf(*pVariable);
    const DoubleVector vValue{1.0, 2.0};
    EXPECT_TRUE(feed(*pVariable, vValue));
    EXPECT_EQ(domainValueOf(*pVariable).get(), pDomainValue.get());
    EXPECT_EQ(evaluated(*pVariable), (Values{1.0, 2.0}));
}

TEST_F(DomainVariableImplTest, BoundDomainValueIsPointedAtTheInitialValue) {
    const auto pVariable = variable();
    const DoubleVector vValue{1.0};
    const Handle<DomainValueNoCopyImpl> pDomainValue(new DomainValueNoCopyImpl(vValue));
    EXPECT_TRUE(bind(*pVariable, pDomainValue));
    EXPECT_EQ(pVariable->getValue().get(), pDomainValue.get());
    EXPECT_FALSE(pDomainValue->pointsAt(vValue));
    EXPECT_EQ(evaluated(*pVariable), Values{0.0});
}

TEST_F(DomainVariableImplTest, VectorBehindAnExpressionIsUsedFromTheSecondSetOn) {
    const auto pVariable = variable();
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    EXPECT_TRUE(bind(*pVariable, constant({5.0})));
    EXPECT_EQ(evaluated(*pVariable), Values{5.0});
    EXPECT_TRUE(feed(*pVariable, vFirst));
    EXPECT_EQ(evaluated(*pVariable), Values{0.0});
    EXPECT_TRUE(feed(*pVariable, vSecond));
    EXPECT_EQ(evaluated(*pVariable), Values{2.0});
}

TEST_F(DomainVariableImplTest, RefusedValueGivesFalseAndPointsBackAtTheInitialValue) {
    const auto pVariable = variable();
    const DoubleVector vValue{1.0};
    feed(*pVariable, vValue);
    Variable& target = *pVariable;
    EXPECT_FALSE(target.setValue(Handle<Expression>()));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Can't set a null expression")});
    EXPECT_EQ(evaluated(*pVariable), Values{0.0});
}

TEST_F(DomainVariableImplTest, CopySharesTheDomainValueWhichPointsAtTheCopy) {
    const auto pSource = variable();
    const DoubleVector vFirst{1.0};
    const DoubleVector vSecond{2.0};
    pSource->setName("frame");
    feed(*pSource, vFirst);
    evaluated(*pSource);
    LogCapture logs(NodeLogger, log4cplus::DEBUG_LOG_LEVEL);
    const Handle<DomainVariableImpl> pCopy(pSource->copy());
    EXPECT_EQ(take(logs, log4cplus::DEBUG_LOG_LEVEL).front(),
              logged(NodeLogger, "copy DomainVariable: [frame]"));
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "frame");
    EXPECT_EQ(pCopy->getValue().get(), pSource->getValue().get());
    EXPECT_EQ(parentsOf(*pSource->getValue()), (Nodes{pSource.get(), pCopy.get()}));
    EXPECT_FALSE(pSource->isValid());
    EXPECT_EQ(evaluated(*pSource), Values{0.0});
    feed(*pSource, vSecond);
    EXPECT_EQ(evaluated(*pCopy), Values{2.0});
}

TEST_F(DomainVariableImplTest, CopyOfAVariableWithAnExpressionKeepsItsOwnInitialValue) {
    const auto pSource = variable();
    pSource->setName("frame");
    bind(*pSource, constant({5.0}));
    const Handle<DomainVariableImpl> pCopy(pSource->copy());
    EXPECT_EQ(takeAssertions(),
              (Texts{"!pSrcExpression.isNull()", "&*(in_Src.getValue()) == &*getValue()"}));
    EXPECT_EQ(takeErrors(), Texts{logged(NodeLogger, "Can't set a null expression")});
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "frame");
    EXPECT_EQ(evaluated(*pCopy), Values{0.0});
    EXPECT_EQ(evaluated(*pSource), Values{5.0});
}

TEST_F(DomainVariableImplTest, DomainValueThatOutlivesItsVariableIsZero) {
    Handle<DomainValueNoCopyImpl> pDomainValue = domainValueOf(*variable());
    EXPECT_EQ(evaluated(*pDomainValue), Values{0.0});
    EXPECT_STREQ(pDomainValue->getName(), "DomainValue_[0]");
}

TEST_F(DomainVariableImplTest, DomainValueStaysZeroWhicheverOfItsVariablesDies) {
    auto pSource = variable();
    Handle<DomainVariableImpl> pCopy(pSource->copy());
    const auto pDomainValue = domainValueOf(*pSource);
    evaluated(*pSource);
    pCopy = nullptr;
    // What was computed is as good as before.
    EXPECT_TRUE(pSource->isValid());
    EXPECT_EQ(evaluated(*pSource), Values{0.0});
    pSource = nullptr;
    EXPECT_EQ(evaluated(*pDomainValue), Values{0.0});
}

TEST_F(DomainVariableImplTest, DomainValueThatPointsElsewhereStaysWhenItsVariableDies) {
    auto pVariable = variable();
    const auto pDomainValue = domainValueOf(*pVariable);
    const DoubleVector vValue{1.0};
    feed(*pVariable, vValue);
    pVariable = nullptr;
    EXPECT_TRUE(pDomainValue->pointsAt(vValue));
}

TEST_F(DomainVariableImplTest, DomainValueThatLostItsVariableIsZeroWhenTheVariableDies) {
    const Handle<RecordingNode> pNew(new RecordingNode);
    const struct {
        const char* m_szWay;
        bool m_bBySet;
    } ways[] = {{"set", true}, {"replace", false}};
    for (const auto& way : ways) {
        SCOPED_TRACE(way.m_szWay);
        auto pVariable = variable();
        const auto pDomainValue = domainValueOf(*pVariable);
        if (way.m_bBySet) {
            bind(*pVariable, pNew);
        } else {
            pDomainValue->replace(Handle<ExpressionBaseImpl>(pNew));
        }
        pVariable = nullptr;
        EXPECT_EQ(evaluated(*pDomainValue), Values{0.0});
    }
}

TEST_F(DomainVariableImplTest, SecondDomainValueInPlaceOfTheFirstSurvivesToo) {
    auto pVariable = variable();
    const DoubleVector vValue{1.0};
    const Handle<DomainValueNoCopyImpl> pSecond(new DomainValueNoCopyImpl(vValue));
    const auto pFirst = domainValueOf(*pVariable);
    bind(*pVariable, pSecond);
    pVariable = nullptr;
    EXPECT_EQ(evaluated(*pFirst), Values{0.0});
    EXPECT_EQ(evaluated(*pSecond), Values{0.0});
}

} // namespace

} // namespace Velmora::Math::Xpr
