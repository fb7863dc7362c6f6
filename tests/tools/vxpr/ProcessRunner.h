#pragma once

#include <functional>
#include <string>
#include <vector>

namespace Vxpr::TestSupport {

/// What a process left behind.
struct ProcessResult {
    int m_iStatus = -1; ///< exit status; 128 and the signal's number if one ended it
    std::string m_strOutput;
    std::string m_strErrors;
    long m_lPeakKilobytes = 0; ///< of memory in use
};

/// How a process is run.
struct ProcessOptions {
    /// Writes to the process's standard input, given its descriptor, beside the process. Without
    /// it the standard input is empty.
    std::function<void(int)> m_Feed;
    std::string m_strOutputPath;      ///< the standard output goes there instead
    bool m_bErrorsOnTerminal = false; ///< the standard error is a terminal
    bool m_bOutputOnTerminal = false; ///< the standard output is one, too
    std::size_t m_uiOutputWanted = 0; ///< stop reading the output behind so many bytes, if any
    std::string m_strDirectory;       ///< to run in
};

/// Runs the program under test.
ProcessResult runVxpr(const std::vector<std::string>& in_vArguments,
                      const ProcessOptions& in_Options = {});

/// Options that hand a text to the standard input.
ProcessOptions withInput(const std::string& in_strText);

/// Writes everything, until the reader has gone.
void writeAll(int in_iFile, const char* in_pData, std::size_t in_uiSize);

} // namespace Vxpr::TestSupport
