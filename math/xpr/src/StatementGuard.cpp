#include "StatementGuard.h"

#include <string>

namespace Velmora::Math::Xpr {

namespace {

const char* nestingText() {
    static const std::string s_strText = "Expressions are nested more than " +
                                         std::to_string(ScriptParser::MaxNesting) + " levels deep.";
    return s_strText.c_str();
}

} // namespace

StatementGuard::Statement::~Statement() {
    m_Guard.m_bDeep = false;
    m_Guard.m_Results.clear();
}

StatementGuard::Level::Level(StatementGuard& inout_Guard, const ScriptIterator& in_Position)
    : m_Guard(inout_Guard) {
    // The outermost level isn't nested in anything.
    if (m_Guard.m_uiLevel > ScriptParser::MaxNesting) {
        throw ScriptSyntaxError(in_Position, nestingText());
    }
    if (m_Guard.m_uiLevel > ScriptParser::MaxRepeatedNesting) {
        m_Guard.m_bDeep = true;
    }
    ++m_Guard.m_uiLevel;
    ++m_Guard.m_uiLevelsEntered;
}

StatementGuard::Trial::Trial(StatementGuard& inout_Guard, Rule in_Rule,
                             const ScriptIterator& in_Place, std::size_t in_uiTextRead)
    : m_Guard(inout_Guard),
      m_Key{in_Place.getText(), in_Rule},
      m_uiLevelsBefore(inout_Guard.m_uiLevelsEntered),
      m_uiTextBefore(in_uiTextRead),
      m_uiRepeatedTextBefore(inout_Guard.m_uiRepeatedText) {
    const char*& pFarthest = m_Guard.m_Farthest[static_cast<std::size_t>(in_Rule)];
    m_bRepeated = pFarthest != nullptr && m_Key.m_pPlace <= pFarthest;
    if (m_bRepeated) {
        ++m_Guard.m_uiRepeatedTrials;
    } else {
        pFarthest = m_Key.m_pPlace;
    }
}

const StatementGuard::Result* StatementGuard::Trial::findResult() const {
    const auto iteResult = m_Guard.m_Results.find(m_Key);
    return iteResult == m_Guard.m_Results.end() ? nullptr : &iteResult->second;
}

void StatementGuard::Trial::finish(const Result& in_Result, std::size_t in_uiTextRead) {
    if (m_bRepeated) {
        // All of it, with what the trials inside have counted already.
        m_Guard.m_uiRepeatedText = m_uiRepeatedTextBefore + (in_uiTextRead - m_uiTextBefore);
    }
    // A trial that entered no level was cheap.
    if (m_Guard.m_uiLevelsEntered != m_uiLevelsBefore && m_Guard.remembersResults()) {
        m_Guard.m_Results.emplace(m_Key, in_Result);
    }
}

} // namespace Velmora::Math::Xpr
