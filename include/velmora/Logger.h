#pragma once

#include <velmora/Export.h>
#include <velmora/Resettable.h>

#include <log4cplus/logger.h>

#include <string>

namespace Velmora {

/// log4cplus's numbers: TRACE 0, DEBUG 10000, INFO 20000, ERROR 40000; -1 is no level of its own.
using LogLevel = log4cplus::LogLevel;

/// A named logger of log4cplus, usable from static initialisers and without any configuration.
///
/// Copies log under the same name. Whatever logs tests the level and then
/// `getChainedNumAppender()` before it builds a message; the macros of `LogSite.h` do so.
class VELMORA_EXPORT Logger : public log4cplus::Logger, public Resettable {
public:
    /// The unnamed logger, which logs as the root.
    Logger();
    explicit Logger(const char* in_szName);
    explicit Logger(const std::string& in_strName);

    // No moves: a moved-from logger of log4cplus can't be called any more.
    Logger(const Logger&) = default;
    Logger& operator=(const Logger&) = default;
    ~Logger() override;

    /// Hands the event to the appenders of this logger and its ancestors.
    virtual void callAppenders(const log4cplus::spi::InternalLoggingEvent& in_event) const;

    /// The number of appenders that a message of this logger reaches, up the chain.
    virtual int getChainedNumAppender() const;

    /// Writes the message if the level is enabled.
    virtual void log(LogLevel in_level, const std::string& in_strMessage, const char* in_szFile,
                     int in_iLine) const;

    /// Writes the message without testing the level.
    virtual void forcedLog(LogLevel in_level, const std::string& in_strMessage,
                           const char* in_szFile, int in_iLine) const;

    /// Writes the text at TRACE level without testing the level.
    virtual void forcedTrace(const char* in_szText) const;

    /// True; a plain logger has no state.
    bool reset() override;
};

} // namespace Velmora
