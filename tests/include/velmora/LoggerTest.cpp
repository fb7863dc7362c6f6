#include <velmora/CachedLLLogger.h>
#include <velmora/FileLogger.h>
#include <velmora/Logger.h>
#include <velmora/ObjectWithLogger.h>

#include <log4cplus/spi/loggingevent.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LogCapture.h"

#include <string>

namespace Velmora {
namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using log4cplus::INFO_LOG_LEVEL;
using log4cplus::TRACE_LOG_LEVEL;

TEST(LoggerTest, TheLevelsHaveTheirNumbers) {
    EXPECT_EQ(0, TRACE_LOG_LEVEL);
    EXPECT_EQ(10000, DEBUG_LOG_LEVEL);
    EXPECT_EQ(20000, INFO_LOG_LEVEL);
    EXPECT_EQ(40000, ERROR_LOG_LEVEL);
    EXPECT_EQ(-1, log4cplus::NOT_SET_LOG_LEVEL);
}

TEST(LoggerTest, ACopyLogsUnderTheSameName) {
    const Logger logger("velmora.test.LoggerTest");
    const Logger copy(logger);
    Logger assigned;
    assigned = copy;
    EXPECT_EQ("velmora.test.LoggerTest", copy.getName());
    EXPECT_EQ("velmora.test.LoggerTest", assigned.getName());
}

TEST(LoggerTest, TheUnnamedLoggerIsTheRoot) {
    EXPECT_EQ(log4cplus::Logger::getRoot().getName(), Logger().getName());
    EXPECT_EQ(log4cplus::Logger::getRoot().getName(), Logger("").getName());
    const LogCapture capture;
    Logger().log(ERROR_LOG_LEVEL, "from the root", "file.cpp", 1);
    EXPECT_TRUE(capture.contains(ERROR_LOG_LEVEL, "from the root"));
}

TEST(LoggerTest, AppendersAreCountedUpTheChain) {
    const Logger logger("velmora.test.counting.child");
    EXPECT_EQ(0, logger.getChainedNumAppender());
    const LogCapture own("velmora.test.counting.child");
    EXPECT_EQ(1, logger.getChainedNumAppender());
    const LogCapture parent("velmora.test.counting");
    const LogCapture root;
    EXPECT_EQ(3, logger.getChainedNumAppender());
    EXPECT_EQ(1, Logger().getChainedNumAppender());
}

TEST(LoggerTest, AppendersBeyondALoggerThatIsNotAdditiveAreNotCounted) {
    log4cplus::Logger parent = log4cplus::Logger::getInstance("velmora.test.closed");
    parent.setAdditivity(false);
    const LogCapture root;
    EXPECT_EQ(0, Logger("velmora.test.closed.child").getChainedNumAppender());
    parent.setAdditivity(true);
    EXPECT_EQ(1, Logger("velmora.test.closed.child").getChainedNumAppender());
}

TEST(LoggerTest, LogTestsTheLevelAndForcedLogDoesNot) {
    const Logger logger("velmora.test.forced");
    const LogCapture capture("velmora.test.forced", INFO_LOG_LEVEL);
    logger.log(DEBUG_LOG_LEVEL, "tested", "file.cpp", 7);
    logger.log(INFO_LOG_LEVEL, "enabled", "file.cpp", 7);
    logger.forcedLog(DEBUG_LOG_LEVEL, "forced", "file.cpp", 8);
    logger.forcedTrace("traced");
    const auto vLines = capture.lines();
    ASSERT_EQ(3u, vLines.size());
    EXPECT_EQ("enabled", vLines[0].message);
    EXPECT_EQ("forced", vLines[1].message);
    EXPECT_EQ("velmora.test.forced", vLines[1].logger);
    EXPECT_EQ("file.cpp", vLines[1].file);
    EXPECT_EQ(8, vLines[1].line);
    EXPECT_EQ(TRACE_LOG_LEVEL, vLines[2].level);
}

TEST(LoggerTest, CallAppendersHandsAnEventOn) {
    const LogCapture capture("velmora.test.event");
    const Logger logger("velmora.test.event");
    logger.callAppenders(log4cplus::spi::InternalLoggingEvent(logger.getName(), INFO_LOG_LEVEL,
                                                              "event", "file.cpp", 1, ""));
    EXPECT_TRUE(capture.contains(INFO_LOG_LEVEL, "event"));
}

TEST(LoggerTest, ResetIsTrue) {
    EXPECT_TRUE(Logger("velmora.test.reset").reset());
}

TEST(CachedLLLoggerTest, NothingIsCachedAtFirst) {
    EXPECT_EQ(-1, CachedLLLogger().getCachedLogLevel());
    EXPECT_EQ(-1, CachedLLLogger("velmora.test.cached").getCachedLogLevel());
    EXPECT_EQ(-1, CachedLLLogger(Logger("velmora.test.cached")).getCachedLogLevel());
}

TEST(CachedLLLoggerTest, CopyAndAssignmentCarryNameAndLevelOver) {
    CachedLLLogger logger("velmora.test.cached");
    logger.setCachedLogLevel(INFO_LOG_LEVEL);
    const CachedLLLogger copy(logger);
    CachedLLLogger assigned;
    assigned = copy;
    EXPECT_EQ("velmora.test.cached", assigned.getName());
    EXPECT_EQ(INFO_LOG_LEVEL, assigned.getCachedLogLevel());
}

TEST(CachedLLLoggerTest, ResetForgetsTheCachedLevel) {
    CachedLLLogger logger("velmora.test.cached");
    logger.setCachedLogLevel(INFO_LOG_LEVEL);
    EXPECT_TRUE(static_cast<Resettable&>(logger).reset());
    EXPECT_EQ(-1, logger.getCachedLogLevel());
}

TEST(CachedLLLoggerTest, LogFollowsTheCachedLevelAndWithoutOneTheChain) {
    const LogCapture capture("velmora.test.cached", ERROR_LOG_LEVEL);
    CachedLLLogger logger("velmora.test.cached");
    const Logger& base = logger;
    base.log(DEBUG_LOG_LEVEL, "by the chain", "file.cpp", 1);
    logger.setCachedLogLevel(DEBUG_LOG_LEVEL);
    base.log(DEBUG_LOG_LEVEL, "by the cache", "file.cpp", 2);
    EXPECT_THAT(capture.messages(DEBUG_LOG_LEVEL), testing::ElementsAre("by the cache"));
}

VELMORA_FILE_LOGGER(fileLogger, "velmora.test.FileLogger");

TEST(FileLoggerTest, TheAccessorGivesOneLoggerOfThatName) {
    EXPECT_EQ("velmora.test.FileLogger", fileLogger().getName());
    EXPECT_EQ(&fileLogger(), &fileLogger());
    EXPECT_TRUE(fileLoggerIsCreated);
}

class WithLogger : public ObjectWithLogger<CachedLLLogger> {
public:
    WithLogger() = default;
    explicit WithLogger(const CachedLLLogger& in_logger)
        : ObjectWithLogger<CachedLLLogger>(in_logger) {}
};

TEST(ObjectWithLoggerTest, StartsUnnamedAndTakesTheLoggerThatItIsGiven) {
    WithLogger object;
    EXPECT_EQ(Logger().getName(), object.getLogger().getName());
    object.setLogger(CachedLLLogger(fileLogger()));
    EXPECT_EQ("velmora.test.FileLogger", object.getLogger().getName());
}

TEST(ObjectWithLoggerTest, CopiesTheLoggerAndForwardsReset) {
    WithLogger object(CachedLLLogger("velmora.test.object"));
    object.getLogger().setCachedLogLevel(ERROR_LOG_LEVEL);
    const WithLogger copy(object);
    EXPECT_TRUE(object.reset());
    EXPECT_EQ(-1, object.getLogger().getCachedLogLevel());
    EXPECT_EQ("velmora.test.object", copy.getLogger().getName());
    EXPECT_EQ(ERROR_LOG_LEVEL, copy.getLogger().getCachedLogLevel());
    object = copy;
    EXPECT_EQ(ERROR_LOG_LEVEL, object.getLogger().getCachedLogLevel());
}

} // namespace
} // namespace Velmora
