#include <velmora/LogSite.h>

#include <locale>

namespace Velmora::detail {

LogMessage::LogMessage() {
    m_stream.imbue(std::locale::classic());
}

LogMessage::~LogMessage() = default;

void LogMessage::write(const Logger& in_logger, LogLevel in_level, const char* in_szFile,
                       int in_iLine) const {
    in_logger.forcedLog(in_level, m_stream.str(), in_szFile, in_iLine);
}

} // namespace Velmora::detail
