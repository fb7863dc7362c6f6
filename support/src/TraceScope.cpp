#include <velmora/TraceScope.h>

#include <string>

namespace Velmora {

namespace {

// A trace line that can't be written isn't worth the function that it traces.
void writeTrace(const Logger& in_logger, const char* in_szMark, const char* in_szName) noexcept {
    try {
        in_logger.forcedTrace((std::string(in_szMark) + in_szName).c_str());
    } catch (...) {
    }
}

} // namespace

void TraceScope::ctorLog() const noexcept {
    writeTrace(m_logger, "ENTER: ", m_szName);
}

void TraceScope::dtorLog() const noexcept {
    writeTrace(m_logger, "EXIT: ", m_szName);
}

} // namespace Velmora
