#include "GraphWalk.h"

#include <algorithm>
#include <atomic>

#include "Ahead.h"
#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

namespace {

thread_local bool t_bWalking = false;

/// Numbers are never given twice: a graph may have been walked by another thread before.
std::atomic<std::uint64_t> g_uiLastWalk{0};

} // namespace

GraphWalk::Outermost::Outermost() : m_bOutermost(!t_bWalking) {
    t_bWalking = true;
}

GraphWalk::Outermost::~Outermost() {
    if (m_bOutermost) {
        t_bWalking = false;
    }
}

GraphWalk::GraphWalk() : m_uiNumber(++g_uiLastWalk) {}

bool GraphWalk::enter(ExpressionBaseImpl& inout_Node) const {
    const bool bNew = inout_Node.m_uiLastWalk != m_uiNumber;
    inout_Node.m_uiLastWalk = m_uiNumber;
    return bNew;
}

bool GraphWalk::hasEntered(const ExpressionBaseImpl& in_Node) const {
    return in_Node.m_uiLastWalk == m_uiNumber;
}

bool GraphWalk::isShort(const Nodes& in_vRoots) {
    const GraphWalk walk;
    std::size_t uiVisits = 0;
    return std::all_of(in_vRoots.begin(), in_vRoots.end(), [&](ExpressionBaseImpl* in_pRoot) {
        uiVisits += walk.countVisits(*in_pRoot);
        return uiVisits <= ExpressionBaseImpl::MaxVisitsPerWalk;
    });
}

bool GraphWalk::isShort(const ExpressionBaseImpl& in_Root) {
    // The marks of walks are no part of what a node is.
    return isShort(Nodes{const_cast<ExpressionBaseImpl*>(&in_Root)});
}

std::size_t GraphWalk::countVisits(ExpressionBaseImpl& in_Root) const {
    struct Place {
        ExpressionBaseImpl* m_pNode;
        std::size_t m_uiNextChild;
        std::size_t m_uiVisits;
    };
    std::vector<Place> vPath;
    const auto visitsOf = [&](ExpressionBaseImpl& inout_Node) -> std::size_t {
        if (enter(inout_Node)) {
            // Met once more before it is counted, the node stands in a circle, which has no end.
            inout_Node.m_uiWalkPlace = ExpressionBaseImpl::MaxVisitsPerWalk + 1;
            vPath.push_back({&inout_Node, 0, 1});
            return 0;
        }
        return inout_Node.m_uiWalkPlace;
    };
    std::size_t uiLast = visitsOf(in_Root);
    while (!vPath.empty() && uiLast <= ExpressionBaseImpl::MaxVisitsPerWalk) {
        Place& place = vPath.back();
        place.m_uiVisits += uiLast;
        if (place.m_uiVisits > ExpressionBaseImpl::MaxVisitsPerWalk) {
            return place.m_uiVisits;
        }
        if (place.m_uiNextChild != place.m_pNode->m_Childs.size()) {
            uiLast = visitsOf(*place.m_pNode->m_Childs[place.m_uiNextChild++]);
        } else {
            uiLast = place.m_uiVisits;
            place.m_pNode->m_uiWalkPlace = static_cast<std::uint32_t>(uiLast);
            vPath.pop_back();
        }
    }
    return uiLast;
}

void GraphWalk::seal(const Nodes& in_vRoots) {
    if (isShort(in_vRoots)) {
        for (ExpressionBaseImpl* pRoot : in_vRoots) {
            pRoot->sealAlongPaths();
        }
        SealedPlan::make(in_vRoots, GraphWalk().collectAll(in_vRoots));
        return;
    }
    const Nodes vNodes = GraphWalk().collectAll(in_vRoots);
    forEachAhead(vNodes, [](ExpressionBaseImpl& inout_Node) {
        // A plan that doesn't know the new readers isn't used any more, even if this goes wrong.
        inout_Node.noteChange();
        inout_Node.m_bSealed = true;
        inout_Node.seal_i();
    });
    // Now that all are registered, the lists of parents are complete.
    forEachAhead(vNodes, [](ExpressionBaseImpl& inout_Node) { inout_Node.m_Parents.seal(); });
    SealedPlan::make(in_vRoots, vNodes);
}

GraphWalk::Nodes GraphWalk::collectAll(const Nodes& in_vRoots) {
    Nodes vNodes;
    for (ExpressionBaseImpl* pRoot : in_vRoots) {
        const Nodes vBelow = collect(*pRoot);
        vNodes.insert(vNodes.end(), vBelow.begin(), vBelow.end());
    }
    return vNodes;
}

GraphWalk::Nodes GraphWalk::collect(ExpressionBaseImpl& in_Root) {
    struct Place {
        ExpressionBaseImpl* m_pNode;
        std::size_t m_uiNextChild;
    };
    constexpr std::size_t MaxFetched = 4;
    Nodes vNodes;
    std::vector<Place> vPath;
    const auto descend = [&](ExpressionBaseImpl& in_Node) {
        if (enter(in_Node)) {
            vPath.push_back({&in_Node, 0});
            // The last child is next; the others are fetched from memory in the meantime.
            for (std::size_t ui = 0; ui + 1 < in_Node.m_Childs.size() && ui != MaxFetched; ++ui) {
                __builtin_prefetch(&in_Node.m_Childs[ui]->m_uiLastWalk);
            }
        }
    };
    descend(in_Root);
    while (!vPath.empty()) {
        // The last child first: reversed below, siblings come in their own order.
        Place& place = vPath.back();
        const std::size_t uiChildCount = place.m_pNode->m_Childs.size();
        if (place.m_uiNextChild < uiChildCount) {
            descend(*place.m_pNode->m_Childs[uiChildCount - ++place.m_uiNextChild]);
        } else {
            vNodes.push_back(place.m_pNode);
            vPath.pop_back();
        }
    }
    std::reverse(vNodes.begin(), vNodes.end());
    return vNodes;
}

bool GraphWalk::configureRest(ExpressionBaseImpl& in_Root,
                              const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    for (ExpressionBaseImpl* pNode : collect(in_Root)) {
        if (!pNode->configure_i(in_pFileSystem)) {
            return false;
        }
    }
    return true;
}

} // namespace Velmora::Math::Xpr
