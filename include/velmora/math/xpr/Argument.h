#pragma once

#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

/// An input of a function: a variable that the function owns.
class VELMORA_EXPORT Argument : public VariableImpl {
protected:
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;

private:
    friend class FunctionBaseImpl;

    /// Makes this argument, which is as its function's constructor left it, the copy of another,
    /// but for the name.
    void becomeCopyOf(const Argument& in_Source, ExpressionImplCopier& inout_Copier);
};

} // namespace Velmora::Math::Xpr
