#pragma once

#include <cstddef>
#include <vector>

namespace Velmora::Math::Xpr {

/// Calls the function for each node of a list, and has the processor fetch what comes some nodes
/// later: the nodes of a large graph aren't in its caches.
template <class Node, class Function>
void forEachAhead(const std::vector<Node*>& in_vNodes, Function in_Function) {
    constexpr std::size_t Ahead = 8;
    for (std::size_t ui = 0; ui != in_vNodes.size(); ++ui) {
        if (ui + Ahead < in_vNodes.size()) {
            // The head of the object and what walks touch of it.
            const auto* const pNext = reinterpret_cast<const char*>(in_vNodes[ui + Ahead]);
            __builtin_prefetch(pNext, 1);
            __builtin_prefetch(pNext + 64, 1);
            __builtin_prefetch(pNext + 128, 1);
        }
        in_Function(*in_vNodes[ui]);
    }
}

} // namespace Velmora::Math::Xpr
