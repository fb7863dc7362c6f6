#pragma once

#include "DiagnosticPrinter.h"
#include "EngineLog.h"
#include "NameAdvice.h"
#include "ScriptInventory.h"
#include "ScriptLibrary.h"

#include <velmora/Handle.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <memory>
#include <string>
#include <vector>

namespace Vxpr {

/// A script with all that it takes from other scripts and from the built-in functions.
class LinkedScript {
public:
    struct Options {
        std::string m_strPath;                   ///< "-" is the standard input
        std::vector<std::string> m_vDirectories; ///< searched for other scripts behind its own
        bool m_bOptimize = true;
        bool m_bLink = true; ///< otherwise load() stops behind parsing, and find() finds nothing
    };

    /// The library and the printer serve this script alone, and outlive it.
    LinkedScript(const Options& in_Options, ScriptLibrary& inout_Library,
                 DiagnosticPrinter& inout_Printer);

    /// Reads, parses and links, and prints every fault and warning. False if there is a fault.
    /// Throws a Failure if the script can't be read at all.
    bool load();

    /// The name of the script in qualified names.
    const std::string& getName() const { return m_strName; }

    const ScriptInventory& getInventory() const { return *m_pInventory; }

    /// What is defined under a name without the script's; null if nothing is.
    Velmora::Handle<Velmora::Math::Xpr::ExpressionBaseImpl> find(const std::string& in_strName);

    const Velmora::TSHandle<Velmora::VirtualFileSystem>& getFileSystem() const { return m_pFiles; }

private:
    bool refuseBinary(const ScriptText& in_Script);
    void printInOrder();
    void addFaults(const std::vector<Diagnostic>& in_vFaults);
    void warnOfName();
    ScriptText parse(const ScriptText& in_Script, NameScope& inout_Scope);
    ScriptText dropRepeated(const ScriptText& in_Script);
    bool link(const ScriptText& in_Script, const NameScope& in_Scope);
    bool isTakenOut(const Diagnostic& in_Fault, const ScriptText& in_Readable);
    void reportUnexplained(const std::vector<EngineMessage>& in_vMessages);
    std::string getDirectory() const;
    std::string makeSearchPath() const;

    Options m_Options;
    std::vector<Diagnostic> m_vFaults; ///< found while loading
    ScriptLibrary& m_Library;
    DiagnosticPrinter& m_Printer;
    std::string m_strName;
    Velmora::TSHandle<Velmora::VirtualFileSystem> m_pFiles;
    std::unique_ptr<ScriptInventory> m_pInventory;
    Velmora::Math::Xpr::Evaluator m_Evaluator;
};

} // namespace Vxpr
