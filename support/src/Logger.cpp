#include <velmora/Logger.h>

#include <new>

namespace Velmora {

namespace {

/// Climbs from a logger of the hierarchy to its root.
class ChainLink : private log4cplus::Logger {
public:
    explicit ChainLink(const log4cplus::Logger& in_logger) : log4cplus::Logger(in_logger) {}

    std::size_t getNumAppender() {
        try {
            return getAllAppenders().size();
        } catch (const std::bad_alloc&) {
            // Destructors ask too. The list of none takes no memory, so that there is one.
            return 1;
        }
    }

    /// False where the chain ends: at the root, and at a logger that keeps its messages to itself.
    bool climb() {
        static const void* const s_pRoot = ChainLink(getRoot()).value;
        if (value == s_pRoot || !getAdditivity()) {
            return false;
        }
        log4cplus::Logger::operator=(getParent());
        return true;
    }
};

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
    std::size_t uiCount = 0;
    ChainLink link(*this);
    do {
        uiCount += link.getNumAppender();
    } while (link.climb());
    return static_cast<int>(uiCount);
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
