#include "CheckCommand.h"
#include "Failure.h"
#include "GraphCommand.h"
#include "ListCommand.h"
#include "RunCommand.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <exception>
#include <new>

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

} // namespace

int main(int in_iArguments, char** in_pArguments) {
    // A reader that goes away shows as an error of writing, which is handled where it occurs.
    std::signal(SIGPIPE, SIG_IGN);

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
        return app.exit(error) == 0 ? toNumber(ExitStatus::Done)
                                    : toNumber(ExitStatus::CommandLineAtFault);
    }
    try {
        return toNumber(execute(run, check, graph, list));
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
