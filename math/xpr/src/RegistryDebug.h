#pragma once

namespace Velmora::Math::Xpr {

/// Does that value of the environment variable ask for a log line for each registered function?
/// Null and an empty text don't, nor does "false" in any case of letters; all else does.
bool isRegistryDebugValue(const char* in_szValue);

} // namespace Velmora::Math::Xpr
