#pragma once

#include <string>

#include <velmora/math/xpr/ScriptParser.h>

#include "ScriptIterator.h"

namespace Velmora::Math::Xpr {

/// What is written about a script that has more than `ScriptParser::MaxScriptSize` bytes, of which
/// nothing is read.
inline std::string scriptTooLong(const char* in_szScriptName) {
    return "syntax error:" + positionText(ScriptIterator(nullptr, nullptr, in_szScriptName)) +
           " The script has more than " + std::to_string(ScriptParser::MaxScriptSize) + " bytes.";
}

} // namespace Velmora::Math::Xpr
