#pragma once

#include <velmora/math/xpr/FunctionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// The placeholder of a call that a script makes, until the linker replaces it.
///
/// Its arguments and parameters are those written at the call, named "_0", "_1" and so on; only
/// their order counts.
class UnknownFunction : public FunctionBaseImpl {
public:
    VELMORA_MEM_ACCOUNT("UnknownFunction")

protected:
    using FunctionBaseImpl::configure_i;
    bool configure_i(const ROConfiguration& in_Configuration,
                     const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;
};

} // namespace Velmora::Math::Xpr
