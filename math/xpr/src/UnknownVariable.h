#pragma once

#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

/// The placeholder of a name that a script refers to, until the linker replaces it. Has no value.
class UnknownVariable : public VariableImpl {
public:
    VELMORA_MEM_ACCOUNT("UnknownVariable")

protected:
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;
};

} // namespace Velmora::Math::Xpr
