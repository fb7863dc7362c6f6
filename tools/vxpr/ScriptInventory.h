#pragma once

#include "Diagnostic.h"

#include <optional>
#include <string>
#include <vector>

namespace Vxpr {

/// One definition of a script.
struct Definition {
    enum class Kind { Variable, Input, Function };

    Kind m_Kind = Kind::Variable;
    std::string m_strName; ///< without the script's
    std::optional<SourcePosition> m_Position;
    std::vector<std::string> m_vArguments;
    std::vector<std::string> m_vParameters;

    /// Whether it has a value of its own, and so can be a feature.
    bool hasValue() const { return m_vArguments.empty() && m_vParameters.empty(); }
};

/// What a script defines, in its order.
class ScriptInventory {
public:
    /// Parses the script. What the engine reports on the way is left with its log.
    explicit ScriptInventory(const ScriptText& in_Script);

    /// Whether the script was parsed to its end.
    bool isWhole() const { return m_bWhole; }

    const std::vector<Definition>& getDefinitions() const { return m_vDefinitions; }

    /// Null if nothing of that name is defined.
    const Definition* find(const std::string& in_strName) const;

    std::vector<std::string> getNames() const;

private:
    std::vector<Definition> m_vDefinitions;
    bool m_bWhole = false;
};

} // namespace Vxpr
