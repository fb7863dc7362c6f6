#pragma once

#include <velmora/Export.h>

#include <string>
#include <vector>

namespace Velmora {

using StringVector = std::vector<std::string>;

/// Splits the text at every delimiter into `out_vItems`, which is cleared first. Empty items are
/// left out.
VELMORA_EXPORT void strTokenize(const std::string& in_strText, StringVector& out_vItems,
                                char in_cDelimiter);

/// Replaces every occurrence of `in_strFrom`, from the left, and returns `inout_strText`. What was
/// put in isn't searched again; an empty `in_strFrom` replaces nothing.
VELMORA_EXPORT std::string& strFindAndReplace(const std::string& in_strFrom,
                                              const std::string& in_strTo,
                                              std::string& inout_strText);

/// Puts the letters A to Z of the text in lower case, under every locale, and returns it.
VELMORA_EXPORT std::string& strToLower(std::string& inout_strText);

/// The same for a text that nobody else has.
VELMORA_EXPORT std::string strToLower(std::string&& in_strText);

} // namespace Velmora
