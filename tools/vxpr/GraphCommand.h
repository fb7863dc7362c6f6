#pragma once

#include "ExitStatus.h"
#include "LinkedScript.h"
#include "ScriptGraph.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Vxpr {

/// `vxpr graph`: what a script computes, as a graph.
class GraphCommand {
public:
    /// Adds the subcommand; in_App must outlive it.
    explicit GraphCommand(CLI::App& inout_App);

    /// Whether the command line asks for it.
    bool isAsked() const { return m_pCommand->parsed(); }

    ExitStatus execute() const;

private:
    std::string chooseFormat() const;
    std::vector<ScriptGraph::Definition> collect(LinkedScript& inout_Script,
                                                 ScriptLibrary& inout_Library) const;
    void ask(const LinkedScript& in_Script,
             std::vector<ScriptGraph::Definition>& inout_vDefinitions) const;
    std::string makeTitle(const LinkedScript& in_Script) const;

    CLI::App* m_pCommand;
    std::string m_strScript;
    std::vector<std::string> m_vFeatures;
    bool m_bRaw = false;
    bool m_bLinked = false;
    bool m_bOptimized = false;
    std::vector<std::string> m_vDirectories;
    std::string m_strOutput = "-";
    std::string m_strLog;
};

} // namespace Vxpr
