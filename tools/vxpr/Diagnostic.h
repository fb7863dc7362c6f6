#pragma once

#include "ScriptText.h"

#include <optional>
#include <string>

namespace Vxpr {

/// A place in a script, as the engine tells it.
struct SourcePosition {
    std::string m_strScript; ///< the script's name, not its path
    ScriptText::Position m_Position;

    bool operator==(const SourcePosition& in_Other) const {
        return m_strScript == in_Other.m_strScript &&
               m_Position.m_uiLine == in_Other.m_Position.m_uiLine &&
               m_Position.m_uiColumn == in_Other.m_Position.m_uiColumn;
    }
};

/// One thing to say about a script.
struct Diagnostic {
    enum class Severity { Error, Warning, Note };

    Severity m_Severity = Severity::Error;
    std::optional<SourcePosition> m_Position;
    std::string m_strText;

    bool operator==(const Diagnostic& in_Other) const {
        return m_Severity == in_Other.m_Severity && m_Position == in_Other.m_Position &&
               m_strText == in_Other.m_strText;
    }
};

/// What the engine wrote in front of a message.
struct PositionText {
    SourcePosition m_Position;
    std::size_t m_uiBegin = 0; ///< of the position in the message
    std::size_t m_uiEnd = 0;
};

/// Finds `<file_position fileName="s" line="3" column="8"/>` in a message.
std::optional<PositionText> findPosition(const std::string& in_strMessage);

} // namespace Vxpr
