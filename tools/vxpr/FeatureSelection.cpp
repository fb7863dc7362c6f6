#include "FeatureSelection.h"

#include "Failure.h"
#include "Suggestion.h"
#include "TextList.h"

#include <algorithm>
#include <cctype>

namespace Vxpr {

const Definition& findDefinition(const LinkedScript& in_Script, const std::string& in_strAsked) {
    const std::string strName = unqualify(in_strAsked, in_Script.getName());
    const Definition* pDefinition = in_Script.getInventory().find(strName);
    if (pDefinition == nullptr) {
        const std::vector<std::string> vNames = in_Script.getInventory().getNames();
        throw Failure::ofCommandLine(
            "the script `" + in_Script.getName() + "` doesn't define `" + strName + "`" +
            (vNames.empty() ? ", nor anything else" : "; it defines " + join(vNames, ", ")) +
            suggestInWords(strName, vNames));
    }
    return *pDefinition;
}

FeatureSelection::FeatureSelection(const LinkedScript& in_Script,
                                   const std::vector<std::string>& in_vAsked)
    : m_strScript(in_Script.getName()) {
    for (const std::string& strAsked : in_vAsked) {
        choose(in_Script, strAsked);
    }
    if (!in_vAsked.empty()) {
        return;
    }
    for (const Definition& definition : in_Script.getInventory().getDefinitions()) {
        if (definition.hasValue() && definition.m_Kind != Definition::Kind::Input) {
            m_vNames.push_back(definition.m_strName);
        }
    }
    if (m_vNames.empty()) {
        throw Failure::ofData("the script `" + m_strScript +
                              "` defines nothing that has a value of its own; write a definition "
                              "such as level = energy<8000>(frame)");
    }
}

void FeatureSelection::choose(const LinkedScript& in_Script, const std::string& in_strAsked) {
    const Definition& definition = findDefinition(in_Script, in_strAsked);
    const std::string& strName = definition.m_strName;
    if (!definition.hasValue()) {
        const bool bArguments = !definition.m_vArguments.empty();
        throw Failure::ofCommandLine(
            "`" + strName + "` is a function of " +
            join(bArguments ? definition.m_vArguments : definition.m_vParameters, ", ") +
            " and has no value of its own; define one in the script, such as my_" + strName +
            " = " + strName + (definition.m_vParameters.empty() ? "" : "<...>") +
            (bArguments ? "(...)" : "()"));
    }
    if (std::find(m_vNames.begin(), m_vNames.end(), strName) == m_vNames.end()) {
        m_vNames.push_back(strName);
    }
}

std::vector<std::string> FeatureSelection::getColumnNames() const {
    // The stem of a file may have anything in it, and the forms of tables have commas and quotes of
    // their own.
    std::string strScript = m_strScript;
    std::replace_if(
        strScript.begin(), strScript.end(),
        [](unsigned char in_c) { return in_c >= 0x80 || (std::isalnum(in_c) == 0 && in_c != '.'); },
        '_');
    std::vector<std::string> vNames = m_vNames;
    std::replace(vNames.begin(), vNames.end(), std::string("time"), strScript + ".time");
    return vNames;
}

} // namespace Vxpr
