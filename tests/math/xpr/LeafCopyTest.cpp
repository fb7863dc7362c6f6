#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/OperatorPlus.h>

#include "support/GraphTest.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

/// A host's own domain value, which keeps its vector itself.
class OwningDomainValue : public DomainValueBase {
public:
    explicit OwningDomainValue(const DoubleVector& in_vValue) : m_vValue(in_vValue) {}

    bool setValue(const DoubleVector& in_vValue) override {
        m_vValue = in_vValue;
        return true;
    }
    bool setValueCopy(const DoubleVector& in_vValue) override { return setValue(in_vValue); }
    const DoubleVector& getValue() const override { return m_vValue; }
    DomainValueBase* createNew(const DoubleVector& in_vValue) const override {
        return new OwningDomainValue(in_vValue);
    }

private:
    DoubleVector m_vValue;
};

/// A host's own domain value that points at its vector as the library's do.
class TaggedDomainValue : public DomainValueNoCopyImpl {
public:
    using DomainValueNoCopyImpl::DomainValueNoCopyImpl;

    DomainValueBase* createNew(const DoubleVector& in_vValue) const override {
        return new TaggedDomainValue(in_vValue);
    }
};

class OpenSum : public OperatorPlus {
public:
    using OperatorPlus::addArgument;
};

class LeafCopyTest : public GraphTest {
protected:
    static void expectLabelsCopied(ExpressionBaseImpl& inout_Leaf) {
        inout_Leaf.setType("label");
        inout_Leaf.setSourceInfo("script.xpr:3:7");
        evaluated(inout_Leaf);
        const Handle<ExpressionBaseImpl> pCopy(inout_Leaf.copy());
        ASSERT_FALSE(pCopy.isNull());
        EXPECT_STREQ(pCopy->getType(), "label");
        EXPECT_STREQ(pCopy->getSourceInfo(), "script.xpr:3:7");
        EXPECT_FALSE(pCopy->isValid());
    }
};

TEST_F(LeafCopyTest, CopyOfAConstantKeepsItsLabelAndPlace) {
    expectLabelsCopied(*constant({1.0}));
}

TEST_F(LeafCopyTest, CopyOfADomainValueKeepsItsLabelAndPlace) {
    const DoubleVector vValue{1.0};
    expectLabelsCopied(*Handle<DomainValueNoCopyImpl>(new DomainValueNoCopyImpl(vValue)));
}

TEST_F(LeafCopyTest, CopyOfAHostsDomainValueIsOfItsClassAndKeepsItsLabelAndPlace) {
    const Handle<OwningDomainValue> pValue(new OwningDomainValue(DoubleVector{1.0, 2.0}));
    expectLabelsCopied(*pValue);
    const Handle<ExpressionBaseImpl> pCopy(pValue->copy());
    ASSERT_FALSE(Handle<OwningDomainValue>(pCopy).isNull());
    pValue->setValue(DoubleVector{3.0});
    EXPECT_EQ(evaluated(*pCopy), (Values{1.0, 2.0}));
}

TEST_F(LeafCopyTest, CopyOfADomainValueIsMadeByItsClassAndPointsAtTheSameVector) {
    const DoubleVector vValue{1.0, 2.0};
    const Handle<TaggedDomainValue> pValue(new TaggedDomainValue(vValue));
    expectLabelsCopied(*pValue);
    const Handle<TaggedDomainValue> pCopy(pValue->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_TRUE(pCopy->pointsAt(vValue));
}

TEST_F(LeafCopyTest, CopyOfAnOperatorKeepsTheLabelsAndPlacesOfItsArguments) {
    const Handle<OperatorPlus> pPlus(new OperatorPlus);
    const Handle<ExpressionBaseImpl> pLeft(pPlus->getChildAt(0));
    pLeft->setType("label");
    pLeft->setSourceInfo("script.xpr:3:7");
    const Handle<ExpressionBaseImpl> pCopy(pPlus->copy()->getChildAt(0));
    EXPECT_NE(pCopy, pLeft);
    EXPECT_STREQ(pCopy->getType(), "label");
    EXPECT_STREQ(pCopy->getSourceInfo(), "script.xpr:3:7");
}

TEST_F(LeafCopyTest, CopyOfAnOperatorHasTheCopyThatAnArgumentHadBefore) {
    const Handle<OperatorPlus> pPlus(new OperatorPlus);
    ExpressionImplCopier copier;
    const Handle<ExpressionBaseImpl> pRight(pPlus->getChildAt(1)->copy(copier));
    const Handle<ExpressionBaseImpl> pCopy(pPlus->copy(copier));
    EXPECT_EQ(pCopy->getChildAt(1), pRight);
}

TEST_F(LeafCopyTest, CopyOfAnOperatorHasAVariableWhereAVariableTookAnArgumentsPlace) {
    const Handle<OpenSum> pSum(new OpenSum);
    ASSERT_TRUE(pSum->addArgument("Left", Handle<VariableImpl>(new VariableImpl)));
    const Handle<ExpressionBaseImpl> pCopy(pSum->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_TRUE(Handle<Argument>(pCopy->getChildAt(0)).isNull());
    EXPECT_FALSE(Handle<Argument>(pCopy->getChildAt(1)).isNull());
}

} // namespace

} // namespace Velmora::Math::Xpr
