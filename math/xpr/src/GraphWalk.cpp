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
    return isShortFrom({in_vRoots.begin(), in_vRoots.end()});
}

bool GraphWalk::isShort(const ExpressionBaseImpl& in_Root) {
    return isShortFrom({&in_Root});
}

bool GraphWalk::isShortFrom(std::vector<const ExpressionBaseImpl*> in_vPending) {
    std::size_t uiVisits = 0;
    while (!in_vPending.empty()) {
        if (++uiVisits > ExpressionBaseImpl::MaxVisitsPerWalk) {
            return false;
        }
        const ExpressionBaseImpl* pNode = in_vPending.back();
        in_vPending.pop_back();
        for (const auto& pChild : pNode->m_Childs) {
            in_vPending.push_back(&*pChild);
        }
    }
    return true;
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
    Nodes vNodes;
    std::vector<Place> vPath;
    const auto descend = [&](ExpressionBaseImpl& in_Node) {
        if (enter(in_Node)) {
            vPath.push_back({&in_Node, 0});
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
