#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "support/AssertionCapture.h"

namespace Velmora::Testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr double Inf = std::numeric_limits<double>::infinity();

TEST(IsGreaterTest, IsOneForAGreaterAndForAnEqualValue) {
    const AssertionCapture assertions;
    BuiltIn isGreater("isGreater");
    EXPECT_EQ(isGreater({{2}, {1}}), "[1]");
    EXPECT_EQ(isGreater({{2}, {2}}), "[1]");
    EXPECT_EQ(isGreater({{1}, {2}}), "[0]");
    EXPECT_EQ(isGreater({{-0.0}, {0.0}}), "[1]");
    EXPECT_EQ(isGreater({{Inf}, {Inf}}), "[1]");
    EXPECT_EQ(isGreater({{-Inf}, {1}}), "[0]");
    EXPECT_THAT(assertions.expressions(), IsEmpty());
}

TEST(IsGreaterTest, IsZeroForANaNOnEitherSide) {
    BuiltIn isGreater("isGreater");
    EXPECT_EQ(isGreater({{Nan}, {1}}), "[0]");
    EXPECT_EQ(isGreater({{1}, {Nan}}), "[0]");
    EXPECT_EQ(isGreater({{Nan}, {Nan}}), "[0]");
}

TEST(IsGreaterTest, TakesSingleValuesOnly) {
    const AssertionCapture assertions;
    BuiltIn isGreater("isGreater");
    EXPECT_EQ(isGreater({{1, 2}, {2}}), "no result");
    EXPECT_EQ(isGreater({{}, {2}}), "no result");
    EXPECT_EQ(isGreater({{2}, {1, 2}}), "no result");
    EXPECT_EQ(isGreater({{2}, {}}), "no result");
    EXPECT_EQ(isGreater({{}, {}}), "no result");
    EXPECT_THAT(assertions.expressions(),
                ElementsAre("in_vInput1.size() == 1", "in_vInput1.size() == 1",
                            "in_vInput2.size() == 1", "in_vInput2.size() == 1",
                            "in_vInput1.size() == 1"));
}

TEST(IsGreaterTest, HasNothingToResetOrToConfigure) {
    BuiltIn isGreater("isGreater");
    EXPECT_TRUE(isGreater.reset());
    EXPECT_TRUE(isGreater.configure());
}

} // namespace
} // namespace Velmora::Testing
