#include "PrototypeCopier.h"

#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

void PrototypeCopier::share(const ExpressionBaseImpl& in_Variable) {
    m_SharedIds.insert(in_Variable.getId());
}

Handle<ExpressionBaseImpl> PrototypeCopier::copy(const Handle<ExpressionBaseImpl>& in_pPrototype) {
    if (!fits(in_pPrototype)) {
        return Handle<ExpressionBaseImpl>();
    }
    const Extent& extent = extentOf(in_pPrototype);
    m_uiCopiedNodes += extent.m_uiNodes;
    ExpressionImplCopier copier;
    for (const auto& pVariable : extent.m_vShared) {
        copier.registerCopy(*pVariable, pVariable);
    }
    return in_pPrototype->copy(copier);
}

bool PrototypeCopier::fits(const Handle<ExpressionBaseImpl>& in_pPrototype) {
    return extentOf(in_pPrototype).m_uiNodes <= MaxNodes - m_uiCopiedNodes;
}

const PrototypeCopier::Extent&
PrototypeCopier::extentOf(const Handle<ExpressionBaseImpl>& in_pPrototype) {
    const auto iteExtent = m_Extents.find(in_pPrototype->getId());
    if (iteExtent != m_Extents.end()) {
        return iteExtent->second;
    }
    return m_Extents.emplace(in_pPrototype->getId(), measure(in_pPrototype)).first->second;
}

PrototypeCopier::Extent
PrototypeCopier::measure(const Handle<ExpressionBaseImpl>& in_pPrototype) const {
    Extent extent;
    std::unordered_set<unsigned long> seen{in_pPrototype->getId()};
    std::vector<Handle<ExpressionBaseImpl>> vPending{in_pPrototype};
    while (!vPending.empty()) {
        const Handle<ExpressionBaseImpl> pNode(vPending.back());
        vPending.pop_back();
        if (m_SharedIds.count(pNode->getId()) != 0) {
            extent.m_vShared.push_back(pNode);
            continue;
        }
        ++extent.m_uiNodes;
        for (const auto* pChild = pNode->getChildBegin(); pChild != pNode->getChildEnd();
             ++pChild) {
            if (seen.insert((*pChild)->getId()).second) {
                vPending.push_back(*pChild);
            }
        }
    }
    return extent;
}

} // namespace Velmora::Math::Xpr
