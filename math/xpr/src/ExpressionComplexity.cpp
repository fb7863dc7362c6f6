#include "ExpressionComplexity.h"

namespace Velmora::Math::Xpr {

/// A node on the way down, and the child that is next.
struct ExpressionComplexity::Place {
    explicit Place(ExpressionBaseImpl& in_Node)
        : m_pNode(&in_Node), m_pNextChild(in_Node.getChildBegin()) {}

    ExpressionBaseImpl* m_pNode;
    const Handle<ExpressionBaseImpl>* m_pNextChild;
};

unsigned long ExpressionComplexity::of(const ExpressionBaseImpl& in_Expression) {
    std::vector<Place> vPath;
    // Goes no further down than to what is known: a graph has many roots over the same nodes.
    const auto descend = [&](ExpressionBaseImpl& inout_Node) {
        if (enter(inout_Node)) {
            vPath.emplace_back(inout_Node);
        }
    };
    // The marks of walks are no part of what a node is.
    descend(const_cast<ExpressionBaseImpl&>(in_Expression));
    while (!vPath.empty()) {
        Place& place = vPath.back();
        if (place.m_pNextChild != place.m_pNode->getChildEnd()) {
            descend(**place.m_pNextChild++);
        } else {
            leave(*place.m_pNode);
            vPath.pop_back();
        }
    }
    return m_vCounts[GraphWalk::getPlace(in_Expression)];
}

bool ExpressionComplexity::enter(ExpressionBaseImpl& inout_Node) {
    if (m_Walk.enter(inout_Node)) {
        GraphWalk::setPlace(inout_Node, static_cast<std::uint32_t>(m_vCounts.size()));
        m_vCounts.push_back(Limit);
        return true;
    }
    unsigned long& ulCount = m_vCounts[GraphWalk::getPlace(inout_Node)];
    const bool bForgotten = ulCount == Unknown;
    ulCount = bForgotten ? Limit : ulCount;
    return bForgotten;
}

void ExpressionComplexity::leave(const ExpressionBaseImpl& in_Node) {
    unsigned long ulCount = 1;
    for (const auto* pChild = in_Node.getChildBegin(); pChild != in_Node.getChildEnd(); ++pChild) {
        const unsigned long ulBelow = m_vCounts[GraphWalk::getPlace(**pChild)];
        ulCount = ulBelow > Limit - ulCount ? Limit : ulCount + ulBelow;
    }
    m_vCounts[GraphWalk::getPlace(in_Node)] = ulCount;
}

void ExpressionComplexity::forgetAbove(const ExpressionBaseImpl& in_Expression) {
    std::vector<const ExpressionBaseImpl*> vPending{&in_Expression};
    while (!vPending.empty()) {
        const ExpressionBaseImpl& node = *vPending.back();
        vPending.pop_back();
        for (const auto* pParent = node.getParentBegin(); pParent != node.getParentEnd();
             ++pParent) {
            if (!hasEntered(**pParent)) {
                continue;
            }
            unsigned long& ulCount = m_vCounts[GraphWalk::getPlace(**pParent)];
            if (ulCount != Unknown) {
                ulCount = Unknown;
                vPending.push_back(pParent->get());
            }
        }
    }
}

} // namespace Velmora::Math::Xpr
