#pragma once

#include "ScriptText.h"

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <vector>

namespace Vxpr {

/// The definitions of a script as the parser hands them out: names that aren't arguments are
/// placeholders.
class ParsedScript {
public:
    using NodeHandle = Velmora::Handle<Velmora::Math::Xpr::ExpressionBaseImpl>;

    /// What the engine reports on the way is left with its log.
    explicit ParsedScript(const ScriptText& in_Script);

    /// In the order of the script, up to a statement that can't be read.
    const std::vector<NodeHandle>& getDefinitions() const { return m_vDefinitions; }

    /// Whether the script was parsed to its end.
    bool isWhole() const { return m_bWhole; }

private:
    std::vector<NodeHandle> m_vDefinitions;
    bool m_bWhole = false;
};

} // namespace Vxpr
