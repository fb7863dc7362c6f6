#pragma once

#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <string>

namespace Vxpr {

/// `vxpr list`: its arguments, and its work.
class ListCommand {
public:
    /// Adds the subcommand; in_App must outlive it.
    explicit ListCommand(CLI::App& inout_App);

    /// Whether the command line asks for it.
    bool isAsked() const { return m_pCommand->parsed(); }

    ExitStatus execute() const;

private:
    CLI::App* m_pCommand;
    std::string m_strName;
    std::string m_strFormat = "text";
};

} // namespace Vxpr
