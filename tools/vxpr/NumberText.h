#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Vxpr {

/// Enough room for the text of any double.
constexpr std::size_t MAX_NUMBER_TEXT = 32;

/// Writes the shortest decimal text that reads back as the same double, and returns its end.
/// Not-a-numbers read `nan` whatever their sign, infinities `inf` and `-inf`.
/// in_pBuffer has room for MAX_NUMBER_TEXT characters.
char* writeNumber(char* in_pBuffer, double in_dValue);

std::string toText(double in_dValue);

/// The whole text as a number, nothing if any of it is something else.
std::optional<double> readNumber(std::string_view in_strText);
std::optional<std::uint64_t> readWholeNumber(std::string_view in_strText);

} // namespace Vxpr
