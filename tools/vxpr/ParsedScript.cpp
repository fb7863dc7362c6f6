#include "ParsedScript.h"

#include <velmora/math/xpr/ScriptParser.h>

#include <sstream>

namespace Vxpr {

using Velmora::Math::Xpr::ScriptParser;

ParsedScript::ParsedScript(const ScriptText& in_Script) {
    std::istringstream stream(in_Script.getText());
    ScriptParser parser;
    // With an ending, since the parser takes the last one away.
    if (!parser.initialize(stream, (in_Script.getName() + ".xpr").c_str(), ".")) {
        return;
    }
    for (;;) {
        const NodeHandle pDefinition = parser.getExpression();
        if (pDefinition.isNull()) {
            break;
        }
        m_vDefinitions.push_back(pDefinition);
    }
    m_bWhole = !parser.failed();
}

} // namespace Vxpr
