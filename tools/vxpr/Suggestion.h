#pragma once

#include <optional>
#include <string>
#include <vector>

namespace Vxpr {

/// The candidate that in_strName may have been meant to be: the nearest by letters inserted, left
/// out, replaced or swapped, the case counting little. Nothing if none is near, or if in_strName is
/// too long for anybody to have typed it.
std::optional<std::string> suggest(const std::string& in_strName,
                                   const std::vector<std::string>& in_vCandidates);

/// "; did you mean `x`?", or an empty text.
std::string suggestInWords(const std::string& in_strName,
                           const std::vector<std::string>& in_vCandidates);

} // namespace Vxpr
