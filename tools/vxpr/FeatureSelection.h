#pragma once

#include "LinkedScript.h"

#include <string>
#include <vector>

namespace Vxpr {

/// The definition of that name, bare or qualified by the script's. Throws a Failure that says what
/// there is if it doesn't exist.
const Definition& findDefinition(const LinkedScript& in_Script, const std::string& in_strAsked);

/// The definitions that a run evaluates.
class FeatureSelection {
public:
    /// in_vAsked are the names of the command line, bare or qualified by the script's; if there are
    /// none, everything in the script that has a value of its own is chosen, inputs excepted.
    /// Throws a Failure that names what can't be chosen, or that there is nothing to choose.
    FeatureSelection(const LinkedScript& in_Script, const std::vector<std::string>& in_vAsked);

    /// The names without the script's, each once.
    const std::vector<std::string>& getNames() const { return m_vNames; }

    /// The names of the columns: as above, but one called `time` keeps the script's name, so that
    /// it isn't taken for the first column. They are made of letters, digits, `_` and points.
    std::vector<std::string> getColumnNames() const;

private:
    void choose(const LinkedScript& in_Script, const std::string& in_strAsked);

    std::string m_strScript;
    std::vector<std::string> m_vNames;
};

} // namespace Vxpr
