#pragma once

#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Vxpr {

/// `vxpr check`: its arguments, and its work.
class CheckCommand {
public:
    /// Adds the subcommand; in_App must outlive it.
    explicit CheckCommand(CLI::App& inout_App);

    /// Whether the command line asks for it.
    bool isAsked() const { return m_pCommand->parsed(); }

    ExitStatus execute() const;

private:
    bool check(const std::string& in_strPath) const;

    CLI::App* m_pCommand;
    std::vector<std::string> m_vScripts;
    std::vector<std::string> m_vDirectories;
    bool m_bQuiet = false;
    std::string m_strLog;
};

} // namespace Vxpr
