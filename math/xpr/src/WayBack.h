#pragma once

#include <cstddef>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

/// Has the processor fetch what a walk is about to come back to, to be called as it leaves a node.
///
/// A walk down a chain of definitions that stand on each other goes to its end first. By the time
/// it comes back, nodes at the other end have left the caches, with the children that it hasn't
/// been to. `in_NodeAt` gives the node at a place of the path; of a definition there are
/// `in_uiPlaces` on it.
template <std::size_t Lines, class NodeAt>
void fetchWayBack(std::size_t in_uiLength, std::size_t in_uiPlaces, NodeAt in_NodeAt) {
    // The nodes of shorter paths are in the caches.
    constexpr std::size_t LongPath = 1000;
    constexpr int Depth = 5;
    if (in_uiLength < LongPath) {
        return;
    }
    for (int iLevel = 0; iLevel != Depth; ++iLevel) {
        const auto uiAhead = in_uiPlaces * 2 * static_cast<std::size_t>(Depth - iLevel);
        fetchLevel<Lines>(in_NodeAt(in_uiLength - 1 - uiAhead), iLevel);
    }
}

} // namespace Velmora::Math::Xpr
