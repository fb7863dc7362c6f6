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

const StatementGuard::Result* StatementGuard::findResult(Rule in_Rule,
                                                         const ScriptIterator& in_Place) {
    const char*& pFarthest = m_Farthest[static_cast<std::size_t>(in_Rule)];
    if (pFarthest == nullptr || in_Place.getText() > pFarthest) {
        pFarthest = in_Place.getText();
    } else {
        ++m_uiRepeatedTrials;
    }
    const auto iteResult = m_Results.find(Trial{in_Place.getText(), in_Rule});
    return iteResult == m_Results.end() ? nullptr : &iteResult->second;
}

void StatementGuard::addResult(Rule in_Rule, const ScriptIterator& in_Place,
                               const Result& in_Result) {
    if (m_bDeep || m_uiRepeatedTrials > MaxRepeatedTrials) {
        m_Results.emplace(Trial{in_Place.getText(), in_Rule}, in_Result);
    }
}

} // namespace Velmora::Math::Xpr
