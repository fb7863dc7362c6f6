#pragma once

#include <algorithm>
#include <cstddef>

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "Ahead.h"
#include "RootsAhead.h"

namespace Velmora::Math::Xpr {

/// A node on the path of a walk, and the children that it hasn't been to, of which the first few
/// are fetched.
struct PlaceOnPath {
    const ExpressionBaseImpl* m_pNode;
    const Handle<ExpressionBaseImpl>* m_pFirst;
    const Handle<ExpressionBaseImpl>* m_pEnd;
};

/// Has the processor fetch what a walk is about to come back to, to be called as it leaves a node.
///
/// A walk down a chain of definitions that stand on each other goes to its end first. By the time
/// it comes back, the nodes at the other end have left the caches, and so have the children that it
/// hasn't been to. `in_PlaceAt` gives a place of the path by its number; `in_uiStep` is how many of
/// them belong to a definition or two.
template <std::size_t Lines, class PlaceAt>
void fetchWayBack(std::size_t in_uiLength, std::size_t in_uiStep, PlaceAt in_PlaceAt) {
    // The nodes of shorter paths are in the caches.
    constexpr std::size_t LongPath = 1000;
    // Down to the operands of a definition of two operators that the path leads to but not through.
    constexpr int Depth = 7;
    if (in_uiLength < LongPath) {
        return;
    }
    for (int iLevel = 0; iLevel != Depth; ++iLevel) {
        const auto uiAhead = in_uiStep * static_cast<std::size_t>(Depth - iLevel);
        const PlaceOnPath place = in_PlaceAt(in_uiLength - 1 - uiAhead);
        if (iLevel == 0) {
            fetchAhead<Lines>(place.m_pNode);
            continue;
        }
        const auto* const pEnd =
            place.m_pFirst + std::min(place.m_pEnd - place.m_pFirst, MaxFetchedChilds);
        for (const auto* pChild = place.m_pFirst; pChild != pEnd; ++pChild) {
            fetchLevel<Lines>(**pChild, iLevel - 1);
        }
    }
}

} // namespace Velmora::Math::Xpr
