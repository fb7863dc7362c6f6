#include <velmora/math/xpr/DomainVariableImpl.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

namespace {

/// What a domain value points at when the last variable that lent it a vector has died. Lives for
/// ever, since domain values may outlive every static object.
const DoubleVector& zero() {
    static const DoubleVector* const s_pZero = [] {
        auto* pZero = new DoubleVector;
        pZero->push_back(0.0);
        return pZero;
    }();
    return *s_pZero;
}

} // namespace

DomainVariableImpl::DomainVariableImpl() {
    m_InitialValue.push_back(0.0);
    VariableImpl::setValue(m_InitialValue);
}

DomainVariableImpl::~DomainVariableImpl() {
    if (!getDomainValue().isNull()) {
        pointElsewhere(*getDomainValue());
    }
}

void DomainVariableImpl::pointElsewhere(DomainValueNoCopyImpl& inout_DomainValue) const {
    if (!inout_DomainValue.pointsAt(m_InitialValue)) {
        return;
    }
    const DoubleVector* pOther = &zero();
    for (const auto* pParent = inout_DomainValue.getParentBegin();
         pParent != inout_DomainValue.getParentEnd(); ++pParent) {
        const auto* pVariable = dynamic_cast<const DomainVariableImpl*>(&**pParent);
        if (pVariable != nullptr && pVariable != this) {
            pOther = &pVariable->m_InitialValue;
            break;
        }
    }
    inout_DomainValue.setValue(*pOther);
}

bool DomainVariableImpl::setValue_i(const Handle<Expression>& in_pExpression, bool in_bCheck) {
    const Handle<ExpressionBaseImpl> pOldValue(getValue());
    const LimitedObjPtr<DomainValueNoCopyImpl> pOldDomainValue(getDomainValue());
    const bool bResult = VariableImpl::setValue_i(in_pExpression, in_bCheck);
    if (!pOldDomainValue.isNull() && &*getValue() != &*pOldValue) {
        // The variable will not be told any more who points at its vector.
        pointElsewhere(*pOldDomainValue);
    }
    if (!getDomainValue().isNull()) {
        getDomainValue()->setValue(m_InitialValue);
    }
    return bResult;
}

Handle<ExpressionBaseImpl> DomainVariableImpl::copy_i(ExpressionImplCopier& inout_Copier) const {
    VELMORA_LOG_DEBUG(fileLogger(), "copy DomainVariable: [" << getName() << "]");
    Handle<DomainVariableImpl> pCopy(new DomainVariableImpl);
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

void DomainVariableImpl::fill(const DomainVariableImpl& in_Source, ExpressionImplCopier&) {
    setName(in_Source.getName());
    if (!in_Source.getValue().isNull()) {
        const Handle<DomainValueBase> pSrcExpression(in_Source.getValue());
        if (pSrcExpression.isNull()) {
            VELMORA_ASSERT_FAIL("!pSrcExpression.isNull()");
        } else {
            Variable& variable = *this;
            variable.setValue(Handle<Expression>(pSrcExpression));
        }
    }
    if (&*in_Source.getValue() != &*getValue()) {
        VELMORA_ASSERT_FAIL("&*(in_Src.getValue()) == &*getValue()");
    }
}

} // namespace Velmora::Math::Xpr
