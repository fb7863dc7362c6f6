#pragma once

#include "DiagnosticPrinter.h"
#include "ExitStatus.h"
#include "FeatureRow.h"
#include "FrameSource.h"
#include "InputFeed.h"
#include "LinkedScript.h"
#include "Output.h"
#include "RecordingFrames.h"
#include "RunStatistics.h"
#include "ScriptLibrary.h"
#include "Table.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vxpr {

/// The main job: a script over a recording gives a table.
class Run {
public:
    enum class Format { Csv, JsonLines, Npy };

    struct Options {
        LinkedScript::Options m_Script;
        std::vector<std::string> m_vFeatures;
        std::optional<RecordingFrames::Options> m_Recording;
        double m_dTableHop = 0.0; ///< seconds from row to row where there is no recording
        InputFeed::Tables m_Tables;
        std::string m_strOutput = "-";
        Format m_Format = Format::Csv;
        bool m_bQuiet = false;
        bool m_bStatistics = false; ///< show at the end what was evaluated, and how long it took
    };

    explicit Run(const Options& in_Options);

    /// Throws a Failure, a ReportedFailure or BrokenPipe if the table can't be completed.
    ExitStatus execute();

private:
    void checkPaths() const;
    std::vector<std::string> findInputs();
    void checkTables();
    std::unique_ptr<TableWriter> makeWriter(Output& in_Output) const;
    std::uint64_t evaluateFrames(FrameSource& inout_Frames, InputFeed& inout_Feed,
                                 FeatureRow& inout_Row, Table& inout_Table, Output& inout_Output);
    void reportOverlong(const Table& in_Table);
    void reportEnd(const FeatureRow& in_Row, std::uint64_t in_uiFrames, InputFeed& inout_Feed);
    void report(Diagnostic::Severity in_Severity, const std::string& in_strText);

    Options m_Options;
    ScriptLibrary m_Library;
    DiagnosticPrinter m_Printer;
    std::vector<std::string> m_vColumns;
    std::size_t m_uiReportedOverlong = 0;
    std::unique_ptr<RunStatistics> m_pStatistics;
};

} // namespace Vxpr
