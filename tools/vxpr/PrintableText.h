#pragma once

#include <string>
#include <string_view>

namespace Vxpr {

/// A line as it can be shown: tabs become blanks, and what a terminal would act upon becomes a
/// question mark.
std::string makePrintable(std::string_view in_strLine);

} // namespace Vxpr
