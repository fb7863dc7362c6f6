#include <velmora/math/xpr/Argument.h>

#include <velmora/math/xpr/ExpressionImplCopier.h>

namespace Velmora::Math::Xpr {

Handle<ExpressionBaseImpl> Argument::copy_i(ExpressionImplCopier& inout_Copier) const {
    Handle<Argument> pCopy(new Argument);
    if (!pCopy.isNull()) {
        pCopy->fill(*this, inout_Copier);
    }
    return Handle<ExpressionBaseImpl>(pCopy);
}

void Argument::becomeCopyOf(const Argument& in_Source, ExpressionImplCopier& inout_Copier) {
    copyValue(in_Source, inout_Copier);
    ExpressionBaseImpl::fill(in_Source, inout_Copier);
}

} // namespace Velmora::Math::Xpr
