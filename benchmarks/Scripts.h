#pragma once

#include <cstddef>
#include <string>

namespace Velmora::Benchmarks {

/// In the order of use, or the other way round.
enum class Order { Forward, Backward };

/// Definitions `v1` to `vN`, each of which is `v(i-1) + v(i-2) * 2`, over the input `v0`.
///
/// `v1` is `v0 * -1`, so that every value is plus or minus the input, however long the chain.
std::string makeChain(std::size_t in_uiDefinitions, Order in_eOrder);

/// What the last definition of the chain is for an input of 1.
double getSignOfChain(std::size_t in_uiDefinitions);

/// The operators of the chain.
constexpr std::size_t countOperators(std::size_t in_uiDefinitions) {
    return 2 * in_uiDefinitions - 1;
}

/// The same with one operator less in each definition but the first: `v(i-1) + v(i-2)`.
std::string makeThinChain(std::size_t in_uiDefinitions);

/// `v1 = v0 + v0`, `v2 = v1 + v1` and so on: 2^N paths lead through it.
std::string makeDoubling(std::size_t in_uiDefinitions);

/// The chain as a program of Lua, whose global `v0` is the input.
std::string makeLuaChain(std::size_t in_uiDefinitions);

} // namespace Velmora::Benchmarks
