#pragma once

#include <cstddef>
#include <string>

namespace Velmora::Benchmarks {

/// Reads a script by the rules of the language, alternative by alternative, and does nothing with
/// it: what reading costs a parser that tries alternatives in order and knows its position, ahead
/// of all that is built. Comments and line continuations aren't skipped.
///
/// Returns the number of statements, up to the first that doesn't match.
std::size_t countStatements(const std::string& in_strScript);

} // namespace Velmora::Benchmarks
