#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

/// Counts the nodes of expressions' trees, a shared node once for each path, in time that grows
/// with the number of nodes. The counts hold as long as the graph doesn't change, and no other walk
/// runs over it.
class ExpressionComplexity {
public:
    /// Makes room for as many nodes.
    void reserve(std::size_t in_uiNodes) { m_vCounts.reserve(in_uiNodes); }

    /// The largest unsigned long stands for everything from there on.
    unsigned long of(const ExpressionBaseImpl& in_Expression);

    /// What stands above the expression has changed, or is about to.
    void forgetAbove(const ExpressionBaseImpl& in_Expression);

    /// For a walk that comes by every node anyway: to be called on the way down and, where it gave
    /// true, when all children have been left. The places of the nodes number them, from 0.
    bool enter(ExpressionBaseImpl& inout_Node);
    void leave(const ExpressionBaseImpl& in_Node);
    bool hasEntered(const ExpressionBaseImpl& in_Node) const { return m_Walk.hasEntered(in_Node); }

private:
    struct Place;

    /// No tree has so few nodes.
    static constexpr unsigned long Unknown = 0;
    /// That of a tree without an end too: a node that stands below itself.
    static constexpr unsigned long Limit = std::numeric_limits<unsigned long>::max();

    const GraphWalk m_Walk;
    /// By place. Who is known has everything below it known.
    std::vector<unsigned long> m_vCounts;
};

} // namespace Velmora::Math::Xpr
