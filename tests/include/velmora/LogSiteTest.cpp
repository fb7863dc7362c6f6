#include <velmora/LogSite.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/AllocationCounter.h"
#include "support/LogCapture.h"

#include <locale>
#include <memory>
#include <ostream>
#include <stdexcept>

namespace Velmora {
namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;

constexpr const char* Name = "velmora.test.LogSite";

/// Counts how often it is written.
struct Witness {
    int& m_iWritten;
};
std::ostream& operator<<(std::ostream& inout_stream, const Witness& in_witness) {
    ++in_witness.m_iWritten;
    return inout_stream << "witness";
}

/// Sets the level of the logger under test for one test.
class Level {
public:
    explicit Level(LogLevel in_level) { logger().setLogLevel(in_level); }
    ~Level() { logger().setLogLevel(log4cplus::NOT_SET_LOG_LEVEL); }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;
    static log4cplus::Logger logger() { return log4cplus::Logger::getInstance(Name); }
};

TEST(LogSiteTest, NothingIsFormattedWithoutAnAppender) {
    const Level level(TRACE_LOG_LEVEL);
    int iWritten = 0;
    CachedLLLogger cached(Name);
    cached.setCachedLogLevel(TRACE_LOG_LEVEL);
    VELMORA_LOG_ERROR(Logger(Name), Witness{iWritten});
    VELMORA_LOG_ERROR(cached, Witness{iWritten});
    EXPECT_EQ(0, iWritten);
}

TEST(LogSiteTest, NothingIsFormattedBelowTheLevel) {
    const LogCapture capture(Name, ERROR_LOG_LEVEL);
    int iWritten = 0;
    VELMORA_LOG_DEBUG(Logger(Name), Witness{iWritten});
    VELMORA_LOG_INFO(Logger(Name), Witness{iWritten});
    EXPECT_EQ(0, iWritten);
    VELMORA_LOG_ERROR(Logger(Name), Witness{iWritten});
    EXPECT_EQ(1, iWritten);
}

TEST(LogSiteTest, ASiteThatWritesNothingAllocatesNothing) {
    const Logger enabled(Name);
    CachedLLLogger disabled(Name);
    disabled.setCachedLogLevel(ERROR_LOG_LEVEL);
    const Level level(TRACE_LOG_LEVEL);
    const Testing::AllocationCounter counter;
    VELMORA_LOG_DEBUG(enabled, "without an appender " << 1);
    VELMORA_LOG_DEBUG(disabled, "below the cached level " << 1);
    VELMORA_TRACE_SCOPE(disabled, "LogSiteTest::disabled");
    const std::size_t uiAllocations = counter.allocations();
    EXPECT_EQ(0u, uiAllocations);
}

TEST(LogSiteTest, ALineCarriesItsLevelNameTextAndPlace) {
    const LogCapture capture;
    VELMORA_LOG_INFO(Logger(Name), "value=" << 3 << ' ' << 0.5);
    const int iLine = __LINE__ - 1;
    const auto vLines = capture.lines();
    ASSERT_EQ(1u, vLines.size());
    EXPECT_EQ(INFO_LOG_LEVEL, vLines[0].level);
    EXPECT_EQ(Name, vLines[0].logger);
    EXPECT_EQ("value=3 0.5", vLines[0].message);
    EXPECT_EQ("LogSiteTest.cpp", vLines[0].file);
    EXPECT_EQ(iLine, vLines[0].line);
}

TEST(LogSiteTest, ASiteIsOneStatementAndEvaluatesItsLoggerOnce) {
    const LogCapture capture;
    int iAsked = 0;
    const auto logger = [&iAsked] {
        ++iAsked;
        return Logger(Name);
    };
    if (iAsked == 0)
        VELMORA_LOG_DEBUG(logger(), "then");
    else
        VELMORA_LOG_DEBUG(logger(), "else");
    EXPECT_EQ(1, iAsked);
    EXPECT_THAT(capture.messages(DEBUG_LOG_LEVEL), testing::ElementsAre("then"));
}

struct Grouping : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(LogSiteTest, NumbersDoNotFollowTheLocaleOfTheHost) {
    const std::locale former =
        std::locale::global(std::locale(std::locale::classic(), new Grouping));
    const LogCapture capture;
    VELMORA_LOG_DEBUG(Logger(Name), 1234567);
    std::locale::global(former);
    EXPECT_THAT(capture.messages(DEBUG_LOG_LEVEL), testing::ElementsAre("1234567"));
}

TEST(LogSiteTest, ACachedLevelDecidesAlone) {
    const LogCapture capture(Name, TRACE_LOG_LEVEL);
    CachedLLLogger logger(Name);
    logger.setCachedLogLevel(DEBUG_LOG_LEVEL);
    {
        VELMORA_TRACE_SCOPE(logger, "LogSiteTest::cached");
        VELMORA_LOG_DEBUG(logger, "debug");
        VELMORA_LOG_ERROR(logger, "error");
    }
    EXPECT_EQ(0u, capture.count(TRACE_LOG_LEVEL));
    EXPECT_EQ(1u, capture.count(DEBUG_LOG_LEVEL));
    EXPECT_EQ(1u, capture.count(ERROR_LOG_LEVEL));

    Level::logger().setLogLevel(ERROR_LOG_LEVEL);
    VELMORA_LOG_DEBUG(logger, "although the chain is at ERROR");
    EXPECT_EQ(2u, capture.count(DEBUG_LOG_LEVEL));
    logger.setCachedLogLevel(INFO_LOG_LEVEL);
    VELMORA_LOG_DEBUG(logger, "below the cached level");
    EXPECT_EQ(2u, capture.count(DEBUG_LOG_LEVEL));
}

TEST(LogSiteTest, WithoutACachedLevelTheChainDecides) {
    const LogCapture capture(Name, INFO_LOG_LEVEL);
    const CachedLLLogger logger(Name);
    VELMORA_LOG_DEBUG(logger, "debug");
    VELMORA_LOG_INFO(logger, "info");
    EXPECT_EQ(1u, capture.lines().size());
}

TEST(TraceScopeTest, WritesALineOnEntryAndOneOnExit) {
    const LogCapture capture(Name, TRACE_LOG_LEVEL);
    const Logger logger(Name);
    {
        VELMORA_TRACE_SCOPE(logger, "Class::method");
        EXPECT_EQ(1u, capture.count(TRACE_LOG_LEVEL, "Class::method"));
    }
    EXPECT_EQ(2u, capture.count(TRACE_LOG_LEVEL, "Class::method"));
    EXPECT_EQ(2u, capture.lines().size());
    EXPECT_EQ(Name, capture.lines()[0].logger);
}

/// How the level reaches a trace scope.
struct TraceCase {
    const char* m_szWhat;
    LogLevel m_ownLevel;
    LogLevel m_rootLevel;
    int m_iCachedLevel; // -2 stands for a plain logger
    bool m_bTraced;
};

class TraceLevelTest : public testing::TestWithParam<TraceCase> {};

TEST_P(TraceLevelTest, DecidesByTheLevelInForce) {
    const TraceCase& c = GetParam();
    const LogCapture capture(std::string(), c.m_rootLevel);
    const Level level(c.m_ownLevel);
    if (c.m_iCachedLevel == -2) {
        const Logger logger(Name);
        const TraceScope scope(logger, "scope");
        EXPECT_EQ(c.m_bTraced, capture.contains(TRACE_LOG_LEVEL, "scope"));
    } else {
        CachedLLLogger logger(Name);
        logger.setCachedLogLevel(c.m_iCachedLevel);
        const TraceScope scope(logger, "scope");
        EXPECT_EQ(c.m_bTraced, capture.contains(TRACE_LOG_LEVEL, "scope"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, TraceLevelTest,
    testing::Values(TraceCase{"PlainOwnTrace", TRACE_LOG_LEVEL, ERROR_LOG_LEVEL, -2, true},
                    TraceCase{"PlainOwnDebug", DEBUG_LOG_LEVEL, TRACE_LOG_LEVEL, -2, false},
                    TraceCase{"PlainInheritedTrace", -1, TRACE_LOG_LEVEL, -2, true},
                    TraceCase{"PlainInheritedDebug", -1, DEBUG_LOG_LEVEL, -2, false},
                    TraceCase{"CachedTrace", ERROR_LOG_LEVEL, ERROR_LOG_LEVEL, 0, true},
                    TraceCase{"CachedDebug", TRACE_LOG_LEVEL, TRACE_LOG_LEVEL, 10000, false},
                    TraceCase{"UncachedTrace", -1, TRACE_LOG_LEVEL, -1, true},
                    TraceCase{"UncachedDebug", -1, DEBUG_LOG_LEVEL, -1, false}),
    [](const testing::TestParamInfo<TraceCase>& in_info) { return in_info.param.m_szWhat; });

TEST(TraceScopeTest, WithoutAnAppenderItIsNotActive) {
    const Level level(TRACE_LOG_LEVEL);
    const Logger logger(Name);
    auto pScope = std::make_unique<TraceScope>(logger, "scope");
    const LogCapture capture(Name, TRACE_LOG_LEVEL);
    pScope.reset();
    EXPECT_EQ(0u, capture.lines().size());
}

TEST(TraceScopeTest, AScopeThatWasInactiveAtEntryWritesNoExitLine) {
    const LogCapture capture(Name, DEBUG_LOG_LEVEL);
    const Logger logger(Name);
    {
        const TraceScope scope(logger, "scope");
        Level::logger().setLogLevel(TRACE_LOG_LEVEL);
    }
    EXPECT_EQ(0u, capture.lines().size());
}

TEST(TraceScopeTest, AScopeThatWasActiveAtEntryWritesItsExitLine) {
    const LogCapture capture(Name, TRACE_LOG_LEVEL);
    const Logger logger(Name);
    {
        const TraceScope scope(logger, "scope");
        Level::logger().setLogLevel(DEBUG_LOG_LEVEL);
    }
    EXPECT_EQ(2u, capture.lines().size());
}

TEST(TraceScopeTest, AnExceptionLeavesByTheExitLine) {
    const LogCapture capture(Name, TRACE_LOG_LEVEL);
    const Logger logger(Name);
    const auto traced = [&logger] {
        VELMORA_TRACE_SCOPE(logger, "throwing");
        throw std::runtime_error("thrown");
    };
    EXPECT_THROW(traced(), std::runtime_error);
    EXPECT_EQ(2u, capture.count(TRACE_LOG_LEVEL, "throwing"));
}

} // namespace
} // namespace Velmora
