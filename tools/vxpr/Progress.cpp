#include "Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <unistd.h>

namespace Vxpr {

namespace {

constexpr double FEW_SECONDS = 5.0;
constexpr std::chrono::milliseconds REPEAT_AFTER(100);

/// Such as 1:02:03, or 2:03 below an hour.
std::string toClock(double in_dSeconds) {
    const auto uiSeconds = static_cast<unsigned long>(in_dSeconds);
    char szText[40];
    if (uiSeconds >= 3600) {
        std::snprintf(szText, sizeof szText, "%lu:%02lu:%02lu", uiSeconds / 3600,
                      uiSeconds / 60 % 60, uiSeconds % 60);
    } else {
        std::snprintf(szText, sizeof szText, "%lu:%02lu", uiSeconds / 60, uiSeconds % 60);
    }
    return szText;
}

} // namespace

Progress::Progress(const Options& in_Options, std::optional<double> in_Seconds)
    : m_Seconds(in_Seconds) {
    m_bShown = !in_Options.m_bQuiet && isatty(STDERR_FILENO) != 0 &&
               !in_Options.m_bResultsOnTerminal && in_Seconds.value_or(FEW_SECONDS) >= FEW_SECONDS;
}

Progress::~Progress() {
    wipe();
}

void Progress::show(double in_dSeconds) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_Seconds && in_dSeconds < FEW_SECONDS) {
        return;
    }
    if (m_bOnScreen && now - m_LastShown < REPEAT_AFTER) {
        return;
    }
    m_LastShown = now;
    m_bOnScreen = true;
    std::string strLine = "\r" + toClock(in_dSeconds);
    if (m_Seconds) {
        const double dShare = std::min(100.0, std::floor(100.0 * in_dSeconds / *m_Seconds));
        strLine +=
            " of " + toClock(*m_Seconds) + " (" + std::to_string(std::lround(dShare)) + " %)";
    }
    strLine += "\x1b[K";
    std::fputs(strLine.c_str(), stderr);
    std::fflush(stderr);
}

void Progress::wipe() {
    if (m_bOnScreen) {
        m_bOnScreen = false;
        std::fputs("\r\x1b[K", stderr);
        std::fflush(stderr);
    }
}

} // namespace Vxpr
