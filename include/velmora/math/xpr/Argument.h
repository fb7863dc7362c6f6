#pragma once

#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

/// An input of a function: a variable that the function owns.
class VELMORA_EXPORT Argument : public VariableImpl {
protected:
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
};

} // namespace Velmora::Math::Xpr
