// With VELMORA_TEST_LOG_LEVEL set (TRACE, DEBUG, ...), every test runs with logging at that level:
// all messages are formatted, and go nowhere.

#include <gtest/gtest.h>

#include <log4cplus/logger.h>
#include <log4cplus/nullappender.h>

#include <cstdlib>

namespace {

class LogEverything : public testing::Environment {
public:
    void SetUp() override {
        const char* szLevel = std::getenv("VELMORA_TEST_LOG_LEVEL");
        if (szLevel != nullptr && *szLevel != '\0') {
            log4cplus::Logger root = log4cplus::Logger::getRoot();
            root.setLogLevel(log4cplus::getLogLevelManager().fromString(szLevel));
            root.addAppender(log4cplus::SharedAppenderPtr(new log4cplus::NullAppender));
        }
    }
};

[[maybe_unused]] testing::Environment* const s_pLogEverything =
    testing::AddGlobalTestEnvironment(new LogEverything);

} // namespace
