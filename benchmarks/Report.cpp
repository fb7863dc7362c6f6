#include "Report.h"

#include <cstdio>
#include <ostream>

namespace Velmora::Benchmarks {

namespace {

/// Three significant digits.
std::string format(double in_dValue) {
    char szText[32];
    const int iDecimals = in_dValue < 10.0 ? 2 : in_dValue < 100.0 ? 1 : 0;
    std::snprintf(szText, sizeof szText, "%.*f", iDecimals, in_dValue);
    return szText;
}

bool isMet(double in_dMeasured, double in_dBound, bool in_bMoreIsBetter) {
    return in_bMoreIsBetter ? in_dMeasured >= in_dBound : in_dMeasured <= in_dBound;
}

const char* judge(double in_dMeasured, const Target& in_Target) {
    if (isMet(in_dMeasured, in_Target.m_dAim, in_Target.m_bMoreIsBetter)) {
        return "aim";
    }
    return isMet(in_dMeasured, in_Target.m_dMust, in_Target.m_bMoreIsBetter) ? "must"
                                                                             : "**missed**";
}

/// The first two lines of a table with a column for each entry.
std::string toHead(const Race::Times& in_Times, const std::string& in_strUnit) {
    std::string strNames = "| " + in_strUnit + " |";
    std::string strRule = "|---|";
    for (const Race::Times::Entry& entry : in_Times) {
        strNames += " " + entry.m_strRunner + " |";
        strRule += "---|";
    }
    return strNames + "\n" + strRule + "\n";
}

} // namespace

void Report::addTarget(const std::string& in_strWhat, const std::string& in_strUnit,
                       double in_dMeasured, const Target& in_Target,
                       const std::string& in_strRule) {
    m_vTargets.push_back({in_strWhat, in_strUnit, in_dMeasured, in_Target, in_strRule});
}

void Report::addTimes(const std::string& in_strWhat, const Race::Times& in_Times,
                      const std::string& in_strUnit) {
    m_vTimes.push_back({in_strWhat, in_Times, in_strUnit});
}

void Report::write(std::ostream& inout_Stream) const {
    writeTargets(inout_Stream);
    writeTimes(inout_Stream);
}

void Report::writeTargets(std::ostream& inout_Stream) const {
    inout_Stream << "| | measured | must | aim | reached | bounds |\n"
                 << "|---|---|---|---|---|---|\n";
    for (const TargetRow& row : m_vTargets) {
        const auto write = [&row](double in_dValue) {
            return format(in_dValue) + (row.m_strUnit.empty() ? "" : " ") + row.m_strUnit;
        };
        inout_Stream << "| " << row.m_strWhat << " | " << write(row.m_dMeasured) << " | "
                     << write(row.m_Target.m_dMust) << " | " << write(row.m_Target.m_dAim) << " | "
                     << judge(row.m_dMeasured, row.m_Target) << " | " << row.m_strRule << " |\n";
    }
}

void Report::writeTimes(std::ostream& inout_Stream) const {
    std::string strHead;
    for (const TimesRow& row : m_vTimes) {
        const std::string strRowHead = toHead(row.m_Times, row.m_strUnit);
        if (strRowHead != strHead) {
            strHead = strRowHead;
            inout_Stream << '\n' << strHead;
        }
        inout_Stream << "| " << row.m_strWhat << " |";
        for (const Race::Times::Entry& entry : row.m_Times) {
            inout_Stream << ' ' << format(entry.m_dTime);
            if (entry.m_eRole == Race::Role::Reference) {
                inout_Stream << " (" << format(row.m_Times.begin()->m_dTime / entry.m_dTime) << ')';
            }
            inout_Stream << " |";
        }
        inout_Stream << '\n';
    }
}

} // namespace Velmora::Benchmarks
