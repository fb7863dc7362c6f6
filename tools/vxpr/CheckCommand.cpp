#include "CheckCommand.h"

#include "EngineLog.h"
#include "Failure.h"
#include "FeatureRow.h"
#include "FeatureSelection.h"
#include "LinkedScript.h"
#include "LogOption.h"
#include "Output.h"

#include <algorithm>

namespace Vxpr {

namespace {

constexpr const char* DESCRIPTION =
    R"(Parses and links scripts, and shows every fault with its file, line and column.)";

constexpr const char* REFERENCE = R"(
  Each script is linked on its own, with the other scripts that it uses: they are searched in its
  directory, and then in those of -I. The parameters of functions are tried as well, as far as the
  script settles them, and functions that are used without their arguments are shown. A script
  without faults is named on the standard output; faults and warnings go to the standard error.

EXIT STATUS
  0  no faults    1  faults    2  the command line is at fault

EXAMPLES
  vxpr check loudness.xpr
  vxpr check -I library *.xpr
)";

/// Tries the calls of everything that a run would evaluate.
bool configureFeatures(LinkedScript& inout_Script, DiagnosticPrinter& inout_Printer) {
    std::vector<std::string> vNames;
    for (const Definition& definition : inout_Script.getInventory().getDefinitions()) {
        if (definition.hasValue()) {
            vNames.push_back(definition.m_strName);
        }
    }
    bool bDone = true;
    for (const std::string& strName : vNames) {
        FeatureRow row(inout_Script, {strName}, inout_Printer);
        bDone = row.configure() && bDone;
        bDone = row.checkCalls() && bDone;
    }
    return bDone;
}

/// False if nobody reads it; the exit status still depends on the scripts that are left.
bool tell(Output& inout_Output, const std::string& in_strText) {
    try {
        inout_Output.append(in_strText);
        inout_Output.flush();
        return true;
    } catch (const BrokenPipe&) {
        return false;
    }
}

} // namespace

CheckCommand::CheckCommand(CLI::App& inout_App)
    : m_pCommand(inout_App.add_subcommand("check", DESCRIPTION)) {
    m_pCommand->footer(REFERENCE);
    m_pCommand->add_option("SCRIPT", m_vScripts, "The scripts; - is the standard input")
        ->required();
    m_pCommand
        ->add_option("-I,--include", m_vDirectories,
                     "Search other scripts there, behind the script's own directory")
        ->type_name("DIR")
        ->allow_extra_args(false);
    m_pCommand->add_flag("-q,--quiet", m_bQuiet, "Don't name scripts without faults");
    addLogOption(*m_pCommand, m_strLog);
}

bool CheckCommand::check(const std::string& in_strPath) const {
    ScriptLibrary library;
    DiagnosticPrinter printer(library);
    try {
        LinkedScript script({in_strPath, m_vDirectories, true}, library, printer);
        if (!script.load() || !configureFeatures(script, printer)) {
            return false;
        }
        if (script.getInventory().getDefinitions().empty()) {
            printer.print({Diagnostic::Severity::Warning, std::nullopt,
                           "'" + in_strPath + "' defines nothing"});
        }
        return true;
    } catch (const Failure& failure) {
        if (failure.getStatus() == ExitStatus::CommandLineAtFault) {
            throw;
        }
        printer.print({Diagnostic::Severity::Error, std::nullopt, failure.what()});
        return false;
    }
}

ExitStatus CheckCommand::execute() const {
    EngineLog::install(m_strLog);
    if (std::count(m_vScripts.begin(), m_vScripts.end(), "-") > 1) {
        throw Failure::ofCommandLine("only one script can come through the standard input");
    }
    ExitStatus status = ExitStatus::Done;
    Output output("-");
    bool bWanted = !m_bQuiet;
    for (const std::string& strPath : m_vScripts) {
        if (!check(strPath)) {
            status = ExitStatus::DataAtFault;
        } else if (bWanted) {
            bWanted = tell(output, strPath + ": no faults\n");
        }
    }
    return status;
}

} // namespace Vxpr
