#include "EngineLog.h"

#include <log4cplus/appender.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/logger.h>
#include <log4cplus/loglevel.h>
#include <log4cplus/spi/loggingevent.h>

#include <velmora/Assertion.h>

#include <algorithm>
#include <cctype>
#include <memory>

namespace Vxpr {

namespace {

/// A script can't have more to say than anybody would read.
constexpr std::size_t MOST_MESSAGES = 1000;

std::vector<EngineMessage> g_vMessages;
log4cplus::Appender* g_pCollector = nullptr; // the root logger owns it

void setCollectedLevel(log4cplus::LogLevel in_Level) {
    if (g_pCollector != nullptr) {
        g_pCollector->setThreshold(in_Level);
    }
}

void collect(const EngineMessage& in_Message) {
    if (g_vMessages.size() == MOST_MESSAGES) {
        // The last message tells how the matter ended.
        g_vMessages.pop_back();
    }
    g_vMessages.push_back(in_Message);
}

class Collector : public log4cplus::Appender {
public:
    ~Collector() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& in_Event) override {
        collect({EngineMessage::Kind::Error, in_Event.getMessage(), in_Event.getLoggerName()});
    }
};

void collectAssertion(const char* in_szExpression, const char*, int) {
    collect({EngineMessage::Kind::Assertion, in_szExpression});
}

log4cplus::LogLevel toLevel(std::string in_strLevel) {
    std::transform(in_strLevel.begin(), in_strLevel.end(), in_strLevel.begin(),
                   [](unsigned char in_c) { return static_cast<char>(std::toupper(in_c)); });
    return log4cplus::getLogLevelManager().fromString(in_strLevel);
}

} // namespace

void EngineLog::install(const std::string& in_strLevel) {
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    root.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
    log4cplus::SharedAppenderPtr pCollector(new Collector);
    root.addAppender(pCollector);
    g_pCollector = pCollector.get();
    setCollectedLevel(log4cplus::ERROR_LOG_LEVEL);
    if (!in_strLevel.empty()) {
        const log4cplus::LogLevel level = toLevel(in_strLevel);
        log4cplus::SharedAppenderPtr pConsole(new log4cplus::ConsoleAppender(true));
        pConsole->setLayout(std::make_unique<log4cplus::PatternLayout>("%-5p %c: %m%n"));
        pConsole->setThreshold(level);
        root.addAppender(pConsole);
        root.setLogLevel(std::min(level, log4cplus::LogLevel(log4cplus::ERROR_LOG_LEVEL)));
    }
    Velmora::Assertion::setHandler(&collectAssertion);
}

bool EngineLog::isEmpty() {
    return g_vMessages.empty();
}

std::vector<EngineMessage> EngineLog::take() {
    std::vector<EngineMessage> vMessages;
    vMessages.swap(g_vMessages);
    return vMessages;
}

EngineLog::Details::Details() : m_iFormerLevel(log4cplus::Logger::getRoot().getLogLevel()) {
    log4cplus::Logger::getRoot().setLogLevel(
        std::min(m_iFormerLevel, int(log4cplus::INFO_LOG_LEVEL)));
    setCollectedLevel(log4cplus::INFO_LOG_LEVEL);
}

EngineLog::Details::~Details() {
    setCollectedLevel(log4cplus::ERROR_LOG_LEVEL);
    log4cplus::Logger::getRoot().setLogLevel(m_iFormerLevel);
}

} // namespace Vxpr
