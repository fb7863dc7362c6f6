#pragma once

#include <velmora/Assertion.h>
#include <velmora/CachedLLLogger.h>
#include <velmora/Export.h>
#include <velmora/Logger.h>
#include <velmora/TraceScope.h>

#include <sstream>

/// The macros through which the system logs and asserts.
///
/// A site tests the level, then the number of appenders, and only then builds its message:
/// `VELMORA_LOG_DEBUG(logger, "text" << value)`. `logger` is a `Logger` or, for the cheaper test by
/// the cached level, a `CachedLLLogger`; it is evaluated once, and the text only if it is written.
/// The text becomes a lambda, which can't name what a structured binding has declared.

#define VELMORA_LOG_ERROR(logger, text)                                                            \
    VELMORA_LOG_AT_LEVEL(logger, ::log4cplus::ERROR_LOG_LEVEL, text)
#define VELMORA_LOG_INFO(logger, text)                                                             \
    VELMORA_LOG_AT_LEVEL(logger, ::log4cplus::INFO_LOG_LEVEL, text)
#define VELMORA_LOG_DEBUG(logger, text)                                                            \
    VELMORA_LOG_AT_LEVEL(logger, ::log4cplus::DEBUG_LOG_LEVEL, text)

/// Traces the scope that it stands in, under a literal name such as "Linker::run".
#define VELMORA_TRACE_SCOPE(logger, name)                                                          \
    const ::Velmora::TraceScope velmoraTraceScope((logger), (name))

/// Fails an assertion with the text of its condition. The caller goes on to its failure return.
#define VELMORA_ASSERT_FAIL(text)                                                                  \
    do {                                                                                           \
        constexpr const char* velmoraFile = ::Velmora::detail::bareFileName(__FILE__);             \
        const ::Velmora::Assertion velmoraAssertion(false, text, velmoraFile, __LINE__);           \
    } while (false)

/// The same, reported through a logger.
#define VELMORA_ASSERT_FAIL_L(logger, text)                                                        \
    do {                                                                                           \
        constexpr const char* velmoraFile = ::Velmora::detail::bareFileName(__FILE__);             \
        const ::Velmora::Assertion velmoraAssertion(false, text, (logger), velmoraFile, __LINE__); \
    } while (false)

#define VELMORA_LOG_AT_LEVEL(logger, level, text)                                                  \
    do {                                                                                           \
        const auto& velmoraLogger = (logger);                                                      \
        if (::Velmora::detail::isSiteEnabled(velmoraLogger, level)) {                              \
            /* A function of its own: a silent site costs its test alone. */                       \
            [&]() __attribute__((noinline, cold)) {                                                \
                constexpr const char* velmoraFile = ::Velmora::detail::bareFileName(__FILE__);     \
                ::Velmora::detail::LogMessage velmoraMessage;                                      \
                velmoraMessage.stream() << text; /* NOLINT(bugprone-macro-parentheses) */          \
                velmoraMessage.write(velmoraLogger, level, velmoraFile, __LINE__);                 \
            }                                                                                      \
            ();                                                                                    \
        }                                                                                          \
    } while (false)

namespace Velmora::detail {

/// The file name behind the last slash of a path.
constexpr const char* bareFileName(const char* in_szPath) {
    const char* szName = in_szPath;
    for (const char* sz = in_szPath; *sz != '\0'; ++sz) {
        if (*sz == '/') {
            szName = sz + 1;
        }
    }
    return szName;
}

inline bool isSiteEnabled(const Logger& in_logger, LogLevel in_level) {
    return in_logger.isEnabledFor(in_level) && in_logger.getChainedNumAppender() != 0;
}

inline bool isSiteEnabled(const CachedLLLogger& in_logger, LogLevel in_level) {
    return in_logger.isCachedEnabledFor(in_level) && in_logger.getChainedNumAppender() != 0;
}

/// The text of one log line while it is built. Numbers are written the same under every locale.
class VELMORA_EXPORT LogMessage {
public:
    LogMessage();
    ~LogMessage();
    LogMessage(const LogMessage&) = delete;
    LogMessage& operator=(const LogMessage&) = delete;

    std::ostream& stream() noexcept { return m_stream; }
    void write(const Logger& in_logger, LogLevel in_level, const char* in_szFile,
               int in_iLine) const;

private:
    std::ostringstream m_stream;
};

} // namespace Velmora::detail
