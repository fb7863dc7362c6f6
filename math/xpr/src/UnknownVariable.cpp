#include "UnknownVariable.h"

#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

bool UnknownVariable::evaluate_i(LimitedObjPtr<DoubleVector>&) {
    return false;
}

bool UnknownVariable::reset_i() {
    VELMORA_ASSERT_FAIL("false && \"can't reset UnknowVariable\"");
    return false;
}

Handle<ExpressionBaseImpl> UnknownVariable::copy_i(ExpressionImplCopier& inout_Copier) const {
    Handle<UnknownVariable> pCopy(new UnknownVariable);
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

bool UnknownVariable::isDependantOf_i(const Handle<ExpressionBaseImpl>&) const {
    return false;
}

} // namespace Velmora::Math::Xpr
