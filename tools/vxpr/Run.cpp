#include "Run.h"

#include "CsvWriter.h"
#include "EngineLog.h"
#include "Failure.h"
#include "FeatureSelection.h"
#include "JsonLinesWriter.h"
#include "LiveEnd.h"
#include "NpyWriter.h"
#include "NumberText.h"
#include "Progress.h"
#include "ScriptInventory.h"
#include "Suggestion.h"
#include "TableFrames.h"
#include "TextList.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <set>

namespace Vxpr {

namespace {

std::unique_ptr<FrameSource> openFrames(const Run::Options& in_Options) {
    if (in_Options.m_Recording) {
        return std::make_unique<RecordingFrames>(*in_Options.m_Recording);
    }
    return std::make_unique<TableFrames>(in_Options.m_dTableHop);
}

} // namespace

Run::Run(const Options& in_Options) : m_Options(in_Options), m_Printer(m_Library) {}

void Run::report(Diagnostic::Severity in_Severity, const std::string& in_strText) {
    m_Printer.print({in_Severity, std::nullopt, in_strText});
}

/// What is read must not be overwritten, and only one thing can come through the standard input.
void Run::checkPaths() const {
    std::vector<std::string> vRead(1, m_Options.m_Script.m_strPath);
    if (m_Options.m_Recording) {
        vRead.push_back(m_Options.m_Recording->m_Recording.m_strPath);
    }
    for (const auto& [strName, strPath] : m_Options.m_Tables) {
        vRead.push_back(strPath);
    }
    int iStandardInputs = 0;
    for (const std::string& strPath : vRead) {
        iStandardInputs += strPath == "-" ? 1 : 0;
        if (strPath != "-" && m_Options.m_strOutput != "-" &&
            isSameFile(strPath, m_Options.m_strOutput)) {
            throw Failure::ofCommandLine("-o " + m_Options.m_strOutput +
                                         " would replace a file that is read; choose another name");
        }
    }
    if (iStandardInputs > 1) {
        throw Failure::ofCommandLine("only one of the script, the recording and the tables can "
                                     "come through the standard input; name the others' files");
    }
}

/// The names of the inputs that the script, and those that it uses, declare.
std::vector<std::string> Run::findInputs() {
    std::set<std::string> setInputs;
    for (const std::string& strScript : m_Library.getNames()) {
        const ScriptText* pScript = m_Library.find(strScript);
        if (pScript == nullptr) {
            continue;
        }
        const ScriptInventory inventory(*pScript);
        for (const Definition& definition : inventory.getDefinitions()) {
            if (definition.m_Kind == Definition::Kind::Input) {
                setInputs.insert(definition.m_strName);
            }
        }
    }
    // What there is to say of the scripts has been said when they were loaded.
    EngineLog::take();
    return {setInputs.begin(), setInputs.end()};
}

void Run::checkTables() {
    if (m_Options.m_Tables.empty()) {
        return;
    }
    const std::vector<std::string> vInputs = findInputs();
    for (const auto& [strName, strPath] : m_Options.m_Tables) {
        if (std::find(vInputs.begin(), vInputs.end(), strName) == vInputs.end()) {
            throw Failure::ofCommandLine(
                "--input " + strName + "=" + strPath + " feeds nothing: the script declares " +
                (vInputs.empty() ? "no input" : "only " + join(vInputs, ", ") + " by `inputvar`") +
                suggestInWords(strName, vInputs));
        }
    }
}

std::unique_ptr<TableWriter> Run::makeWriter(Output& in_Output) const {
    switch (m_Options.m_Format) {
    case Format::JsonLines:
        return std::make_unique<JsonLinesWriter>(in_Output);
    case Format::Npy:
        if (!in_Output.isFile()) {
            throw Failure::ofCommandLine("an NPY file starts with the number of its rows, which is "
                                         "known only at the end: give a file with -o FILE");
        }
        return std::make_unique<NpyWriter>(in_Output);
    case Format::Csv:
        break;
    }
    return std::make_unique<CsvWriter>(in_Output);
}

ExitStatus Run::execute() {
    checkPaths();
    LinkedScript script(m_Options.m_Script, m_Library, m_Printer);
    if (!script.load()) {
        throw ReportedFailure();
    }
    checkTables();
    const FeatureSelection selection(script, m_Options.m_vFeatures);
    m_vColumns = selection.getColumnNames();
    FeatureRow row(script, selection.getNames(), m_Printer);
    if (!row.configure()) {
        throw ReportedFailure();
    }
    const std::unique_ptr<FrameSource> pFrames = openFrames(m_Options);
    InputFeed feed(row.getInputs(), m_Options.m_Tables, *pFrames, m_Library, m_Printer);
    if (m_Printer.hasErrors()) {
        throw ReportedFailure();
    }
    if (m_Options.m_bStatistics) {
        m_pStatistics = std::make_unique<RunStatistics>(row.getGraph(), script.getName());
    }
    Output output(m_Options.m_strOutput);
    Table table(makeWriter(output), m_vColumns);
    const auto* pRecording = dynamic_cast<const RecordingFrames*>(pFrames.get());
    const LiveEnd end(pRecording != nullptr && pRecording->isLive() ? pRecording->getDescriptor()
                                                                    : -1);
    const std::uint64_t uiFrames = evaluateFrames(*pFrames, feed, row, table, output);
    if (uiFrames == 0) {
        end.goOn();
    }
    pFrames->checkEnd(uiFrames);
    table.finish();
    reportOverlong(table);
    output.commit();
    reportEnd(row, uiFrames, feed);
    if (pRecording != nullptr && !end.hasCome() && !pRecording->describeTruncation().empty()) {
        report(Diagnostic::Severity::Error,
               pRecording->describeTruncation() + "; the table covers what is there");
    }
    if (m_pStatistics) {
        std::fputs(m_pStatistics->format().c_str(), stderr);
    }
    end.goOn();
    return m_Printer.hasErrors() ? ExitStatus::DataAtFault : ExitStatus::Done;
}

std::uint64_t Run::evaluateFrames(FrameSource& inout_Frames, InputFeed& inout_Feed,
                                  FeatureRow& inout_Row, Table& inout_Table, Output& inout_Output) {
    const bool bOnTerminal = inout_Output.isStandardOutput() && isatty(STDOUT_FILENO) != 0;
    Progress progress({m_Options.m_bQuiet, bOnTerminal}, inout_Frames.getLength());
    m_Printer.setPreparation([&] { progress.wipe(); });
    std::uint64_t uiFrame = 0;
    while (inout_Frames.next() && inout_Feed.feed(uiFrame)) {
        const double dTime = inout_Frames.getTime();
        if (m_pStatistics) {
            m_pStatistics->evaluateFrame();
        }
        inout_Table.addRow(dTime, inout_Row.evaluate(uiFrame, dTime));
        reportOverlong(inout_Table);
        if (inout_Frames.isLive() && !inout_Output.isFile()) {
            inout_Output.flush();
        }
        progress.update(dTime);
        ++uiFrame;
    }
    m_Printer.setPreparation(nullptr);
    return uiFrame;
}

void Run::reportOverlong(const Table& in_Table) {
    for (; m_uiReportedOverlong < in_Table.getOverlong().size(); ++m_uiReportedOverlong) {
        const Table::Overlong& overlong = in_Table.getOverlong()[m_uiReportedOverlong];
        report(Diagnostic::Severity::Error,
               "`" + m_vColumns[overlong.m_uiColumn] + "` has " +
                   count(overlong.m_uiSize, "element") + " on frame " +
                   std::to_string(overlong.m_uiRow) + " (" + toText(overlong.m_dTime) +
                   " s), but only " + count(overlong.m_uiWidth, "column") +
                   ", as many as it had first; what is beyond them is left out; --format jsonl "
                   "writes values of any size");
    }
}

void Run::reportEnd(const FeatureRow& in_Row, std::uint64_t in_uiFrames, InputFeed& inout_Feed) {
    for (std::size_t uiFeature = 0; uiFeature < m_vColumns.size(); ++uiFeature) {
        const std::uint64_t uiFailures = in_Row.getFailures()[uiFeature];
        if (uiFailures > 1) {
            report(Diagnostic::Severity::Note, "`" + m_vColumns[uiFeature] + "` has no value on " +
                                                   std::to_string(uiFailures) + " of " +
                                                   count(in_uiFrames, "frame"));
        }
    }
    if (m_Options.m_Recording) {
        for (const std::string& strTable : inout_Feed.findUnread()) {
            report(Diagnostic::Severity::Warning,
                   strTable + " has more rows than the recording has frames, " +
                       std::to_string(in_uiFrames) + "; the rest isn't used");
        }
    }
}

} // namespace Vxpr
