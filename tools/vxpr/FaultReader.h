#pragma once

#include "Diagnostic.h"
#include "EngineLog.h"
#include "NameAdvice.h"
#include "ScriptLibrary.h"

#include <optional>
#include <string>
#include <vector>

namespace Vxpr {

/// Turns what the engine reports while it parses and links a script into what a script's author can
/// act upon: one message a fault, in the terms of the language, with what to do.
class FaultReader {
public:
    /// in_Script is the text that the engine was given, and in_Scope is of the same script. All of
    /// them outlive the reader.
    FaultReader(ScriptLibrary& in_Library, const ScriptText& in_Script, const NameScope& in_Scope)
        : m_Library(in_Library), m_Script(in_Script), m_Names(in_Library, in_Scope) {}

    /// The faults that the messages tell of, those of other scripts that were loaded on the way
    /// included. Empty if there are none, or none that the messages explain.
    std::vector<Diagnostic> read(const std::vector<EngineMessage>& in_vMessages);

private:
    struct Guard {
        SourcePosition m_Position;
        std::string m_strText;
    };

    void readError(const std::string& in_strMessage);
    void readAssertion(const std::string& in_strText);
    bool readSyntaxError(const std::string& in_strMessage, const PositionText& in_Position);
    void endStatement(const SourcePosition& in_Start);
    void readExpressionError(const std::string& in_strMessage, const SourcePosition& in_Position);
    bool readLinkError(const std::string& in_strMessage,
                       const std::optional<PositionText>& in_Position);
    void readUnknownParameter(const std::string& in_strName);
    void addPowerFault(const std::string& in_strScript);
    const ScriptText* findText(const std::string& in_strScript);
    bool hasParameterFault(const std::optional<SourcePosition>& in_Position) const;
    void add(const std::optional<SourcePosition>& in_Position, const std::string& in_strText);

    ScriptLibrary& m_Library;
    const ScriptText& m_Script;
    NameAdvice m_Names;
    std::vector<Diagnostic> m_vFaults;
    /// Of the statement in hand: what could be missing in it, and what its parameter lists lack. If
    /// it can't be read at all, only the nearest of them counts.
    std::vector<Guard> m_vGuards;
    std::vector<Diagnostic> m_vParameterFaults;
};

} // namespace Vxpr
