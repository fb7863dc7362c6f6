#pragma once

#include <velmora/CachedLLLogger.h>
#include <velmora/Export.h>
#include <velmora/Logger.h>

namespace Velmora {

/// Marks the entry and the exit of a function by a line each at TRACE level.
///
/// It decides at entry whether it writes, and never again: a scope that wrote its entry line writes
/// its exit line, also when an exception leaves the function. The logger and the name outlive it.
class VELMORA_EXPORT TraceScope {
public:
    /// Traces by the level of the logger.
    TraceScope(const Logger& in_logger, const char* in_szName)
        : m_logger(in_logger),
          m_szName(in_szName),
          m_bActive(isTraced(in_logger, in_logger.getLogLevel())) {
        if (m_bActive) {
            ctorLog();
        }
    }

    /// Traces by the cached level, if there is one.
    TraceScope(const CachedLLLogger& in_logger, const char* in_szName)
        : m_logger(in_logger),
          m_szName(in_szName),
          m_bActive(isTraced(in_logger, in_logger.getCachedLogLevel() == -1
                                            ? in_logger.getChainedLogLevel()
                                            : in_logger.getCachedLogLevel())) {
        if (m_bActive) {
            ctorLog();
        }
    }

    // A temporary logger would be gone before the exit line.
    TraceScope(const Logger&&, const char*) = delete;
    TraceScope(const CachedLLLogger&&, const char*) = delete;
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

    ~TraceScope() {
        if (m_bActive) {
            dtorLog();
        }
    }

private:
    static bool isTraced(const Logger& in_logger, LogLevel in_level) {
        const bool bEnabled = in_level == log4cplus::NOT_SET_LOG_LEVEL
                                  ? in_logger.isEnabledFor(log4cplus::TRACE_LOG_LEVEL)
                                  : in_level < log4cplus::TRACE_LOG_LEVEL + 1;
        return bEnabled && in_logger.getChainedNumAppender() != 0;
    }

    void ctorLog() const noexcept;
    void dtorLog() const noexcept;

    const Logger& m_logger;
    const char* m_szName;
    bool m_bActive;
};

} // namespace Velmora
