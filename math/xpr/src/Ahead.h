#pragma once

#include <cstddef>
#include <vector>

namespace Velmora::Math::Xpr {

/// What the processor is asked to fetch of a node: what walks over a graph touch, or about all of
/// an operator.
constexpr std::size_t WalkedLines = 4;
constexpr std::size_t AllLines = 8;

/// How many nodes ahead of its turn a node is fetched.
constexpr std::size_t NodesAhead = 8;

template <std::size_t Lines>
void fetchAhead(const void* in_pNode) {
    constexpr std::size_t LineSize = 64;
    for (std::size_t ui = 0; ui != Lines; ++ui) {
        __builtin_prefetch(static_cast<const char*>(in_pNode) + ui * LineSize, 1);
    }
}

/// Calls the function for each node of a list from one on, and has the processor fetch what comes
/// some nodes later: the nodes of a large graph aren't in its caches.
template <std::size_t Lines = WalkedLines, class Node, class Function>
void forEachAhead(const std::vector<Node*>& in_vNodes, std::size_t in_uiFirst,
                  Function in_Function) {
    for (std::size_t ui = in_uiFirst; ui < in_vNodes.size(); ++ui) {
        if (ui + NodesAhead < in_vNodes.size()) {
            fetchAhead<Lines>(in_vNodes[ui + NodesAhead]);
        }
        in_Function(*in_vNodes[ui]);
    }
}

} // namespace Velmora::Math::Xpr
