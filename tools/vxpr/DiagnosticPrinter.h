#pragma once

#include "Diagnostic.h"
#include "ScriptLibrary.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Vxpr {

/// Shows what there is to say about scripts, each thing once: `file:line:column: error: text`, the
/// line of the script, and a caret beneath the place.
class DiagnosticPrinter {
public:
    /// in_Library must outlive the printer.
    explicit DiagnosticPrinter(ScriptLibrary& in_Library) : m_Library(in_Library) {}

    /// The text to show, with its line ends.
    std::string format(const Diagnostic& in_Diagnostic) const;

    /// Writes to the standard error.
    void print(const Diagnostic& in_Diagnostic);
    void print(const std::vector<Diagnostic>& in_vDiagnostics);

    bool hasErrors() const { return m_bErrors; }

    /// Calls something ahead of everything that is shown from now on.
    void setPreparation(std::function<void()> in_Prepare) { m_Prepare = std::move(in_Prepare); }

private:
    ScriptLibrary& m_Library;
    std::function<void()> m_Prepare;
    std::vector<Diagnostic> m_vShown;
    bool m_bErrors = false;
};

} // namespace Vxpr
