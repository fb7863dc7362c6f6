#include "FaultReader.h"

#include "StatementScanner.h"

#include <algorithm>

namespace Vxpr {

namespace {

bool startsWith(const std::string& in_strText, const std::string& in_strStart) {
    return in_strText.compare(0, in_strStart.size(), in_strStart) == 0;
}

/// The text between two others, or up to the end; empty if the first isn't there.
std::string between(const std::string& in_strText, const std::string& in_strBegin,
                    const std::string& in_strEnd) {
    const std::size_t uiBegin = in_strText.find(in_strBegin);
    if (uiBegin == std::string::npos) {
        return {};
    }
    const std::size_t uiText = uiBegin + in_strBegin.size();
    const std::size_t uiEnd = in_strText.find(in_strEnd, uiText);
    return in_strText.substr(uiText, uiEnd == std::string::npos ? uiEnd : uiEnd - uiText);
}

bool isAhead(const ScriptText::Position& in_Left, const ScriptText::Position& in_Right) {
    return in_Left.m_uiLine != in_Right.m_uiLine ? in_Left.m_uiLine < in_Right.m_uiLine
                                                 : in_Left.m_uiColumn < in_Right.m_uiColumn;
}

std::string explainGuard(const std::string& in_strText) {
    const std::string strToken = between(in_strText, "Expecting '", "'");
    if (strToken.empty()) {
        return in_strText;
    }
    if (strToken == "EOL") {
        return "the definition should end here: one stands in a line, or several with `;` between";
    }
    return "`" + strToken + "` is missing here" +
           (strToken == ">" ? "; parameters stand between < and >, and values are compared with "
                              "isGreater(a, b)"
                            : "");
}

/// What only follows from another message, or repeats it.
bool isConsequence(const std::string& in_strText) {
    const auto starts = {
        "failed to load script: ", "can't load script: ", "failed to initialize parser",
        "Can't set a null expression", "Can't set a null implementation"};
    return std::any_of(starts.begin(), starts.end(),
                       [&](const char* in_szStart) { return startsWith(in_strText, in_szStart); });
}

} // namespace

void FaultReader::add(const std::optional<SourcePosition>& in_Position,
                      const std::string& in_strText) {
    const Diagnostic fault{Diagnostic::Severity::Error, in_Position, in_strText};
    if (std::find(m_vFaults.begin(), m_vFaults.end(), fault) == m_vFaults.end()) {
        m_vFaults.push_back(fault);
    }
}

/// What the engine has read; the library has the text as it stands on the disk.
const ScriptText* FaultReader::findText(const std::string& in_strScript) {
    return in_strScript == m_Script.getName() ? &m_Script : m_Library.find(in_strScript);
}

void FaultReader::addPowerFault(const std::string& in_strScript) {
    const ScriptText* pScript = findText(in_strScript);
    add(pScript != nullptr ? StatementScanner(*pScript).findCharacter('^') : std::nullopt,
        "there is no power operator: multiply instead, as in x * x");
}

void FaultReader::readExpressionError(const std::string& in_strMessage,
                                      const SourcePosition& in_Position) {
    const ScriptText* pScript = findText(in_Position.m_strScript);
    if (pScript != nullptr && StatementScanner(*pScript).findCharacter('^')) {
        addPowerFault(in_Position.m_strScript);
        return;
    }
    const std::string strName = between(in_strMessage, "while defining variable: ", "\n") +
                                between(in_strMessage, "while defining function: ", "\n");
    add(in_Position,
        "`" + unqualify(strName, in_Position.m_strScript) + "` can't be given this value");
}

bool FaultReader::readSyntaxError(const std::string& in_strMessage,
                                  const PositionText& in_Position) {
    if (startsWith(in_strMessage, "expression error:")) {
        readExpressionError(in_strMessage, in_Position.m_Position);
        return true;
    }
    if (!startsWith(in_strMessage, "syntax error:")) {
        return false;
    }
    const std::string strRest = in_strMessage.substr(in_Position.m_uiEnd);
    if (strRest.empty()) {
        endStatement(in_Position.m_Position);
    } else {
        m_vGuards.push_back({in_Position.m_Position, strRest.substr(1)});
    }
    return true;
}

/// Of all that was tried, what got furthest is what the author meant.
void FaultReader::endStatement(const SourcePosition& in_Start) {
    std::vector<Guard> vGuards;
    vGuards.swap(m_vGuards);
    m_vParameterFaults.clear();
    const ScriptText* pScript = findText(in_Start.m_strScript);
    if (pScript != nullptr) {
        const auto mistake =
            StatementScanner(*pScript).findMistake(pScript->getOffset(in_Start.m_Position));
        if (mistake) {
            add(mistake->m_Position, mistake->m_strText);
            return;
        }
    }
    if (vGuards.empty()) {
        add(in_Start, "this can't be read as a definition; one looks like `name = expression`, "
                      "`name(argument) = expression`, `name<parameter>(argument) = expression` or "
                      "`inputvar name`");
        return;
    }
    const auto iteFurthest = std::max_element(
        vGuards.begin(), vGuards.end(), [](const Guard& in_Left, const Guard& in_Right) {
            return isAhead(in_Left.m_Position.m_Position, in_Right.m_Position.m_Position);
        });
    add(iteFurthest->m_Position, explainGuard(iteFurthest->m_strText));
}

bool FaultReader::readLinkError(const std::string& in_strMessage,
                                const std::optional<PositionText>& in_Position) {
    const std::string strScript =
        in_Position ? in_Position->m_Position.m_strScript : m_Script.getName();
    const auto position =
        in_Position ? std::optional<SourcePosition>(in_Position->m_Position) : std::nullopt;
    const std::string strUnresolved = between(in_strMessage, "can't resolve expression: ", "\n");
    if (!strUnresolved.empty()) {
        const std::string strText = m_Names.explainUnresolved(strUnresolved, strScript);
        if (!strText.empty()) {
            add(position, strText);
        }
        return true;
    }
    const std::string strRecursive =
        between(in_strMessage, "recursive expression calls detected for expression: ", ". ");
    if (!strRecursive.empty()) {
        add(position, "`" + unqualify(strRecursive, strScript) +
                          "` is defined by way of itself; a definition can't use its own value, so "
                          "break the circle");
        return true;
    }
    const std::string strValue =
        between(in_strMessage, "can't call an expression that isn't a function: ", "\n");
    if (!strValue.empty()) {
        const std::string strName = unqualify(strValue, strScript);
        add(position, "`" + strName +
                          "` is no function; take away the parentheses behind it, or "
                          "define it as " +
                          strName + "(x) = ...");
        return true;
    }
    const std::string strFunction = between(in_strMessage, ":Function ", " expects ");
    if (!strFunction.empty()) {
        if (hasParameterFault(position)) {
            return true;
        }
        std::string strExpected = between(in_strMessage, " expects ", "\n");
        strExpected = strExpected.substr(0, strExpected.find("(s)")) +
                      (startsWith(strExpected, "1 ") ? "" : "s");
        add(position, m_Names.explainCount(strFunction, strScript, strExpected));
        return true;
    }
    return false;
}

void FaultReader::readError(const std::string& in_strMessage) {
    const auto position = findPosition(in_strMessage);
    if (position && readSyntaxError(in_strMessage, *position)) {
        return;
    }
    if (readLinkError(in_strMessage, position) || isConsequence(in_strMessage)) {
        return;
    }
    const std::string strParameter = between(in_strMessage, "Unknown parameter name: ", "\n");
    if (!strParameter.empty()) {
        readUnknownParameter(strParameter);
        return;
    }
    if (position) {
        const std::string strRest = in_strMessage.substr(position->m_uiEnd);
        add(position->m_Position, startsWith(strRest, ":") ? strRest.substr(1) : strRest);
    } else {
        add(std::nullopt, in_strMessage);
    }
}

/// An empty name stands for a name outside of any function.
void FaultReader::readUnknownParameter(const std::string& in_strName) {
    m_vParameterFaults.push_back(
        {Diagnostic::Severity::Error, StatementScanner(m_Script).findParameterUse(in_strName),
         in_strName.empty()
             ? "outside of a function with parameters, only numbers and strings can stand between "
               "< and >"
             : "`" + in_strName +
                   "` is no parameter of the function that is being defined; its parameters stand "
                   "between < and > behind its name"});
}

/// A call whose parameter was refused lacks it later.
bool FaultReader::hasParameterFault(const std::optional<SourcePosition>& in_Position) const {
    return in_Position && std::any_of(m_vParameterFaults.begin(), m_vParameterFaults.end(),
                                      [&](const Diagnostic& in_Fault) {
                                          return in_Fault.m_Position &&
                                                 in_Fault.m_Position->m_Position.m_uiLine ==
                                                     in_Position->m_Position.m_uiLine;
                                      });
}

void FaultReader::readAssertion(const std::string& in_strText) {
    if (in_strText.find("newPowOperation") != std::string::npos) {
        addPowerFault(m_Script.getName());
    } else if (in_strText.find("m_pCurrentFunction.isNull()") != std::string::npos) {
        readUnknownParameter({});
    }
}

std::vector<Diagnostic> FaultReader::read(const std::vector<EngineMessage>& in_vMessages) {
    m_vFaults.clear();
    m_vGuards.clear();
    m_vParameterFaults.clear();
    for (const EngineMessage& message : in_vMessages) {
        if (message.m_Kind == EngineMessage::Kind::Assertion) {
            readAssertion(message.m_strText);
        } else {
            readError(message.m_strText);
        }
    }
    for (const Guard& guard : m_vGuards) {
        add(guard.m_Position, explainGuard(guard.m_strText));
    }
    for (const Diagnostic& fault : m_vParameterFaults) {
        add(fault.m_Position, fault.m_strText);
    }
    return m_vFaults;
}

} // namespace Vxpr
