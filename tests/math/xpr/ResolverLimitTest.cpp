// What linking costs, and where it ends.

#include "math/xpr/src/Resolver.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "math/xpr/ResolverFixture.h"
#include "math/xpr/src/PrototypeCopier.h"
#include "math/xpr/src/UnknownFunction.h"
#include "math/xpr/src/UnknownVariable.h"
#include "support/GraphInvariants.h"
#include "support/LinkBench.h"

namespace Velmora::Math::Xpr {

namespace {

using ::testing::AllOf;
using Testing::checkLinked;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Testing::LinkBench;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;
using namespace ResolverTesting;

/// A script of definitions that each use the two before.
std::string ladder(int in_iCount, bool in_bReverse) {
    std::vector<std::string> vLines{"v0 = 1\n", "v1 = 1\n"};
    for (int i = 2; i != in_iCount; ++i) {
        vLines.push_back("v" + std::to_string(i) + " = (v" + std::to_string(i - 1) + " + v" +
                         std::to_string(i - 2) + ") * 0.5\n");
    }
    if (in_bReverse) {
        std::reverse(vLines.begin(), vLines.end());
    }
    std::string strScript;
    for (const std::string& strLine : vLines) {
        strScript += strLine;
    }
    return strScript;
}

class LadderTest : public ResolverTest, public ::testing::WithParamInterface<bool> {};

TEST_P(LadderTest, TenThousandDefinitionsOnEachOtherLink) {
    constexpr int Count = 10000;
    m_Log.clear();
    LinkBench bench;
    {
        const LogCapture quiet(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const LogCapture quietLinker(LinkerLogger, log4cplus::ERROR_LOG_LEVEL);
        ASSERT_TRUE(bench.load("s", ladder(Count, GetParam())));
        ASSERT_TRUE(bench.link());
        EXPECT_EQ(bench.value(("s.v" + std::to_string(Count - 1)).c_str()), "[1]");
    }
    EXPECT_EQ(bench.m_Linked.size(), std::size_t(Count));
}

INSTANTIATE_TEST_SUITE_P(FileOrder, LadderTest, ::testing::Values(false));
INSTANTIATE_TEST_SUITE_P(ReverseOrder, LadderTest, ::testing::Values(true));

class ResolverLimitTest : public ResolverTest {
protected:
    ResolverLimitTest() : m_Quiet(LinkerLogger, log4cplus::ERROR_LOG_LEVEL) {}

    LogCapture m_Quiet;
};

TEST_F(ResolverLimitTest, CallsInsideCallsCostNoMoreThanTheGraphIsLarge) {
    // Each level reads its argument twice: walked along every path, this never ends.
    std::string strCall = "1";
    for (int i = 0; i != 60; ++i) {
        strCall = "f(" + strCall + ", 0)";
    }
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", "f(x, y) = (x + x) * 0.5 + y\na = " + strCall + "\n"));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.a"), "[1]");
    EXPECT_TRUE(checkLinked(bench.m_Linked));
}

TEST_F(ResolverLimitTest, FunctionsThatMultiplyAreRefusedWithTheLimit) {
    std::string strScript = "f0(x, y) = x + y\n";
    for (int i = 1; i != 41; ++i) {
        const std::string strCall = "f" + std::to_string(i - 1) + "(x, y)";
        strScript += "f" + std::to_string(i) + "(x, y) = " + strCall + " + " + strCall + "\n";
    }
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", strScript));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Quiet.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre(AllOf(StartsWith("<file_position fileName=\"s\" line=\""),
                                  HasSubstr("too many copies of functions for expression: s.f"),
                                  HasSubstr(std::to_string(PrototypeCopier::MaxNodes)))));
    EXPECT_FALSE(bench.linked<Function>("s.f5").isNull());
}

/// Names that each stand on the next, first name first: resolving the first goes through all.
void addChain(Dictionnary& out, std::size_t in_uiCount, const Handle<Expression>& in_pLast) {
    for (std::size_t ui = 0; ui + 1 != in_uiCount; ++ui) {
        const std::string strNext = "s.v" + std::to_string(ui + 1);
        out.add(
            variable(("s.v" + std::to_string(ui)).c_str(), named<UnknownVariable>(strNext.c_str())),
            false);
    }
    out.add(variable(("s.v" + std::to_string(in_uiCount - 1)).c_str(), in_pLast), false);
}

TEST_F(ResolverLimitTest, BehindALimitOtherMistakesAreStillReportedAndTheLimitIsNot) {
    std::string strScript = "a = nope\nf0(x) = x + 1\n";
    for (int i = 1; i != 2000; ++i) {
        const std::string strNumber = std::to_string(i);
        strScript += "f" + strNumber + "(x) = f" + std::to_string(i - 1) + "(x)\n";
    }
    // Of what stands above the limit some have a mistake of their own, before or behind it.
    strScript += "g(x, y) = f1999(x) + nil\nh(x, y) = none + f1999(x)\nz = zero\n";
    LinkBench bench;
    ASSERT_TRUE(bench.load("s", strScript));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Quiet.messages(log4cplus::ERROR_LOG_LEVEL),
                UnorderedElementsAre(HasSubstr("can't resolve expression: s.nope"),
                                     HasSubstr("too many copies"),
                                     HasSubstr("can't resolve expression: s.none"),
                                     HasSubstr("can't resolve expression: s.zero")));
}

TEST_F(ResolverLimitTest, AChainOfNamesAsLongAsTheLimitLinks) {
    LinkBench bench;
    addChain(bench.m_Raw, Resolver::MaxNames, constant(5));
    ASSERT_TRUE(bench.link());
    EXPECT_EQ(bench.value("s.v0"), "[5]");
}

TEST_F(ResolverLimitTest, ALongerChainOfNamesIsRefusedWithTheLimit) {
    LinkBench bench;
    addChain(bench.m_Raw, Resolver::MaxNames + 1, constant(5));
    EXPECT_FALSE(bench.link());
    EXPECT_THAT(m_Quiet.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre(":too many names depend on each other at expression: s.v" +
                            std::to_string(Resolver::MaxNames) + ". A chain of at most " +
                            std::to_string(Resolver::MaxNames) + " names is allowed."));
}

TEST_F(ResolverLimitTest, OneBadNameBelowALongScriptIsReportedInProportion) {
    constexpr std::size_t Count = 2000;
    LinkBench bench;
    std::string strScript = "v0 = nope\n";
    for (std::size_t ui = 1; ui != Count; ++ui) {
        strScript += "v" + std::to_string(ui) + " = v" + std::to_string(ui - 1) + "\n";
    }
    ASSERT_TRUE(bench.load("s", strScript));
    EXPECT_FALSE(bench.link());
    EXPECT_EQ(bench.m_Linked.size(), 0u);
    const auto vErrors = m_Quiet.messages(log4cplus::ERROR_LOG_LEVEL);
    EXPECT_GE(vErrors.size(), Count);
    EXPECT_LT(vErrors.size(), Count + 2 * Resolver::MaxFailures);
    EXPECT_EQ(vErrors.back(), at("s", Count, strScript.size() > 0 ? 9 : 0) +
                                  "can't resolve expression: s.v" + std::to_string(Count - 2));
}

} // namespace
} // namespace Velmora::Math::Xpr
