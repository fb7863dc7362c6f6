#pragma once

#include "ScriptInventory.h"
#include "ScriptLibrary.h"

#include <set>
#include <string>
#include <vector>

namespace Vxpr {

/// Where the names of a script come from.
struct NameScope {
    std::string m_strScript;            ///< the name of the script
    std::vector<Definition> m_vDefined; ///< what it defines
    std::set<std::string> m_setLost;    ///< names whose definitions couldn't be read
    std::string m_strSearched;          ///< the directories of other scripts, in words
};

/// Explains names that lead nowhere, and what they may have been meant to be.
class NameAdvice {
public:
    /// in_Library must outlive the object.
    NameAdvice(ScriptLibrary& in_Library, const NameScope& in_Scope)
        : m_Library(in_Library), m_Scope(in_Scope) {}

    /// Why nothing bears the name, which is qualified by the script it was written in. Empty if
    /// that follows from another fault.
    std::string explainUnresolved(const std::string& in_strName, const std::string& in_strScript);

    /// What a function takes, which was called with another number of arguments or parameters.
    std::string explainCount(const std::string& in_strName, const std::string& in_strScript,
                             const std::string& in_strExpected);

private:
    std::string explainQualified(const std::string& in_strScript, const std::string& in_strName);
    std::vector<Definition> readDefinitions(const std::string& in_strScript);

    ScriptLibrary& m_Library;
    NameScope m_Scope;
};

/// A name as its author wrote it: without the script that it was written in.
std::string unqualify(const std::string& in_strName, const std::string& in_strScript);

} // namespace Vxpr
