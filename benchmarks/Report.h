#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Race.h"

namespace Velmora::Benchmarks {

/// What is asked of a measured figure: it lies at or below both bounds, or, where more is better,
/// at or above them.
struct Target {
    double m_dMust = 0.0;
    double m_dAim = 0.0;
    bool m_bMoreIsBetter = false;
};

/// The tables that a program prints, in Markdown.
class Report {
public:
    /// A measured figure beside its target. `in_strRule` says where the bounds come from.
    void addTarget(const std::string& in_strWhat, const std::string& in_strUnit,
                   double in_dMeasured, const Target& in_Target, const std::string& in_strRule);

    /// Times, one row. Rows with the same columns that follow each other share a table.
    void addTimes(const std::string& in_strWhat, const Race::Times& in_Times,
                  const std::string& in_strUnit = "ns a frame");

    /// The targets, then the times.
    void write(std::ostream& inout_Stream) const;

private:
    struct TargetRow {
        std::string m_strWhat;
        std::string m_strUnit;
        double m_dMeasured;
        Target m_Target;
        std::string m_strRule;
    };
    struct TimesRow {
        std::string m_strWhat;
        Race::Times m_Times;
        std::string m_strUnit;
    };

    void writeTargets(std::ostream& inout_Stream) const;
    void writeTimes(std::ostream& inout_Stream) const;

    std::vector<TargetRow> m_vTargets;
    std::vector<TimesRow> m_vTimes;
};

} // namespace Velmora::Benchmarks
