#pragma once

#include <velmora/Logger.h>

namespace Velmora {

/// A logger that remembers the level in force, so that its sites cost one comparison.
///
/// It never fills the cache by itself: whoever owns the logger decides when the level is taken.
/// Copies carry the cached level.
class VELMORA_EXPORT CachedLLLogger : public Logger {
public:
    CachedLLLogger() = default;

    /// Logs under that name, with nothing cached.
    explicit CachedLLLogger(const char* in_szName);
    explicit CachedLLLogger(const std::string& in_strName);

    /// Logs under the name of `in_logger`, with nothing cached.
    explicit CachedLLLogger(const Logger& in_logger);

    CachedLLLogger(const CachedLLLogger&) = default;
    CachedLLLogger& operator=(const CachedLLLogger&) = default;
    ~CachedLLLogger() override;

    /// The cached level, or -1 if none is cached.
    int getCachedLogLevel() const noexcept { return m_iCachedLogLevel; }
    void setCachedLogLevel(int in_iLevel) noexcept { m_iCachedLogLevel = in_iLevel; }

    /// The level test of a site: by the cached level, or by the chain if none is cached.
    bool isCachedEnabledFor(LogLevel in_level) const {
        return m_iCachedLogLevel == -1 ? isEnabledFor(in_level) : m_iCachedLogLevel < in_level + 1;
    }

    using Logger::forcedLog;
    void log(LogLevel in_level, const std::string& in_strMessage, const char* in_szFile,
             int in_iLine) const override;

    /// Forgets the cached level; true.
    bool reset() override;

private:
    int m_iCachedLogLevel = -1;
};

} // namespace Velmora
