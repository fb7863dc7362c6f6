#include <velmora/CachedLLLogger.h>

namespace Velmora {

CachedLLLogger::CachedLLLogger(const char* in_szName) : Logger(in_szName) {}

CachedLLLogger::CachedLLLogger(const std::string& in_strName) : Logger(in_strName) {}

CachedLLLogger::CachedLLLogger(const Logger& in_logger) : Logger(in_logger) {}

CachedLLLogger::~CachedLLLogger() = default;

void CachedLLLogger::log(LogLevel in_level, const std::string& in_strMessage, const char* in_szFile,
                         int in_iLine) const {
    if (isCachedEnabledFor(in_level)) {
        forcedLog(in_level, in_strMessage, in_szFile, in_iLine);
    }
}

bool CachedLLLogger::reset() {
    m_iCachedLogLevel = -1;
    return true;
}

} // namespace Velmora
