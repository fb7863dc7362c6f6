#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "math/xpr/src/UnknownFunction.h"
#include "math/xpr/src/UnknownVariable.h"
#include "support/AssertionCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(UnknownVariableTest, HasNoValueAndNoReset) {
    const AssertionCapture assertions;
    UnknownVariable variable;
    Math::DoubleVector vValue;
    EXPECT_FALSE(variable.evaluate(vValue));
    LimitedObjPtr<Math::DoubleVector> pValue;
    EXPECT_FALSE(variable.evaluate(pValue));
    EXPECT_THAT(assertions.expressions(), IsEmpty());
    EXPECT_FALSE(variable.reset());
    EXPECT_THAT(assertions.expressions(), ElementsAre("false && \"can't reset UnknowVariable\""));
}

TEST(UnknownVariableTest, CopyIsAPlaceholderOfTheSameName) {
    UnknownVariable variable;
    variable.setName("s.x");
    variable.setSourceInfo("here");
    const Handle<UnknownVariable> pCopy(variable.copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "s.x");
    EXPECT_STREQ(pCopy->getSourceInfo(), "here");
    EXPECT_NE(pCopy->getId(), variable.getId());
}

TEST(UnknownVariableTest, DependsOnNothing) {
    const Handle<UnknownVariable> pVariable(new UnknownVariable);
    EXPECT_FALSE(pVariable->isDependantOf(pVariable));
}

TEST(UnknownVariableTest, HasItsAccount) {
    EXPECT_STREQ(UnknownVariable::getMemAccountName(), "UnknownVariable");
}

TEST(UnknownFunctionTest, HasNoValueNoResetAndNoConfiguration) {
    const AssertionCapture assertions;
    UnknownFunction function;
    Math::DoubleVector vValue;
    EXPECT_FALSE(function.evaluate(vValue));
    LimitedObjPtr<Math::DoubleVector> pValue;
    EXPECT_FALSE(function.evaluate(pValue));
    EXPECT_THAT(assertions.expressions(), IsEmpty());
    EXPECT_FALSE(function.reset());
    EXPECT_FALSE(function.configure(TSHandle<VirtualFileSystem>()));
    EXPECT_THAT(assertions.expressions(),
                ElementsAre("false && \"can't reset UnknowFunction\"",
                            "false && \"can't configure UnknownFunction\""));
}

TEST(UnknownFunctionTest, CopyIsAPlaceholderOfTheSameCall) {
    UnknownFunction function;
    EXPECT_STREQ(function.getName(), "unamed");
    function.setName("s.f");
    function.addArgument("_0");
    function.addArgument("_1");
    function.addParameter("_0");
    const Handle<UnknownFunction> pCopy(function.copy());
    ASSERT_FALSE(pCopy.isNull());
    EXPECT_STREQ(pCopy->getName(), "s.f");
    EXPECT_EQ(pCopy->getArgumentCount(), 2U);
    EXPECT_EQ(pCopy->getParameterCount(), 1U);
    EXPECT_STREQ(UnknownFunction::getMemAccountName(), "UnknownFunction");
}

} // namespace
