#pragma once

#include <velmora/Export.h>

namespace Velmora {

class Logger;

/// The report of a programming error: a wrong calling order or an impossible state.
///
/// Construction is the act of asserting: a failed condition goes to the process's handler, and a
/// condition that holds costs nothing. The handler may return, so the code behind an assertion
/// takes a defined path. Input data are never checked by an assertion.
class VELMORA_EXPORT Assertion {
public:
    /// What a failed condition is handed to. It may return.
    using Handler = void (*)(const char* expression, const char* file, int line);

    /// Reports without a logger.
    Assertion(bool in_bCondition, const char* in_szExpression, const char* in_szFile,
              int in_iLine) {
        if (!in_bCondition) {
            fail(in_szExpression, nullptr, in_szFile, in_iLine);
        }
    }

    /// Reports through the given logger.
    Assertion(bool in_bCondition, const char* in_szExpression, const Logger& in_logger,
              const char* in_szFile, int in_iLine) {
        if (!in_bCondition) {
            fail(in_szExpression, &in_logger, in_szFile, in_iLine);
        }
    }

    Assertion(const Assertion&) = delete;
    Assertion& operator=(const Assertion&) = delete;

    /// Installs the handler of the process and returns the one before; null stands for the default
    /// one. That writes "assertion failed: " and the expression at ERROR level, to the logger given
    /// or else to "velmora.Assertion", and returns. If the environment variable
    /// VELMORA_ABORT_ON_ASSERTION isn't empty, it aborts the process instead of returning.
    /// Thread-safe.
    static Handler setHandler(Handler in_pHandler) noexcept;

private:
    static void fail(const char* in_szExpression, const Logger* in_pLogger, const char* in_szFile,
                     int in_iLine);
};

} // namespace Velmora
