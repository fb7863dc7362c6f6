#include "NameAdvice.h"

#include "Builtins.h"
#include "EngineLog.h"
#include "Suggestion.h"
#include "TextList.h"

#include <algorithm>

namespace Vxpr {

namespace {

std::vector<std::string> getNames(const std::vector<Definition>& in_vDefinitions) {
    std::vector<std::string> vNames;
    for (const Definition& definition : in_vDefinitions) {
        vNames.push_back(definition.m_strName);
        vNames.insert(vNames.end(), definition.m_vArguments.begin(), definition.m_vArguments.end());
    }
    return vNames;
}

const Definition* find(const std::vector<Definition>& in_vDefinitions,
                       const std::string& in_strName) {
    const auto ite = std::find_if(
        in_vDefinitions.begin(), in_vDefinitions.end(),
        [&](const Definition& in_Definition) { return in_Definition.m_strName == in_strName; });
    return ite == in_vDefinitions.end() ? nullptr : &*ite;
}

/// How a definition is called, such as `smooth<n>(x)`.
std::string describeCall(const Definition& in_Definition) {
    return in_Definition.m_strName +
           (in_Definition.m_vParameters.empty()
                ? ""
                : "<" + join(in_Definition.m_vParameters, ", ") + ">") +
           "(" + join(in_Definition.m_vArguments, ", ") + ")";
}

} // namespace

std::string unqualify(const std::string& in_strName, const std::string& in_strScript) {
    return in_strName.compare(0, in_strScript.size() + 1, in_strScript + ".") == 0
               ? in_strName.substr(in_strScript.size() + 1)
               : in_strName;
}

/// The definitions of any script that has been opened.
std::vector<Definition> NameAdvice::readDefinitions(const std::string& in_strScript) {
    if (in_strScript == m_Scope.m_strScript) {
        return m_Scope.m_vDefined;
    }
    const ScriptText* pScript = m_Library.find(in_strScript);
    if (pScript == nullptr) {
        return {};
    }
    const std::vector<Definition> vDefinitions = ScriptInventory(*pScript).getDefinitions();
    // Its faults have been reported when the engine read it.
    EngineLog::take();
    return vDefinitions;
}

std::string NameAdvice::explainQualified(const std::string& in_strScript,
                                         const std::string& in_strName) {
    const std::string strUnusable = m_Library.findUnusable(in_strScript);
    if (m_Library.find(in_strScript) == nullptr && !strUnusable.empty()) {
        return "`" + in_strScript + "." + in_strName + "` can't be reached: '" + strUnusable +
               "' is there, but is no file that can be read";
    }
    if (m_Library.find(in_strScript) == nullptr) {
        return "`" + in_strScript + "." + in_strName + "` can't be found: there is no script " +
               in_strScript + ".xpr in " + m_Scope.m_strSearched + "; give its directory with -I";
    }
    const std::vector<Definition> vDefined = readDefinitions(in_strScript);
    if (find(vDefined, in_strName) != nullptr) {
        return {};
    }
    return "the script `" + in_strScript + "` doesn't define `" + in_strName + "`" +
           suggestInWords(in_strName, getNames(vDefined));
}

std::string NameAdvice::explainUnresolved(const std::string& in_strName,
                                          const std::string& in_strScript) {
    const std::string strName = unqualify(in_strName, in_strScript);
    if (in_strScript.find('.') != std::string::npos) {
        return "`" + strName + "` can't be reached because the name of the script, `" +
               in_strScript + "`, contains a point; rename the file";
    }
    const std::size_t uiPoint = strName.find('.');
    if (uiPoint != std::string::npos) {
        return explainQualified(strName.substr(0, uiPoint), strName.substr(uiPoint + 1));
    }
    const std::vector<Definition> vDefined = readDefinitions(in_strScript);
    if (find(vDefined, strName) != nullptr) {
        return {};
    }
    if (in_strScript == m_Scope.m_strScript && m_Scope.m_setLost.count(strName) != 0) {
        return {};
    }
    if (strName == "if") {
        return "`if` takes three values: if(condition, value, otherwise)";
    }
    std::vector<std::string> vCandidates = getNames(vDefined);
    const std::vector<std::string> vBuiltins = Builtins::getNames();
    vCandidates.insert(vCandidates.end(), vBuiltins.begin(), vBuiltins.end());
    return "`" + strName +
           "` isn't defined here, and there is no built-in function and no script "
           "of that name" +
           suggestInWords(strName, vCandidates);
}

std::string NameAdvice::explainCount(const std::string& in_strName, const std::string& in_strScript,
                                     const std::string& in_strExpected) {
    std::string strCall;
    const std::size_t uiPoint = in_strName.rfind('.');
    const std::string strName =
        uiPoint == std::string::npos ? in_strName : in_strName.substr(uiPoint + 1);
    if (uiPoint != std::string::npos) {
        const std::vector<Definition> vDefined = readDefinitions(in_strName.substr(0, uiPoint));
        if (const Definition* pDefinition = find(vDefined, strName)) {
            strCall = describeCall(*pDefinition);
        }
    } else if (const auto builtin = Builtins::find(in_strName)) {
        strCall = builtin->getCall();
    }
    return "`" + unqualify(in_strName, in_strScript) + "` takes " + in_strExpected +
           (strCall.empty() ? "" : ": call it as " + strCall);
}

} // namespace Vxpr
