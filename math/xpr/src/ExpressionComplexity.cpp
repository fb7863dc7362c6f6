#include "ExpressionComplexity.h"

#include <limits>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

namespace {

unsigned long addUpToLimit(unsigned long in_ulA, unsigned long in_ulB) {
    constexpr auto Limit = std::numeric_limits<unsigned long>::max();
    return in_ulB > Limit - in_ulA ? Limit : in_ulA + in_ulB;
}

} // namespace

unsigned long ExpressionComplexity::of(ExpressionBaseImpl& in_Expression) {
    const auto iteKnown = m_mapCounts.find(in_Expression.getId());
    if (iteKnown != m_mapCounts.end()) {
        return iteKnown->second;
    }
    const GraphWalk::Nodes vNodes = GraphWalk().collect(in_Expression);
    for (auto ite = vNodes.rbegin(); ite != vNodes.rend(); ++ite) {
        unsigned long ulCount = 1;
        for (const auto* pChild = (*ite)->getChildBegin(); pChild != (*ite)->getChildEnd();
             ++pChild) {
            ulCount = addUpToLimit(ulCount, m_mapCounts[(*pChild)->getId()]);
        }
        m_mapCounts[(*ite)->getId()] = ulCount;
    }
    return m_mapCounts[in_Expression.getId()];
}

} // namespace Velmora::Math::Xpr
