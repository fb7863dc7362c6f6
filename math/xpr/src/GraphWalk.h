#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "Ahead.h"

namespace Velmora::Math::Xpr {

template <std::size_t>
class RootsAhead;

/// Walks below one or more roots that visit each node once, parents ahead of children, without
/// recursion.
///
/// The operations that walk along every path use it for graphs with too many paths. A walk leaves
/// its number at each node: while one goes on, no other may run over the same nodes.
class GraphWalk {
public:
    using Nodes = std::vector<ExpressionBaseImpl*>;

    /// True for the outermost walk on this thread: a walk along paths asks once, at its start,
    /// whether it is short enough, and not again at each node.
    class Outermost {
    public:
        Outermost();
        ~Outermost();
        Outermost(const Outermost&) = delete;
        Outermost& operator=(const Outermost&) = delete;
        explicit operator bool() const { return m_bOutermost; }

    private:
        bool m_bOutermost;
    };

    /// Would walks along every path from these roots, taken together, stay within
    /// `ExpressionBaseImpl::MaxVisitsPerWalk` visits?
    static bool isShort(const Nodes& in_vRoots);
    static bool isShort(const ExpressionBaseImpl& in_Root);

    /// Seals the graphs below the roots, one after the other: along every path if that is short,
    /// otherwise each node once, after every node is registered with what it reads.
    static void seal(const Nodes& in_vRoots);

    GraphWalk();

    /// Marks the node as visited. False if this walk has been there.
    bool enter(ExpressionBaseImpl& inout_Node) const {
        const bool bNew = inout_Node.m_uiLastWalk != m_uiNumber;
        inout_Node.m_uiLastWalk = m_uiNumber;
        return bNew;
    }

    /// Has this walk, and none after it, been there?
    bool hasEntered(const ExpressionBaseImpl& in_Node) const {
        return in_Node.m_uiLastWalk == m_uiNumber;
    }

    /// A number of the walk's own that it leaves at a node that it has entered.
    static void setPlace(ExpressionBaseImpl& out_Node, std::uint32_t in_uiPlace) {
        out_Node.m_uiWalkPlace = in_uiPlace;
    }
    static std::uint32_t getPlace(const ExpressionBaseImpl& in_Node) {
        return in_Node.m_uiWalkPlace;
    }

    /// The nodes below a root, the root included, that no earlier call of this object has given: a
    /// node stands behind all of its parents among them.
    Nodes collect(ExpressionBaseImpl& in_Root);

    /// The same for one root after the other.
    Nodes collectAll(const Nodes& in_vRoots);

    /// Configures what `collect` gives for a root; stops with false at the first node that refuses.
    bool configureRest(ExpressionBaseImpl& in_Root,
                       const TSHandle<VirtualFileSystem>& in_pFileSystem);

private:
    struct Place {
        ExpressionBaseImpl* m_pNode;
        std::size_t m_uiNextChild;
    };

    /// Stands for all numbers from there on, and at a node whose visits aren't counted yet: one
    /// that is met again before it is stands in a circle, which has no end.
    static constexpr std::uint32_t TooManyVisits = ExpressionBaseImpl::MaxVisitsPerWalk + 1;

    /// The visits of a walk along every path from there, or any number that is too large. What is
    /// below a node is counted once.
    std::size_t countVisits(ExpressionBaseImpl& in_Root) const;

    /// `collect`, which counts the visits as well and leaves them at the nodes.
    void append(ExpressionBaseImpl& in_Root, Nodes& out_vNodes,
                RootsAhead<WalkedLines>* inout_pAhead);
    static void addUpVisits(ExpressionBaseImpl& inout_Node);

    /// Seals the nodes, but for their lists of parents.
    static void sealAll(const Nodes& in_vNodes);

    std::uint64_t m_uiNumber;
    std::vector<Place> m_vPath;
};

} // namespace Velmora::Math::Xpr
