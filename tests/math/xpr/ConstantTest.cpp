#include <velmora/math/xpr/ConstantImpl.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "support/GraphTest.h"
#include "support/RecordingNode.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

class ConstantTest : public GraphTest {};

TEST_F(ConstantTest, WordOfTheClassIsConstant) {
    EXPECT_STREQ(ConstantBase::TypeName(), "Constant");
    EXPECT_FALSE(Handle<Constant>(constant({1.0})).isNull());
}

TEST_F(ConstantTest, OwnsACopyOfItsVector) {
    DoubleVector vValue{1.0, 2.0};
    const Handle<ConstantImpl> pConstant(new ConstantImpl(vValue));
    vValue[0] = 3.0;
    EXPECT_EQ(valuesOf(pConstant->getValue()), (Values{1.0, 2.0}));
}

TEST_F(ConstantTest, EveryEvaluationGivesTheAddressOfItsOwnVector) {
    const auto pConstant = constant({1.0});
    EXPECT_FALSE(pConstant->isValid());
    for (int i = 0; i < 3; ++i) {
        LimitedObjPtr<DoubleVector> pValue;
        EXPECT_TRUE(pConstant->evaluate(pValue));
        EXPECT_EQ(pValue.get(), &pConstant->getValue());
        EXPECT_TRUE(pConstant->isValid());
        if (i == 1) {
            pConstant->invalidate();
        }
    }
}

TEST_F(ConstantTest, EmptyConstantEvaluatesToItsEmptyVector) {
    EXPECT_EQ(evaluated(*constant({})), Values());
}

TEST_F(ConstantTest, ResetMakesItInvalidAgainAndKeepsTheValue) {
    const auto pConstant = constant({1.0});
    evaluated(*pConstant);
    EXPECT_TRUE(pConstant->reset());
    EXPECT_FALSE(pConstant->isValid());
    EXPECT_EQ(evaluated(*pConstant), Values{1.0});
}

TEST_F(ConstantTest, ConfigureSucceedsAndLeavesItValid) {
    const auto pConstant = constant({1.0});
    evaluated(*pConstant);
    EXPECT_TRUE(pConstant->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_TRUE(pConstant->isValid());
}

TEST_F(ConstantTest, NameIsMadeOfTheValueAndStaysInItsBuffer) {
    const auto pConstant = constant({1.0, 2.5});
    const char* szName = pConstant->getName();
    EXPECT_STREQ(szName, "Constant_[1 2.5]");
    EXPECT_EQ(pConstant->getName(), szName);
    EXPECT_STREQ(constant({})->getName(), "Constant_[]");
}

TEST_F(ConstantTest, EqualValuesHaveEqualNamesAndDifferentIdentifiers) {
    const auto pFirst = constant({1.0});
    const auto pSecond = constant({1.0});
    EXPECT_STREQ(pFirst->getName(), pSecond->getName());
    EXPECT_NE(pFirst->getId(), pSecond->getId());
}

TEST_F(ConstantTest, CreateNewMakesANodeOfTheSameClass) {
    const auto pConstant = constant({1.0});
    const DoubleVector vValue{2.0};
    const Handle<ConstantBase> pNew(pConstant->createNew(vValue));
    EXPECT_FALSE(Handle<ConstantImpl>(pNew).isNull());
    EXPECT_EQ(valuesOf(pNew->getValue()), Values{2.0});
    EXPECT_NE(&pNew->getValue(), &vValue);
}

TEST_F(ConstantTest, CopyHasAVectorOfItsOwn) {
    const auto pConstant = constant({1.0, 2.0});
    const Handle<ConstantImpl> pCopy(pConstant->copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_EQ(valuesOf(pCopy->getValue()), (Values{1.0, 2.0}));
    EXPECT_NE(pCopy->getValue().begin(), pConstant->getValue().begin());
    EXPECT_NE(pCopy->getId(), pConstant->getId());
}

TEST_F(ConstantTest, OneCopierGivesOneCopy) {
    const auto pConstant = constant({1.0});
    ExpressionImplCopier copier;
    const auto pCopy = pConstant->copy(copier);
    EXPECT_EQ(pConstant->copy(copier).get(), pCopy.get());
    EXPECT_NE(pConstant->copy().get(), pCopy.get());
}

TEST_F(ConstantTest, ConstructionIsTraced) {
    LogCapture logs(LeafLogger, log4cplus::TRACE_LOG_LEVEL);
    constant({1.0});
    EXPECT_EQ(take(logs, log4cplus::TRACE_LOG_LEVEL),
              (Texts{logged(LeafLogger, "ENTER: ConstantBase::ConstantBase"),
                     logged(LeafLogger, "EXIT: ConstantBase::ConstantBase")}));
}

TEST_F(ConstantTest, RecognisesNothingInItself) {
    const auto pConstant = constant({1.0});
    EXPECT_FALSE(pConstant->isDependantOf(Handle<ExpressionBaseImpl>(new RecordingNode)));
}

} // namespace

} // namespace Velmora::Math::Xpr
