#include "DomainValueKeeper.h"

#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/DomainVariableImpl.h>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

DomainValueKeeper::~DomainValueKeeper() {
    for (auto& [ulId, state] : m_mapStates) {
        state.m_pDomainValue->m_pVector = state.m_pVector;
        *state.m_pDomainValue->m_pValid = state.m_bValid ? 1 : 0;
    }
}

void DomainValueKeeper::keepInputsOf(const Dictionnary& in_Dictionnary) {
    GraphWalk walk;
    for (const auto& entry : in_Dictionnary) {
        const Handle<ExpressionBaseImpl> pRoot(entry.second);
        if (pRoot.isNull()) {
            continue;
        }
        for (const ExpressionBaseImpl* pNode : walk.collect(*pRoot)) {
            if (const auto* pVariable = dynamic_cast<const DomainVariableImpl*>(pNode)) {
                keep(Handle<DomainValueNoCopyImpl>(pVariable->getValue()));
            }
        }
    }
}

bool DomainValueKeeper::isKept(const ExpressionBaseImpl& in_Expression) const {
    return m_mapStates.count(in_Expression.getId()) != 0;
}

void DomainValueKeeper::keep(const Handle<DomainValueNoCopyImpl>& in_pDomainValue) {
    if (in_pDomainValue.isNull() || isKept(*in_pDomainValue)) {
        return;
    }
    m_mapStates.emplace(in_pDomainValue->getId(), State{in_pDomainValue, in_pDomainValue->m_pVector,
                                                        in_pDomainValue->isValid()});
    *in_pDomainValue->m_pValid = 0;
}

} // namespace Velmora::Math::Xpr
