#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "Ahead.h"

namespace Velmora::Math::Xpr {

/// The expressions of a dictionary; null for one of another implementation.
inline std::vector<ExpressionBaseImpl*> nodesOf(const Dictionnary& in_Dictionnary) {
    std::vector<ExpressionBaseImpl*> vNodes;
    vNodes.reserve(in_Dictionnary.size());
    for (const auto& entry : in_Dictionnary) {
        vNodes.push_back(entry.second.isNull() ? nullptr : entry.second->asNode());
    }
    return vNodes;
}

/// The same without the nulls.
inline std::vector<ExpressionBaseImpl*> rootsOf(const Dictionnary& in_Dictionnary) {
    std::vector<ExpressionBaseImpl*> vRoots(nodesOf(in_Dictionnary));
    vRoots.erase(std::remove(vRoots.begin(), vRoots.end(), nullptr), vRoots.end());
    return vRoots;
}

/// The children of a node that are fetched: a concatenation may have as many as a script is long,
/// and who fetches all of them whenever the walk goes on has the square of that to do.
constexpr std::ptrdiff_t MaxFetchedChilds = 4;

/// Has the processor fetch the nodes that are so many levels below a node.
template <std::size_t Lines>
void fetchLevel(const ExpressionBaseImpl& in_Node, int in_iLevel) {
    if (in_iLevel == 0) {
        fetchAhead<Lines>(&in_Node);
        return;
    }
    const auto* const pFirst = in_Node.getChildBegin();
    const auto* const pEnd = pFirst + std::min(in_Node.getChildEnd() - pFirst, MaxFetchedChilds);
    for (const auto* pChild = pFirst; pChild != pEnd; ++pChild) {
        if (in_iLevel == 1) {
            pChild->fetchCount();
        }
        fetchLevel<Lines>(**pChild, in_iLevel - 1);
    }
}

/// Has the processor fetch what a walk from root to root is about to visit.
///
/// A walk goes where the links lead, and learns the next address only when it has the node before:
/// in a large graph it waits for memory at every step. But definitions are mostly used near to
/// where they stand, so that a walk comes by the roots in their order, or in the opposite one,
/// whichever of them it began at. `Lines` is what it touches of each node.
template <std::size_t Lines>
class RootsAhead {
public:
    using Roots = std::vector<ExpressionBaseImpl*>;

    explicit RootsAhead(const Roots& in_vRoots)
        : m_vRoots(in_vRoots), m_bLarge(in_vRoots.size() >= LargeGraph) {}

    /// The walk begins at the root of that number.
    void begin(std::size_t in_uiRoot) {
        if (m_bLarge) {
            m_iLast = static_cast<std::ptrdiff_t>(in_uiRoot);
            fetch(1);
        }
    }

    /// The walk enters a node for the first time.
    void enter(const ExpressionBaseImpl& in_Node) {
        if (!m_bLarge) {
            return;
        }
        for (const std::ptrdiff_t iStep : {1, -1, 2, -2}) {
            if (find(m_iLast + iStep) == &in_Node) {
                m_iLast += iStep;
                fetch(iStep);
                return;
            }
        }
    }

private:
    /// The nodes of fewer are in the caches anyway.
    static constexpr std::size_t LargeGraph = 3000;

    /// How far below a root nodes are fetched: those of a definition of two operators.
    static constexpr int Depth = 5;

    const ExpressionBaseImpl* find(std::ptrdiff_t in_iRoot) const {
        return in_iRoot < 0 || in_iRoot >= static_cast<std::ptrdiff_t>(m_vRoots.size())
                   ? nullptr
                   : m_vRoots[static_cast<std::size_t>(in_iRoot)];
    }

    /// A level of each of the next roots, so that what it takes to find it has been fetched before.
    void fetch(std::ptrdiff_t in_iStep) const {
        for (int iLevel = 0; iLevel != Depth; ++iLevel) {
            if (const auto* const pRoot = find(m_iLast + in_iStep * 2 * (Depth - iLevel))) {
                fetchLevel<Lines>(*pRoot, iLevel);
            }
        }
    }

    const Roots& m_vRoots;
    const bool m_bLarge;
    std::ptrdiff_t m_iLast = 0;
};

} // namespace Velmora::Math::Xpr
