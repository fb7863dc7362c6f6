#include "DomainVariableUpdate.h"

#include <velmora/LogSite.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "DomainValueKeeper.h"
#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

DomainVariableUpdate::DomainVariableUpdate(const CachedLLLogger& in_Logger,
                                           ExpressionImplCopier& inout_Copier,
                                           const DomainValueKeeper& in_SourceInputs)
    : m_Logger(in_Logger), m_Copier(inout_Copier), m_SourceInputs(in_SourceInputs) {}

void DomainVariableUpdate::run(const Dictionnary& in_Copy) {
    for (const auto& entry : in_Copy) {
        const Handle<DomainVariableImpl> pVariable(entry.second);
        if (!pVariable.isNull()) {
            update(*pVariable);
        }
    }
    GraphWalk walk;
    for (const auto& entry : in_Copy) {
        const Handle<ExpressionBaseImpl> pRoot(entry.second);
        if (pRoot.isNull()) {
            continue;
        }
        for (ExpressionBaseImpl* pNode : walk.collect(*pRoot)) {
            auto* pVariable = dynamic_cast<DomainVariableImpl*>(pNode);
            if (pVariable != nullptr && m_SourceInputs.isKept(*pVariable->getValue())) {
                update(*pVariable);
            }
        }
    }
}

void DomainVariableUpdate::update(DomainVariableImpl& inout_Variable) {
    VELMORA_LOG_DEBUG(m_Logger, "updating DomainVariable=" << inout_Variable.getName());
    const Handle<DomainValueBase> pOldValue(inout_Variable.getValue());
    if (pOldValue.isNull()) {
        return;
    }
    const Handle<DomainValueBase> pNewValue(pOldValue->copy(m_Copier));
    moveParents(inout_Variable, *pOldValue, pNewValue);
    Variable& variable = inout_Variable;
    variable.setValue(Handle<Expression>(pNewValue));
}

void DomainVariableUpdate::moveParents(const DomainVariableImpl& in_Variable,
                                       DomainValueBase& inout_OldValue,
                                       const Handle<DomainValueBase>& in_pNewValue) {
    std::size_t uiPosition = 0;
    while (inout_OldValue.getParentBegin() + uiPosition != inout_OldValue.getParentEnd()) {
        ExpressionBaseImpl& parent = *inout_OldValue.getParentBegin()[uiPosition];
        logParent(parent);
        if (!m_Copier.getCopy(parent).isNull()) {
            VELMORA_LOG_DEBUG(m_Logger, "parent ID:" << parent.getId()
                                                     << " resides in the orginal dictionnary");
            ++uiPosition;
            continue;
        }
        VELMORA_LOG_DEBUG(m_Logger,
                          "parent ID:" << parent.getId() << " resides in the dictionnary copy");
        if (!parent.isChild(inout_OldValue)) {
            ++uiPosition;
            continue;
        }
        VELMORA_LOG_DEBUG(m_Logger, "parent ID:" << parent.getId() << " replacing child ID: "
                                                 << inout_OldValue.getId()
                                                 << " by child ID: " << in_pNewValue->getId());
        if (parent.replaceChild(inout_OldValue, Handle<ExpressionBaseImpl>(in_pNewValue), true) ==
            ExpressionBaseImpl::NoChild) {
            ++uiPosition;
        } else if (auto* pVariable = dynamic_cast<VariableImpl*>(&parent);
                   pVariable != nullptr && pVariable->getId() != in_Variable.getId()) {
            // Replacing a child leaves a variable's second pointer at the old value.
            Variable& variable = *pVariable;
            variable.setValue(Handle<Expression>(in_pNewValue));
        }
    }
}

void DomainVariableUpdate::logParent(const ExpressionBaseImpl& in_Parent) const {
    if (const auto* pVariable = dynamic_cast<const DomainVariableImpl*>(&in_Parent)) {
        VELMORA_LOG_DEBUG(m_Logger,
                          "parent: " << in_Parent.getId() << " (" << pVariable->getName() << ")");
    } else {
        VELMORA_LOG_DEBUG(m_Logger, "parent: " << in_Parent.getId());
    }
}

} // namespace Velmora::Math::Xpr
