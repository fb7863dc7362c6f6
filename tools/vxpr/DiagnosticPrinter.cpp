#include "DiagnosticPrinter.h"

#include "PrintableText.h"

#include <algorithm>
#include <cstdio>

namespace Vxpr {

namespace {

/// Of a longer line a part around the caret is shown.
constexpr std::size_t LONGEST_LINE = 160;
constexpr std::size_t SHOWN_AHEAD = 100;

const char* toWord(Diagnostic::Severity in_Severity) {
    switch (in_Severity) {
    case Diagnostic::Severity::Error:
        return "error";
    case Diagnostic::Severity::Warning:
        return "warning";
    case Diagnostic::Severity::Note:
        break;
    }
    return "note";
}

/// How wide a text is on a UTF-8 terminal, as far as the count of its characters tells.
std::size_t countCharacters(std::string_view in_strText) {
    return static_cast<std::size_t>(
        std::count_if(in_strText.begin(), in_strText.end(), [](char in_cByte) {
            return (static_cast<unsigned char>(in_cByte) & 0xc0) != 0x80;
        }));
}

std::string showLine(std::string_view in_strLine, const ScriptText::Position& in_Position) {
    std::string strLine = makePrintable(in_strLine);
    std::size_t uiCaret = std::min(in_Position.m_uiColumn - 1, strLine.size());
    if (strLine.size() > LONGEST_LINE) {
        const std::size_t uiBegin = uiCaret > SHOWN_AHEAD ? uiCaret - SHOWN_AHEAD : 0;
        const bool bCutBehind = strLine.size() - uiBegin > LONGEST_LINE;
        strLine = strLine.substr(uiBegin, LONGEST_LINE) + (bCutBehind ? "..." : "");
        uiCaret -= uiBegin;
        if (uiBegin > 0) {
            strLine.insert(0, "...");
            uiCaret += 3;
        }
    }
    const std::string strNumber = std::to_string(in_Position.m_uiLine);
    const std::string strMargin(strNumber.size() < 5 ? 5 - strNumber.size() : 0, ' ');
    const std::size_t uiIndent = countCharacters(std::string_view(strLine).substr(0, uiCaret));
    return strMargin + strNumber + " | " + strLine + "\n" +
           std::string(strMargin.size() + strNumber.size(), ' ') + " | " +
           std::string(uiIndent, ' ') + "^\n";
}

} // namespace

std::string DiagnosticPrinter::format(const Diagnostic& in_Diagnostic) const {
    const std::string strText =
        std::string(toWord(in_Diagnostic.m_Severity)) + ": " + in_Diagnostic.m_strText + "\n";
    if (!in_Diagnostic.m_Position) {
        return "vxpr: " + strText;
    }
    const ScriptText::Position& position = in_Diagnostic.m_Position->m_Position;
    const ScriptText* pScript = m_Library.find(in_Diagnostic.m_Position->m_strScript);
    const std::string strPath =
        pScript != nullptr ? pScript->getPath() : in_Diagnostic.m_Position->m_strScript;
    const std::string strHead = strPath + ":" + std::to_string(position.m_uiLine) + ":" +
                                std::to_string(position.m_uiColumn) + ": " + strText;
    return pScript != nullptr ? strHead + showLine(pScript->getLine(position.m_uiLine), position)
                              : strHead;
}

void DiagnosticPrinter::print(const Diagnostic& in_Diagnostic) {
    if (std::find(m_vShown.begin(), m_vShown.end(), in_Diagnostic) != m_vShown.end()) {
        return;
    }
    m_vShown.push_back(in_Diagnostic);
    m_bErrors = m_bErrors || in_Diagnostic.m_Severity == Diagnostic::Severity::Error;
    if (m_Prepare) {
        m_Prepare();
    }
    std::fputs(format(in_Diagnostic).c_str(), stderr);
}

void DiagnosticPrinter::print(const std::vector<Diagnostic>& in_vDiagnostics) {
    for (const Diagnostic& diagnostic : in_vDiagnostics) {
        print(diagnostic);
    }
}

} // namespace Vxpr
