#include "support/LogCapture.h"

#include <log4cplus/appender.h>
#include <log4cplus/spi/loggingevent.h>

#include <mutex>

namespace Velmora {

class LogCapture::Appender : public log4cplus::Appender {
public:
    ~Appender() override { destructorImpl(); }

    void close() override { closed = true; }

    std::vector<LogLine> lines() const {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_vLines;
    }

    void clear() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_vLines.clear();
    }

protected:
    void append(const log4cplus::spi::InternalLoggingEvent& in_event) override {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_vLines.push_back(LogLine{in_event.getLogLevel(), in_event.getLoggerName(),
                                   in_event.getMessage(), in_event.getFile(), in_event.getLine()});
    }

private:
    mutable std::mutex m_mutex;
    std::vector<LogLine> m_vLines;
};

LogCapture::LogCapture(const std::string& in_strLogger, log4cplus::LogLevel in_level)
    : m_logger(in_strLogger.empty() ? log4cplus::Logger::getRoot()
                                    : log4cplus::Logger::getInstance(in_strLogger)),
      m_formerLevel(m_logger.getLogLevel()),
      m_pAppender(new Appender) {
    m_logger.setLogLevel(in_level);
    m_logger.addAppender(log4cplus::SharedAppenderPtr(m_pAppender.get()));
}

LogCapture::~LogCapture() {
    m_logger.removeAppender(log4cplus::SharedAppenderPtr(m_pAppender.get()));
    m_logger.setLogLevel(m_formerLevel);
}

std::vector<LogLine> LogCapture::lines() const {
    return m_pAppender->lines();
}

std::vector<std::string> LogCapture::messages(log4cplus::LogLevel in_level) const {
    std::vector<std::string> vMessages;
    for (const LogLine& line : lines()) {
        if (line.level == in_level) {
            vMessages.push_back(line.message);
        }
    }
    return vMessages;
}

bool LogCapture::contains(log4cplus::LogLevel in_level, const std::string& in_strText) const {
    return count(in_level, in_strText) != 0;
}

std::size_t LogCapture::count(log4cplus::LogLevel in_level, const std::string& in_strText) const {
    std::size_t uiCount = 0;
    for (const std::string& strMessage : messages(in_level)) {
        uiCount += strMessage.find(in_strText) != std::string::npos ? 1 : 0;
    }
    return uiCount;
}

void LogCapture::clear() {
    m_pAppender->clear();
}

} // namespace Velmora
