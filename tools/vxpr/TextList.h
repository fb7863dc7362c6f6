#pragma once

#include <string>
#include <vector>

namespace Vxpr {

/// The texts in one, with a separator between.
std::string join(const std::vector<std::string>& in_vTexts, const std::string& in_strSeparator);

/// A number with its word, such as "1 argument" or "2 arguments".
std::string count(std::size_t in_uiNumber, const std::string& in_strWord);

} // namespace Vxpr
