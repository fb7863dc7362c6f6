#include "CheckCommand.h"
#include "Failure.h"
#include "GraphCommand.h"
#include "ListCommand.h"
#include "Output.h"
#include "PrintableText.h"
#include "RunCommand.h"
#include "Suggestion.h"
#include "TextList.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Vxpr::ExitStatus;

int toNumber(ExitStatus in_Status) {
    return static_cast<int>(in_Status);
}

int report(ExitStatus in_Status, const char* in_szText) {
    std::fprintf(stderr, "vxpr: error: %s\n", in_szText);
    return toNumber(in_Status);
}

ExitStatus execute(const Vxpr::RunCommand& in_Run, const Vxpr::CheckCommand& in_Check,
                   const Vxpr::GraphCommand& in_Graph, const Vxpr::ListCommand& in_List) {
    if (in_Run.isAsked()) {
        return in_Run.execute();
    }
    if (in_Graph.isAsked()) {
        return in_Graph.execute();
    }
    return in_Check.isAsked() ? in_Check.execute() : in_List.execute();
}

/// Without a command the parser doesn't tell what it found in place of one.
[[noreturn]] void refuseWithoutCommand(const CLI::App& in_App) {
    std::vector<std::string> vCommands;
    for (const CLI::App* pCommand : in_App.get_subcommands(nullptr)) {
        vCommands.push_back(pCommand->get_name());
    }
    const std::vector<std::string> vArguments = in_App.remaining();
    const std::string strFound = vArguments.empty() ? std::string() : vArguments.front();
    std::string strText = "a command is missing";
    if (!strFound.empty()) {
        strText = "`" + Vxpr::makePrintable(strFound) + "` is no " +
                  (strFound[0] == '-' ? "option of vxpr itself" : "command");
    }
    throw Vxpr::Failure::ofCommandLine(
        strText + "; the commands are " + Vxpr::join(vCommands, ", ") +
        Vxpr::suggestInWords(strFound, vCommands) + "; run vxpr --help for more information");
}

/// What the parser says, and which option may have been meant.
[[noreturn]] void refuseOptions(const CLI::App& in_Command, const CLI::ParseError& in_Error) {
    std::string strSuggestion;
    if (dynamic_cast<const CLI::ExtrasError*>(&in_Error) != nullptr) {
        const std::string strUnknown = in_Command.remaining().front();
        std::vector<std::string> vOptions;
        for (const CLI::Option* pOption : in_Command.get_options()) {
            for (const std::string& strName : pOption->get_lnames()) {
                vOptions.push_back("--" + strName);
            }
        }
        strSuggestion = Vxpr::suggestInWords(strUnknown.substr(0, strUnknown.find('=')), vOptions);
    }
    throw Vxpr::Failure::ofCommandLine(Vxpr::makePrintable(in_Error.what()) + strSuggestion +
                                       "; run vxpr " + in_Command.get_name() +
                                       " --help for more information");
}

ExitStatus endParsing(const CLI::App& in_App, const CLI::ParseError& in_Error) {
    if (in_Error.get_exit_code() != 0 && in_App.get_subcommands().empty()) {
        refuseWithoutCommand(in_App);
    }
    if (in_Error.get_exit_code() != 0) {
        refuseOptions(*in_App.get_subcommands().front(), in_Error);
    }
    std::ostringstream result;
    in_App.exit(in_Error, result, std::cerr);
    Vxpr::Output output("-");
    output.append(result.str());
    output.commit();
    return ExitStatus::Done;
}

ExitStatus parseAndExecute(int in_iArguments, char** in_pArguments) {
    CLI::App app("Computes features of sound from scripts of expressions.", "vxpr");
    app.set_version_flag("--version", "vxpr " VXPR_VERSION);
    app.require_subcommand(1);
    const Vxpr::RunCommand run(app);
    const Vxpr::CheckCommand check(app);
    const Vxpr::GraphCommand graph(app);
    const Vxpr::ListCommand list(app);
    try {
        app.parse(in_iArguments, in_pArguments);
    } catch (const CLI::ParseError& error) {
        return endParsing(app, error);
    }
    return execute(run, check, graph, list);
}

} // namespace

int main(int in_iArguments, char** in_pArguments) {
    // A reader that goes away shows as an error of writing, which is handled where it occurs.
    std::signal(SIGPIPE, SIG_IGN);

    try {
        return toNumber(parseAndExecute(in_iArguments, in_pArguments));
    } catch (const Vxpr::Failure& failure) {
        return report(failure.getStatus(), failure.what());
    } catch (const Vxpr::ReportedFailure&) {
        return toNumber(ExitStatus::DataAtFault);
    } catch (const Vxpr::BrokenPipe&) {
        return toNumber(ExitStatus::Done);
    } catch (const std::bad_alloc&) {
        return report(ExitStatus::DataAtFault, "there isn't enough memory; choose smaller frames");
    } catch (const std::exception& error) {
        return report(ExitStatus::DataAtFault, error.what());
    }
}
