#pragma once

#include "ExitStatus.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace Vxpr {

/// `vxpr run`: its arguments.
class RunCommand {
public:
    /// Adds the subcommand; in_App must outlive it.
    explicit RunCommand(CLI::App& inout_App);

    /// Whether the command line asks for it.
    bool isAsked() const { return m_pCommand->parsed(); }

    ExitStatus execute() const;

private:
    void checkOptionsOfARecording() const;

    CLI::App* m_pCommand;
    std::string m_strScript;
    std::vector<std::string> m_vFeatures;
    std::string m_strRecording;
    std::string m_strRaw;
    int m_iChannel = 0;
    int m_iRate = 0;
    std::string m_strFrame = "20ms";
    std::string m_strHop;
    bool m_bPad = false;
    std::vector<std::string> m_vTables;
    std::vector<std::string> m_vDirectories;
    bool m_bPlain = false;
    std::string m_strOutput = "-";
    std::string m_strFormat;
    bool m_bQuiet = false;
    bool m_bStatistics = false;
    std::string m_strLog;
};

} // namespace Vxpr
