#include "UnknownFunction.h"

#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

bool UnknownFunction::configure_i(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) {
    VELMORA_ASSERT_FAIL("false && \"can't configure UnknownFunction\"");
    return false;
}

bool UnknownFunction::evaluate_i(LimitedObjPtr<DoubleVector>&) {
    return false;
}

bool UnknownFunction::reset_i() {
    VELMORA_ASSERT_FAIL("false && \"can't reset UnknowFunction\"");
    return false;
}

Handle<ExpressionBaseImpl> UnknownFunction::copy_i(ExpressionImplCopier& inout_Copier) const {
    Handle<UnknownFunction> pCopy(new UnknownFunction);
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

bool UnknownFunction::isDependantOf_i(const Handle<ExpressionBaseImpl>&) const {
    return false;
}

} // namespace Velmora::Math::Xpr
