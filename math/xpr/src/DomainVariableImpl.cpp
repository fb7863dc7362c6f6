#include <velmora/math/xpr/DomainVariableImpl.h>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

namespace {

/// Never destroyed: domain values that point at it may outlive every static object.
const DoubleVector& initialValue() {
    static const auto* const s_pInitialValue = new DoubleVector{0.0};
    return *s_pInitialValue;
}

} // namespace

DomainVariableImpl::DomainVariableImpl() {
    VariableImpl::setValue(initialValue());
}

bool DomainVariableImpl::setValue_i(const Handle<Expression>& in_pExpression, bool in_bCheck) {
    const bool bResult = VariableImpl::setValue_i(in_pExpression, in_bCheck);
    if (!getDomainValue().isNull()) {
        getDomainValue()->setValue(initialValue());
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
        }
        Variable& variable = *this;
        variable.setValue(Handle<Expression>(pSrcExpression));
    }
    if (&*in_Source.getValue() != &*getValue()) {
        VELMORA_ASSERT_FAIL("&*(in_Src.getValue()) == &*getValue()");
    }
}

} // namespace Velmora::Math::Xpr
