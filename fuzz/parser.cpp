// The parser alone, on any bytes: it hands out definitions until it ends or fails.

#include <sstream>
#include <string>

#include <velmora/math/xpr/ScriptParser.h>

#include "fuzz/support/Target.h"

using namespace Velmora;
using namespace Velmora::Math::Xpr;

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    std::istringstream stream(std::string(in_pData, in_pData + in_uiSize));
    ScriptParser parser;
    if (!parser.initialize(stream, "scripts/s.xpr", "scripts")) {
        return 0;
    }
    while (!parser.getExpression().isNull()) {
    }
    static_cast<void>(parser.failed());
    return 0;
}
