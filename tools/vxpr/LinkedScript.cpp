#include "LinkedScript.h"

#include "EngineLog.h"
#include "Failure.h"
#include "FaultReader.h"
#include "SearchFileSystem.h"
#include "StatementScanner.h"
#include "TextList.h"

#include <velmora/ParameterTrie.h>
#include <velmora/ParameterValue.h>

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <sstream>
#include <tuple>

namespace Vxpr {

namespace {

using Velmora::Handle;
using Velmora::ParameterTrie;
using Velmora::ParameterValue;
using Velmora::Math::Xpr::ExpressionBaseImpl;

constexpr const char* SEARCH_PATH_KEY = "quillmark.math.xpr.scriptLoader.scriptsDir";

/// Nobody reads more faults of one script.
constexpr int MOST_FAULTY_STATEMENTS = 100;

bool isIdentifier(const std::string& in_strName) {
    return !in_strName.empty() && std::isdigit(static_cast<unsigned char>(in_strName[0])) == 0 &&
           std::all_of(in_strName.begin(), in_strName.end(), [](unsigned char in_c) {
               return (in_c < 0x80 && std::isalnum(in_c) != 0) || in_c == '_';
           });
}

/// Where the statement that ended the parsing stands.
std::optional<SourcePosition> findEndOfParsing(const std::vector<EngineMessage>& in_vMessages) {
    std::optional<SourcePosition> end;
    for (const EngineMessage& message : in_vMessages) {
        if (const auto position = findPosition(message.m_strText)) {
            end = position->m_Position;
        }
    }
    return end;
}

} // namespace

LinkedScript::LinkedScript(const Options& in_Options, ScriptLibrary& inout_Library,
                           DiagnosticPrinter& inout_Printer)
    : m_Options(in_Options),
      m_Library(inout_Library),
      m_Printer(inout_Printer),
      m_pFiles(new SearchFileSystem(inout_Library)) {
    for (const std::string& strDirectory : in_Options.m_vDirectories) {
        struct stat status {};
        if (stat(strDirectory.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            throw Failure::ofCommandLine("-I " + strDirectory + ": there is no such directory");
        }
    }
}

bool LinkedScript::load() {
    const ScriptText script = ScriptText::read(m_Options.m_strPath);
    m_strName = script.getName();
    m_Library.add(script);
    if (!refuseBinary(script)) {
        return false;
    }
    warnOfName();
    NameScope scope;
    scope.m_strScript = m_strName;
    std::vector<std::string> vSearched(1, "'" + getDirectory() + "'");
    for (const std::string& strDirectory : m_Options.m_vDirectories) {
        vSearched.push_back("'" + strDirectory + "'");
    }
    scope.m_strSearched = join(vSearched, ", ");
    const ScriptText readable = dropRepeated(parse(script, scope));
    scope.m_vDefined = m_pInventory->getDefinitions();
    const bool bDone = !m_Options.m_bLink || link(readable, scope);
    printInOrder();
    return bDone && !m_Printer.hasErrors();
}

/// By lines, the script in hand ahead of those that it uses.
void LinkedScript::printInOrder() {
    const auto rank = [&](const Diagnostic& in_Fault) {
        if (!in_Fault.m_Position) {
            return std::make_tuple(2, std::string(), std::size_t(0), std::size_t(0));
        }
        const SourcePosition& position = *in_Fault.m_Position;
        return std::make_tuple(position.m_strScript == m_strName ? 0 : 1, position.m_strScript,
                               position.m_Position.m_uiLine, position.m_Position.m_uiColumn);
    };
    std::stable_sort(m_vFaults.begin(), m_vFaults.end(),
                     [&](const Diagnostic& in_Left, const Diagnostic& in_Right) {
                         return rank(in_Left) < rank(in_Right);
                     });
    m_Printer.print(m_vFaults);
}

bool LinkedScript::refuseBinary(const ScriptText& in_Script) {
    const std::string& strText = in_Script.getText();
    std::string strFault;
    std::size_t uiPlace = 0;
    if (strText.compare(0, 3, "\xef\xbb\xbf") == 0) {
        strFault = "the script begins with a byte-order mark; save it as UTF-8 without the mark";
    } else if ((uiPlace = strText.find('\0')) != std::string::npos) {
        strFault = "there is a zero byte here, so this is no plain text; save the script as plain "
                   "text or as UTF-8";
    } else {
        return true;
    }
    m_Printer.print({Diagnostic::Severity::Error,
                     SourcePosition{m_strName, in_Script.getPosition(uiPlace)}, strFault});
    return false;
}

void LinkedScript::warnOfName() {
    if (isIdentifier(m_strName)) {
        return;
    }
    const bool bPoint = m_strName.find('.') != std::string::npos;
    m_Printer.print({Diagnostic::Severity::Warning, std::nullopt,
                     "the script's name, `" + m_strName + "`, " +
                         (bPoint ? "contains a point" : "is no name that a script can write") +
                         ", so other scripts can't reach what it defines" +
                         (bPoint ? ", and it can't use anything by name itself" : "") +
                         "; rename the file to letters, digits and `_`"});
}

/// Parses until the script has no fault left that ends the parsing. A statement that can't be read
/// is taken out, so that those behind it are read too.
ScriptText LinkedScript::parse(const ScriptText& in_Script, NameScope& inout_Scope) {
    ScriptText script = in_Script;
    for (int iRound = 0; iRound < MOST_FAULTY_STATEMENTS; ++iRound) {
        m_pInventory = std::make_unique<ScriptInventory>(script);
        inout_Scope.m_vDefined = m_pInventory->getDefinitions();
        const std::vector<EngineMessage> vMessages = EngineLog::take();
        addFaults(FaultReader(m_Library, script, inout_Scope).read(vMessages));
        const auto end = findEndOfParsing(vMessages);
        if (m_pInventory->isWhole() || !end) {
            break;
        }
        const StatementScanner scanner(script);
        const std::size_t uiBegin = scanner.findBegin(script.getOffset(end->m_Position));
        const std::size_t uiEnd = scanner.findEnd(uiBegin);
        inout_Scope.m_setLost.insert(scanner.findDefinedName(uiBegin));
        ScriptText rest = script.blankOut(uiBegin, uiEnd);
        if (rest.getText() == script.getText()) {
            break;
        }
        script = std::move(rest);
    }
    return script;
}

ScriptText LinkedScript::dropRepeated(const ScriptText& in_Script) {
    ScriptText script = in_Script;
    std::map<std::string, const Definition*> mapFirst;
    int iRepeated = 0;
    for (const Definition& definition : m_pInventory->getDefinitions()) {
        const auto [iteFirst, bFirst] = mapFirst.emplace(definition.m_strName, &definition);
        if (bFirst) {
            continue;
        }
        if (++iRepeated > MOST_FAULTY_STATEMENTS) {
            break;
        }
        const auto& first = iteFirst->second->m_Position;
        m_vFaults.push_back({Diagnostic::Severity::Error, definition.m_Position,
                             "`" + definition.m_strName + "` is defined already" +
                                 (first ? ", in line " + std::to_string(first->m_Position.m_uiLine)
                                        : std::string()) +
                                 "; give this one another name"});
        if (definition.m_Position) {
            const StatementScanner scanner(script);
            const std::size_t uiBegin =
                scanner.findBegin(script.getOffset(definition.m_Position->m_Position));
            script = script.blankOut(uiBegin, scanner.findEnd(uiBegin));
        }
    }
    return script;
}

bool LinkedScript::link(const ScriptText& in_Script, const NameScope& in_Scope) {
    ParameterTrie configuration;
    ParameterValue searchPath;
    searchPath.setTag(1);
    searchPath.initUnionFromString(makeSearchPath().c_str(), nullptr);
    configuration.setParameter(SEARCH_PATH_KEY, searchPath);
    std::istringstream stream(in_Script.getText());
    const bool bLinked = m_Evaluator.configure(configuration, m_pFiles) &&
                         m_Evaluator.addScript(stream, in_Script.getPath().c_str()) &&
                         m_Evaluator.link(m_Options.m_bOptimize);
    const std::vector<EngineMessage> vMessages = EngineLog::take();
    std::vector<Diagnostic> vFaults = FaultReader(m_Library, in_Script, in_Scope).read(vMessages);
    // The engine looks for what is missing in the file itself, with the statements that have been
    // taken out.
    vFaults.erase(
        std::remove_if(vFaults.begin(), vFaults.end(),
                       [&](const Diagnostic& in_Fault) { return isTakenOut(in_Fault, in_Script); }),
        vFaults.end());
    addFaults(vFaults);
    if (!bLinked && m_vFaults.empty()) {
        reportUnexplained(vMessages);
    }
    return bLinked;
}

/// Does the fault lie in a statement of the script that in_Readable doesn't have any more?
bool LinkedScript::isTakenOut(const Diagnostic& in_Fault, const ScriptText& in_Readable) {
    const ScriptText* pScript = m_Library.find(m_strName);
    if (pScript == nullptr || !in_Fault.m_Position ||
        in_Fault.m_Position->m_strScript != m_strName) {
        return false;
    }
    const StatementScanner scanner(*pScript);
    const std::size_t uiBegin =
        scanner.findBegin(pScript->getOffset(in_Fault.m_Position->m_Position));
    const std::size_t uiSize = scanner.findEnd(uiBegin) - uiBegin;
    return pScript->getText().compare(uiBegin, uiSize, in_Readable.getText(), uiBegin, uiSize) != 0;
}

/// The engine's own words are better than none.
void LinkedScript::reportUnexplained(const std::vector<EngineMessage>& in_vMessages) {
    std::vector<std::string> vTexts(in_vMessages.size());
    std::transform(in_vMessages.begin(), in_vMessages.end(), vTexts.begin(),
                   [](const EngineMessage& in_Message) { return in_Message.m_strText; });
    m_vFaults.push_back(
        {Diagnostic::Severity::Error, std::nullopt,
         "'" + m_Options.m_strPath + "' can't be linked (" + join(vTexts, "; ") + ")"});
}

void LinkedScript::addFaults(const std::vector<Diagnostic>& in_vFaults) {
    m_vFaults.insert(m_vFaults.end(), in_vFaults.begin(), in_vFaults.end());
}

std::string LinkedScript::getDirectory() const {
    const std::size_t uiSlash = m_Options.m_strPath.rfind('/');
    if (uiSlash == std::string::npos) {
        return ".";
    }
    return uiSlash == 0 ? "/" : m_Options.m_strPath.substr(0, uiSlash);
}

std::string LinkedScript::makeSearchPath() const {
    std::vector<std::string> vDirectories(1, getDirectory());
    vDirectories.insert(vDirectories.end(), m_Options.m_vDirectories.begin(),
                        m_Options.m_vDirectories.end());
    for (const std::string& strDirectory : vDirectories) {
        if (strDirectory.find(';') != std::string::npos) {
            throw Failure::ofCommandLine("the directory '" + strDirectory +
                                         "' can't be searched for scripts: its name contains a "
                                         "semicolon; rename it");
        }
    }
    return join(vDirectories, ";");
}

Handle<ExpressionBaseImpl> LinkedScript::find(const std::string& in_strName) {
    return m_Evaluator.getExpression((m_strName + "." + in_strName).c_str());
}

} // namespace Vxpr
