#pragma once

#include <string>
#include <string_view>

namespace Vxpr {

/// Whether the name of a file ends like that, in letters of either case. in_strEnding is given in
/// small ones, such as `.npy`.
bool hasEnding(const std::string& in_strPath, std::string_view in_strEnding);

} // namespace Vxpr
