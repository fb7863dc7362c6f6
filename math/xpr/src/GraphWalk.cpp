#include "GraphWalk.h"

#include <algorithm>
#include <atomic>
#include <new>

#include "RootsAhead.h"
#include "SealedPlan.h"
#include "WayBack.h"

namespace Velmora::Math::Xpr {

namespace {

thread_local bool t_bWalking = false;

/// Numbers are never given twice: a graph may have been walked by another thread before.
std::atomic<std::uint64_t> g_uiLastWalk{0};

/// Does a way down end soon?
bool isShallow(const ExpressionBaseImpl& in_Root) {
    constexpr int MaxSteps = 64;
    const ExpressionBaseImpl* pNode = &in_Root;
    for (int iStep = 0; iStep != MaxSteps; ++iStep) {
        if (pNode->getChildBegin() == pNode->getChildEnd()) {
            return true;
        }
        pNode = pNode->getChildBegin()->get();
    }
    return false;
}

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

bool GraphWalk::isShort(const Nodes& in_vRoots) {
    const GraphWalk walk;
    std::size_t uiVisits = 0;
    const auto isShortWith = [&](ExpressionBaseImpl* in_pRoot) {
        uiVisits += walk.countVisits(*in_pRoot);
        return uiVisits <= ExpressionBaseImpl::MaxVisitsPerWalk;
    };
    // Where each definition uses those behind it, the first leads to the end of a long chain, and
    // the paths from the last are soon too many.
    const bool bBackward =
        !in_vRoots.empty() && !isShallow(*in_vRoots.front()) && isShallow(*in_vRoots.back());
    return bBackward ? std::all_of(in_vRoots.rbegin(), in_vRoots.rend(), isShortWith)
                     : std::all_of(in_vRoots.begin(), in_vRoots.end(), isShortWith);
}

bool GraphWalk::isShort(const ExpressionBaseImpl& in_Root) {
    // The marks of walks are no part of what a node is.
    return isShort(Nodes{const_cast<ExpressionBaseImpl*>(&in_Root)});
}

std::size_t GraphWalk::countVisits(ExpressionBaseImpl& in_Root) const {
    struct Count {
        ExpressionBaseImpl* m_pNode;
        std::size_t m_uiNextChild;
        std::size_t m_uiVisits;
    };
    std::vector<Count> vPath;
    const auto visitsOf = [&](ExpressionBaseImpl& inout_Node) -> std::size_t {
        if (enter(inout_Node)) {
            // Met once more before it is counted, the node stands in a circle, which has no end.
            inout_Node.m_uiWalkPlace = TooManyVisits;
            vPath.push_back({&inout_Node, 0, 1});
            return 0;
        }
        return inout_Node.m_uiWalkPlace;
    };
    std::size_t uiLast = visitsOf(in_Root);
    while (!vPath.empty() && uiLast <= ExpressionBaseImpl::MaxVisitsPerWalk) {
        Count& place = vPath.back();
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
    GraphWalk walk;
    Nodes vNodes;
    std::size_t uiVisits = 0;
    RootsAhead<WalkedLines> ahead(in_vRoots);
    for (std::size_t uiRoot = 0; uiRoot != in_vRoots.size(); ++uiRoot) {
        ahead.begin(uiRoot);
        walk.append(*in_vRoots[uiRoot], vNodes, &ahead);
        uiVisits =
            std::min<std::size_t>(uiVisits + in_vRoots[uiRoot]->m_uiWalkPlace, TooManyVisits);
    }
    if (uiVisits < TooManyVisits) {
        for (ExpressionBaseImpl* pRoot : in_vRoots) {
            pRoot->sealAlongPaths();
        }
        SealedPlan::make(in_vRoots, GraphWalk().collectAll(in_vRoots), SealedPlan::Parents::Sealed);
        return;
    }
    try {
        sealAll(vNodes);
        SealedPlan::make(in_vRoots, vNodes, SealedPlan::Parents::Complete);
    } catch (const std::bad_alloc&) {
        // Without a plan, changes go from parent to parent.
        forEachAhead(vNodes, 0,
                     [](ExpressionBaseImpl& inout_Node) { inout_Node.m_Parents.seal(); });
        throw;
    }
}

void GraphWalk::sealAll(const Nodes& in_vNodes) {
    forEachAhead<AllLines>(in_vNodes, 0, [](ExpressionBaseImpl& inout_Node) {
        // A plan that doesn't know the new readers isn't used any more, even if this goes wrong.
        inout_Node.noteChange();
        inout_Node.m_bSealed = true;
        inout_Node.seal_i();
    });
}

GraphWalk::Nodes GraphWalk::collectAll(const Nodes& in_vRoots) {
    Nodes vNodes;
    for (ExpressionBaseImpl* pRoot : in_vRoots) {
        append(*pRoot, vNodes, nullptr);
    }
    return vNodes;
}

GraphWalk::Nodes GraphWalk::collect(ExpressionBaseImpl& in_Root) {
    Nodes vNodes;
    append(in_Root, vNodes, nullptr);
    return vNodes;
}

void GraphWalk::append(ExpressionBaseImpl& in_Root, Nodes& out_vNodes,
                       RootsAhead<WalkedLines>* inout_pAhead) {
    constexpr std::size_t MaxFetched = 4;
    constexpr std::size_t PlacesOfTwoDefinitions = 5;
    const auto descend = [&](ExpressionBaseImpl& in_Node) {
        if (enter(in_Node)) {
            in_Node.m_uiWalkPlace = TooManyVisits;
            if (inout_pAhead != nullptr) {
                inout_pAhead->enter(in_Node);
            }
            m_vPath.push_back({&in_Node, 0});
            // The last child is next; the others are fetched from memory in the meantime.
            for (std::size_t ui = 0; ui + 1 < in_Node.m_Childs.size() && ui != MaxFetched; ++ui) {
                __builtin_prefetch(&in_Node.m_Childs[ui]->m_uiLastWalk);
            }
        }
    };
    const std::size_t uiFirst = out_vNodes.size();
    descend(in_Root);
    while (!m_vPath.empty()) {
        // The last child first: reversed below, siblings come in their own order.
        Place& place = m_vPath.back();
        const std::size_t uiChildCount = place.m_pNode->m_Childs.size();
        if (place.m_uiNextChild < uiChildCount) {
            descend(*place.m_pNode->m_Childs[uiChildCount - ++place.m_uiNextChild]);
        } else {
            addUpVisits(*place.m_pNode);
            out_vNodes.push_back(place.m_pNode);
            m_vPath.pop_back();
            fetchWayBack<2>(m_vPath.size(), PlacesOfTwoDefinitions, [this](std::size_t in_ui) {
                const Place& later = m_vPath[in_ui];
                const auto* const pBegin = later.m_pNode->getChildBegin();
                const auto* const pEnd = later.m_pNode->getChildEnd() - later.m_uiNextChild;
                return PlaceOnPath{later.m_pNode, pEnd - std::min(pEnd - pBegin, MaxFetchedChilds),
                                   pEnd};
            });
        }
    }
    std::reverse(out_vNodes.begin() + static_cast<std::ptrdiff_t>(uiFirst), out_vNodes.end());
}

void GraphWalk::addUpVisits(ExpressionBaseImpl& inout_Node) {
    std::uint32_t uiVisits = 1;
    for (const auto& pChild : inout_Node.m_Childs) {
        uiVisits = std::min(uiVisits + pChild->m_uiWalkPlace, TooManyVisits);
    }
    inout_Node.m_uiWalkPlace = uiVisits;
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
