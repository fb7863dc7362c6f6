#include <velmora/math/xpr/InvalidExpression.h>

#include <velmora/math/xpr/InvalidVariable.h>

#include <filesystem>

#include "support/GraphTest.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {

using namespace Velmora::Testing;

namespace {

/// Both null objects fail alike.
class InvalidExpressionTest : public GraphTest, public ::testing::WithParamInterface<bool> {
protected:
    Handle<Expression> make() {
        return GetParam() ? Handle<Expression>(new InvalidVariable)
                          : Handle<Expression>(new InvalidExpression);
    }
};

TEST_P(InvalidExpressionTest, WritesNothing) {
    EXPECT_EQ(textOf(*make()), "");
}

TEST_P(InvalidExpressionTest, EveryOperationFailsSilently) {
    const auto pExpression = make();
    DoubleVector vValue{1.0};
    LimitedObjPtr<DoubleVector> pValue(&vValue);
    EXPECT_FALSE(pExpression->configure(TSHandle<VirtualFileSystem>()));
    EXPECT_FALSE(pExpression->evaluate(vValue));
    EXPECT_FALSE(pExpression->evaluate(pValue));
    EXPECT_FALSE(pExpression->reset());
    EXPECT_EQ(valuesOf(vValue), Values{1.0});
    EXPECT_EQ(pValue.get(), &vValue);
}

TEST_P(InvalidExpressionTest, DumpFailsAndMakesNoFile) {
    const TempDirectory directory;
    const std::string strFile = directory.path("graph.dot");
    EXPECT_FALSE(make()->dump(strFile.c_str()));
    EXPECT_FALSE(std::filesystem::exists(strFile));
}

INSTANTIATE_TEST_SUITE_P(BothNullObjects, InvalidExpressionTest, ::testing::Bool(),
                         [](const auto& in_info) {
                             return in_info.param ? "InvalidVariable" : "InvalidExpression";
                         });

class InvalidVariableTest : public GraphTest {};

TEST_F(InvalidVariableTest, HasItsNameAndTakesNoValue) {
    const Handle<Variable> pVariable(new InvalidVariable);
    const DoubleVector vValue{1.0};
    EXPECT_STREQ(pVariable->getName(), "???InvalidVariable???");
    EXPECT_FALSE(pVariable->setValue(Handle<Expression>(constant({1.0}))));
    EXPECT_FALSE(pVariable->setValue(Handle<Expression>()));
    EXPECT_FALSE(pVariable->setValue(vValue));
    DoubleVector vResult;
    EXPECT_FALSE(pVariable->evaluate(vResult));
}

} // namespace

} // namespace Velmora::Math::Xpr
