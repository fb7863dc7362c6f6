#include <velmora/Logger.h>

namespace Velmora {

namespace {

/// Tells which logger of the hierarchy a handle of log4cplus stands for.
struct LoggerIdentity : log4cplus::Logger {
    explicit LoggerIdentity(const log4cplus::Logger& in_logger) : log4cplus::Logger(in_logger) {}

    const void* get() const noexcept { return value; }
};

bool isRoot(const log4cplus::Logger& in_logger) {
    static const void* const s_pRoot = LoggerIdentity(log4cplus::Logger::getRoot()).get();
    return LoggerIdentity(in_logger).get() == s_pRoot;
}

} // namespace

Logger::Logger() : log4cplus::Logger(log4cplus::Logger::getRoot()) {}

Logger::Logger(const char* in_szName)
    : Logger(std::string(in_szName == nullptr ? "" : in_szName)) {}

Logger::Logger(const std::string& in_strName)
    : log4cplus::Logger(in_strName.empty() ? log4cplus::Logger::getRoot()
                                           : log4cplus::Logger::getInstance(in_strName)) {}

Logger::~Logger() = default;

void Logger::callAppenders(const log4cplus::spi::InternalLoggingEvent& in_event) const {
    log4cplus::Logger::callAppenders(in_event);
}

int Logger::getChainedNumAppender() const {
    int iCount = 0;
    log4cplus::Logger logger(*this);
    for (;;) {
        iCount += static_cast<int>(logger.getAllAppenders().size());
        if (isRoot(logger) || !logger.getAdditivity()) {
            return iCount;
        }
        logger = logger.getParent();
    }
}

void Logger::log(LogLevel in_level, const std::string& in_strMessage, const char* in_szFile,
                 int in_iLine) const {
    if (isEnabledFor(in_level)) {
        forcedLog(in_level, in_strMessage, in_szFile, in_iLine);
    }
}

void Logger::forcedLog(LogLevel in_level, const std::string& in_strMessage, const char* in_szFile,
                       int in_iLine) const {
    log4cplus::Logger::forcedLog(in_level, in_strMessage, in_szFile, in_iLine, "");
}

void Logger::forcedTrace(const char* in_szText) const {
    forcedLog(log4cplus::TRACE_LOG_LEVEL, in_szText, "", 0);
}

bool Logger::reset() {
    return true;
}

} // namespace Velmora
