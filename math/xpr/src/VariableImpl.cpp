#include <velmora/math/xpr/VariableImpl.h>

#include <ostream>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

#include "GraphvizNodes.h"
#include "UncheckedLinks.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

VariableImpl::VariableImpl() : m_strName("unamed variable") {}

const char* VariableImpl::TypeName() {
    return "Variable";
}

void VariableImpl::setName(const char* in_szName) {
    if (in_szName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szName");
        return;
    }
    m_strName = in_szName;
}

bool VariableImpl::setValue(const Handle<Expression>& in_pExpression) {
    return setValue_i(in_pExpression, true);
}

bool VariableImpl::setValue(const DoubleVector& in_vValue) {
    if (DomainValueNoCopyImpl* const pDomainValue = getDomainValue().get()) {
        VELMORA_LOG_DEBUG(fileLogger(), "set variable \""
                                            << m_strName << "\" to a domain value. "
                                            << "Keeping same domain value instance --> just swap "
                                               "pointer.");
        pDomainValue->setValue(in_vValue);
        invalidate();
        return true;
    }
    VELMORA_LOG_DEBUG(fileLogger(), "set variable \"" << m_strName << "\" to a domain value. "
                                                      << "Creating a new domain value instance.");
    return setValue_i(Handle<Expression>(new DomainValueNoCopyImpl(in_vValue)), false);
}

bool VariableImpl::setValue_i(const Handle<Expression>& in_pExpression, bool in_bCheck) {
    if (in_pExpression.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't set a null expression");
        return false;
    }
    const Handle<ExpressionBaseImpl> pValue(in_pExpression);
    if (pValue.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Must use same implementation base for all expressions.");
        return false;
    }
    std::unique_ptr<Extras> pExtras;
    if (pValue->isDomainValue()) {
        pExtras = std::make_unique<Extras>();
        pExtras->m_pDomainValue = Handle<DomainValueNoCopyImpl>(pValue);
    }
    // What the cached pointer leads to may go with the old value.
    const Handle<ExpressionBaseImpl> pOldValue(m_pValueExpr);
    if (!pOldValue.isNull()) {
        replaceChild(*pOldValue, pValue, in_bCheck);
    } else {
        addChild(pValue, in_bCheck);
    }
    noteChange();
    m_pValueExpr = pValue;
    m_pExtras.swap(pExtras);
    invalidate();
    forgetValue();
    return true;
}

bool VariableImpl::configure_i(const TSHandle<VirtualFileSystem>&) {
    return true;
}

bool VariableImpl::evaluate_i(LimitedObjPtr<DoubleVector>& out) {
    if (m_pValueExpr.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Can't evaluate a variable ("
                                            << m_strName << ") without setting its value first!");
        return false;
    }
    readValue(*m_pValueExpr, out);
    return true;
}

bool VariableImpl::reset_i() {
    return true;
}

void VariableImpl::replaceChild_i(ExpressionBaseImpl& in_OldChild,
                                  const Handle<ExpressionBaseImpl>& in_pNewChild) {
    if (m_pValueExpr.isNull() || &*m_pValueExpr != &in_OldChild || &m_pValueExpr == &in_pNewChild) {
        return;
    }
    if (isValid()) {
        if (m_pExtras == nullptr) {
            m_pExtras = std::make_unique<Extras>();
        }
        keepFormer(m_pValueExpr, m_pExtras->m_vFormerValues);
    } else {
        forgetValue();
        if (m_pExtras != nullptr) {
            m_pExtras->m_vFormerValues.clear();
        }
    }
    m_pValueExpr = in_pNewChild;
}

Handle<ExpressionBaseImpl> VariableImpl::copy_i(ExpressionImplCopier& inout_Copier) const {
    VELMORA_LOG_DEBUG(fileLogger(), "copy variable: [" << m_strName << "]");
    Handle<VariableImpl> pCopy(new VariableImpl);
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

void VariableImpl::fill(const VariableImpl& in_Source, ExpressionImplCopier& inout_Copier) {
    setName(in_Source.getName());
    copyValue(in_Source, inout_Copier);
}

void VariableImpl::copyValue(const VariableImpl& in_Source, ExpressionImplCopier& inout_Copier) {
    if (in_Source.m_pValueExpr.isNull()) {
        return;
    }
    const Handle<Expression> pCopy(in_Source.m_pValueExpr->copy(inout_Copier));
    // The copy of a graph without a loop has none.
    const UncheckedLinks unchecked;
    Variable& variable = *this;
    variable.setValue(pCopy);
}

bool VariableImpl::isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const {
    const VariableImpl* const pVariable = in_pExpression->asVariable();
    return pVariable != nullptr && pVariable->getName() == getName();
}

std::ostream& VariableImpl::write(std::ostream& out_Stream) const {
    ExpressionBaseImpl::write(out_Stream);
    out_Stream << getDotName() << " [shape=box]\n";
    if (!m_pValueExpr.isNull()) {
        out_Stream << getDotName() << " -> { " << m_pValueExpr->getDotName() << " }\n";
        GraphvizNodes::write(out_Stream, *m_pValueExpr);
    }
    return out_Stream;
}

bool VariableImpl::getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const {
    if (!m_pValueExpr.isNull()) {
        out_vInputs.push_back(&*m_pValueExpr);
    }
    return true;
}

const VariableImpl::FormerNodes*
VariableImpl::getFormer(Handle<ExpressionBaseImpl>& out_pPassedOn) const {
    static const FormerNodes s_vNone;
    if (m_pValueExpr.isNull()) {
        return nullptr;
    }
    out_pPassedOn = m_pValueExpr;
    return m_pExtras == nullptr ? &s_vNone : &m_pExtras->m_vFormerValues;
}

} // namespace Velmora::Math::Xpr
