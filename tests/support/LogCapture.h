#pragma once

#include <log4cplus/logger.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Velmora {

/// One captured log line.
struct LogLine {
    log4cplus::LogLevel level;
    std::string logger;
    std::string message;
    std::string file;
    int line;
};

/// Collects what is logged while it lives.
///
/// It attaches an appender to one logger, or to the root, which hears all, and sets that logger's
/// level; both are taken back on destruction. Thread-safe.
class LogCapture {
public:
    /// An empty name stands for the root.
    explicit LogCapture(const std::string& in_strLogger = std::string(),
                        log4cplus::LogLevel in_level = log4cplus::DEBUG_LOG_LEVEL);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogLine> lines() const;

    /// The messages of one level, in order.
    std::vector<std::string> messages(log4cplus::LogLevel in_level) const;

    /// Whether a message of that level contains the text.
    bool contains(log4cplus::LogLevel in_level, const std::string& in_strText) const;

    /// The number of messages of that level that contain the text.
    std::size_t count(log4cplus::LogLevel in_level,
                      const std::string& in_strText = std::string()) const;

    /// Forgets the lines collected so far.
    void clear();

private:
    class Appender;

    log4cplus::Logger m_logger;
    const log4cplus::LogLevel m_formerLevel;
    log4cplus::helpers::SharedObjectPtr<Appender> m_pAppender;
};

} // namespace Velmora
