#include "RegistryDebug.h"

#include <velmora/StringUtil.h>

namespace Velmora::Math::Xpr {

bool isRegistryDebugValue(const char* in_szValue) {
    if (in_szValue == nullptr || *in_szValue == '\0') {
        return false;
    }
    return strToLower(in_szValue) != "false";
}

} // namespace Velmora::Math::Xpr
