#pragma once

#include "ExitStatus.h"

#include <stdexcept>
#include <string>

namespace Vxpr {

/// The end of a subcommand: what went wrong, and what its user can do about it.
///
/// The text is a sentence in the user's terms, without a line end. Whatever was opened is closed
/// and whatever was half written is removed on the way up; nothing but the main program catches it.
class Failure : public std::runtime_error {
public:
    Failure(ExitStatus in_Status, const std::string& in_strText)
        : std::runtime_error(in_strText), m_Status(in_Status) {}

    /// The script, the recording or the output is at fault.
    static Failure ofData(const std::string& in_strText) {
        return {ExitStatus::DataAtFault, in_strText};
    }

    /// The command line is at fault.
    static Failure ofCommandLine(const std::string& in_strText) {
        return {ExitStatus::CommandLineAtFault, in_strText};
    }

    ExitStatus getStatus() const { return m_Status; }

private:
    ExitStatus m_Status;
};

/// The end of a subcommand whose cause has been told already, such as faults of a script.
class ReportedFailure : public std::exception {};

/// Whoever read the results has had enough of them. That is no fault and needs no message.
class BrokenPipe : public std::exception {};

} // namespace Vxpr
