#include <velmora/Assertion.h>

#include <velmora/Logger.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace Velmora {

namespace {

std::atomic<Assertion::Handler> s_pHandler{nullptr};

bool mustAbort() {
    const char* szValue = std::getenv("VELMORA_ABORT_ON_ASSERTION");
    return szValue != nullptr && *szValue != '\0';
}

void report(const char* in_szExpression, const Logger& in_logger, const char* in_szFile,
            int in_iLine) {
    const std::string strLine = std::string("assertion failed: ") + in_szExpression;
    const bool bLogged = in_logger.isEnabledFor(log4cplus::ERROR_LOG_LEVEL) &&
                         in_logger.getChainedNumAppender() != 0;
    if (bLogged) {
        in_logger.forcedLog(log4cplus::ERROR_LOG_LEVEL, strLine, in_szFile, in_iLine);
    }
    if (mustAbort()) {
        if (!bLogged) {
            std::fprintf(stderr, "%s (%s:%d)\n", strLine.c_str(), in_szFile, in_iLine);
        }
        std::abort();
    }
}

} // namespace

Assertion::Handler Assertion::setHandler(Handler in_pHandler) noexcept {
    return s_pHandler.exchange(in_pHandler);
}

void Assertion::fail(const char* in_szExpression, const Logger* in_pLogger, const char* in_szFile,
                     int in_iLine) {
    if (const Handler pHandler = s_pHandler.load()) {
        pHandler(in_szExpression, in_szFile, in_iLine);
    } else if (in_pLogger != nullptr) {
        report(in_szExpression, *in_pLogger, in_szFile, in_iLine);
    } else {
        report(in_szExpression, Logger("velmora.Assertion"), in_szFile, in_iLine);
    }
}

} // namespace Velmora
