#include "ExpressionComplexity.h"

#include <limits>
#include <vector>

namespace Velmora::Math::Xpr {

namespace {

unsigned long addUpToLimit(unsigned long in_ulA, unsigned long in_ulB) {
    constexpr auto Limit = std::numeric_limits<unsigned long>::max();
    return in_ulB > Limit - in_ulA ? Limit : in_ulA + in_ulB;
}

/// A node on the way down, with the count of itself and of the children that were passed.
struct Place {
    explicit Place(const ExpressionBaseImpl& in_Node)
        : m_pNode(&in_Node), m_pNextChild(in_Node.getChildBegin()) {}

    const ExpressionBaseImpl* m_pNode;
    const Handle<ExpressionBaseImpl>* m_pNextChild;
    unsigned long m_ulCount = 1;
};

} // namespace

unsigned long ExpressionComplexity::of(const ExpressionBaseImpl& in_Expression) {
    const auto iteKnown = m_mapCounts.find(in_Expression.getId());
    if (iteKnown != m_mapCounts.end()) {
        return iteKnown->second;
    }
    // Goes no further down than to what is known: a graph has many roots over the same nodes.
    std::vector<Place> vPath{Place(in_Expression)};
    while (true) {
        Place& place = vPath.back();
        if (place.m_pNextChild != place.m_pNode->getChildEnd()) {
            const ExpressionBaseImpl& child = **place.m_pNextChild;
            const auto iteChild = m_mapCounts.find(child.getId());
            if (iteChild == m_mapCounts.end()) {
                vPath.emplace_back(child);
            } else {
                place.m_ulCount = addUpToLimit(place.m_ulCount, iteChild->second);
                ++place.m_pNextChild;
            }
            continue;
        }
        const unsigned long ulCount = place.m_ulCount;
        m_mapCounts[place.m_pNode->getId()] = ulCount;
        vPath.pop_back();
        if (vPath.empty()) {
            return ulCount;
        }
    }
}

void ExpressionComplexity::forgetAbove(const ExpressionBaseImpl& in_Expression) {
    std::vector<const ExpressionBaseImpl*> vPending{&in_Expression};
    while (!vPending.empty()) {
        const ExpressionBaseImpl& node = *vPending.back();
        vPending.pop_back();
        for (const auto* pParent = node.getParentBegin(); pParent != node.getParentEnd();
             ++pParent) {
            if (m_mapCounts.erase((*pParent)->getId()) != 0) {
                vPending.push_back(pParent->get());
            }
        }
    }
}

} // namespace Velmora::Math::Xpr
