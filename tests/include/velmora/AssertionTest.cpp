#include <velmora/Assertion.h>
#include <velmora/LogSite.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

#include <cstdlib>

namespace Velmora {
namespace {

using log4cplus::ERROR_LOG_LEVEL;

class AssertionTest : public testing::Test {
protected:
    AssertionTest() { ::unsetenv("VELMORA_ABORT_ON_ASSERTION"); }
};
using AssertionDeathTest = AssertionTest;

TEST_F(AssertionTest, AFailureGoesToTheHandlerAndReturns) {
    const AssertionCapture assertions;
    const Assertion assertion(false, "a == b", "file.cpp", 12);
    const auto vFailures = assertions.failures();
    ASSERT_EQ(1u, vFailures.size());
    EXPECT_EQ("a == b", vFailures[0].expression);
    EXPECT_EQ("file.cpp", vFailures[0].file);
    EXPECT_EQ(12, vFailures[0].line);
}

TEST_F(AssertionTest, AConditionThatHoldsReportsNothing) {
    const AssertionCapture assertions;
    const Assertion plain(true, "holds", "file.cpp", 1);
    const Assertion logged(true, "holds", Logger("velmora.test.Assertion"), "file.cpp", 1);
    EXPECT_EQ(0u, assertions.count());
}

TEST_F(AssertionTest, TheSitesReportTheirTextAndPlace) {
    const AssertionCapture assertions;
    const Logger logger("velmora.test.Assertion");
    VELMORA_ASSERT_FAIL("plain");
    VELMORA_ASSERT_FAIL_L(logger, "with logger");
    EXPECT_THAT(assertions.expressions(), testing::ElementsAre("plain", "with logger"));
    EXPECT_EQ("AssertionTest.cpp", assertions.failures()[0].file);
    EXPECT_EQ(assertions.failures()[0].line + 1, assertions.failures()[1].line);
}

void first(const char*, const char*, int) {}
void second(const char*, const char*, int) {}

TEST_F(AssertionTest, SetHandlerReturnsTheOneBeforeAndNullRestoresTheDefault) {
    EXPECT_EQ(nullptr, Assertion::setHandler(&first));
    EXPECT_EQ(&first, Assertion::setHandler(&second));
    EXPECT_EQ(&second, Assertion::setHandler(nullptr));
    EXPECT_EQ(nullptr, Assertion::setHandler(nullptr));

    const LogCapture capture;
    VELMORA_ASSERT_FAIL("by default");
    EXPECT_EQ(1u, capture.lines().size());
}

TEST_F(AssertionTest, TheDefaultHandlerWritesAnErrorLineToItsOwnLogger) {
    const LogCapture capture;
    const Assertion assertion(false, "m_bInitialized", "file.cpp", 12);
    const auto vLines = capture.lines();
    ASSERT_EQ(1u, vLines.size());
    EXPECT_EQ(ERROR_LOG_LEVEL, vLines[0].level);
    EXPECT_EQ("velmora.Assertion", vLines[0].logger);
    EXPECT_EQ("assertion failed: m_bInitialized", vLines[0].message);
    EXPECT_EQ("file.cpp", vLines[0].file);
    EXPECT_EQ(12, vLines[0].line);
}

TEST_F(AssertionTest, TheDefaultHandlerWritesToTheLoggerGiven) {
    const LogCapture capture;
    VELMORA_ASSERT_FAIL_L(Logger("velmora.test.Assertion"), "x");
    ASSERT_EQ(1u, capture.lines().size());
    EXPECT_EQ("velmora.test.Assertion", capture.lines()[0].logger);
    EXPECT_EQ("assertion failed: x", capture.lines()[0].message);
}

TEST_F(AssertionTest, AnEmptyEnvironmentVariableDoesNotAbort) {
    ::setenv("VELMORA_ABORT_ON_ASSERTION", "", 1);
    const LogCapture capture;
    VELMORA_ASSERT_FAIL("x");
    EXPECT_EQ(1u, capture.lines().size());
    ::unsetenv("VELMORA_ABORT_ON_ASSERTION");
}

TEST_F(AssertionTest, AHandlerIsNotAffectedByTheEnvironmentVariable) {
    ::setenv("VELMORA_ABORT_ON_ASSERTION", "1", 1);
    const AssertionCapture assertions;
    VELMORA_ASSERT_FAIL("x");
    EXPECT_EQ(1u, assertions.count());
    ::unsetenv("VELMORA_ABORT_ON_ASSERTION");
}

TEST_F(AssertionDeathTest, TheEnvironmentVariableMakesTheDefaultHandlerAbort) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ::setenv("VELMORA_ABORT_ON_ASSERTION", "0", 1);
            VELMORA_ASSERT_FAIL("x == y");
            std::exit(0);
        },
        testing::KilledBySignal(SIGABRT), "assertion failed: x == y \\(AssertionTest.cpp:");
}

TEST_F(AssertionTest, CapturesNest) {
    const AssertionCapture outer;
    {
        const AssertionCapture inner;
        VELMORA_ASSERT_FAIL("inner");
        EXPECT_EQ(1u, inner.count("inner"));
    }
    VELMORA_ASSERT_FAIL("outer");
    EXPECT_THAT(outer.expressions(), testing::ElementsAre("outer"));
}

} // namespace
} // namespace Velmora
