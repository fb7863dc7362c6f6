#include <velmora/Fallible.h>

#include <gtest/gtest.h>

#include "support/AssertionCapture.h"

#include <string>

namespace Velmora {
namespace {

TEST(FallibleTest, AReadWhileUnsetFailsOneAssertionAndGivesADefault) {
    const AssertionCapture assertions;
    const Fallible<int> fallible;
    const int iRead = fallible;
    EXPECT_EQ(0, iRead);
    ASSERT_EQ(1u, assertions.count());
    const auto failure = assertions.failures().front();
    EXPECT_NE(std::string::npos, failure.file.find("Fallible.h"));
    EXPECT_LT(0, failure.line);
}

TEST(FallibleTest, ASetValueIsReadWithoutAssertion) {
    const AssertionCapture assertions;
    Fallible<std::string> fallible;
    EXPECT_FALSE(fallible.isValid());
    fallible = std::string("text");
    const std::string& strRead = fallible;
    EXPECT_EQ("text", strRead);
    EXPECT_TRUE(fallible.isValid());
    EXPECT_EQ(0u, assertions.count());
}

TEST(FallibleTest, AnInvalidatedValueIsUnsetAgain) {
    const AssertionCapture assertions;
    Fallible<int> fallible(7);
    fallible.invalidate();
    const int iRead = fallible;
    EXPECT_EQ(0, iRead);
    EXPECT_EQ(1u, assertions.count());
}

} // namespace
} // namespace Velmora
