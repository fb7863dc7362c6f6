#pragma once

#include <vector>

#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// A function whose body was written in a script.
///
/// The body is a child of the node, and reads the function's own `Argument` nodes. A failure of the
/// body stops here, as in a variable. The linker copies the function for each call.
class VELMORA_EXPORT ScriptFunctionImpl : public FunctionBaseImpl {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("ScriptFunctionImpl")

    /// Without a body, under that name.
    explicit ScriptFunctionImpl(const char* in_szName);

    /// Sets the body. False, with an ERROR line, for a null handle and for an expression that isn't
    /// an `ExpressionBaseImpl`. A second body leaves the first one a child of the node.
    bool setImplementation(const Handle<Expression>& in_pImplementation);

    /// The body; null until set.
    const Handle<ExpressionBaseImpl>& getImplementation() const { return m_pImplementation; }

    using FunctionBaseImpl::fill;
    /// Makes this function a copy of another.
    void fill(const ScriptFunctionImpl& in_Source, ExpressionImplCopier& inout_Copier);

    ScriptFunctionImpl* asScriptFunction() override { return this; }

    std::ostream& write(std::ostream& out_Stream) const override;

protected:
    using FunctionBaseImpl::configure_i;
    bool configure_i(const ROConfiguration& in_Configuration,
                     const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    void seal_i() override;
    void replaceChild_i(ExpressionBaseImpl& in_OldChild,
                        const Handle<ExpressionBaseImpl>& in_pNewChild) override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;
    bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const override;
    const FormerNodes* getFormer(Handle<ExpressionBaseImpl>& out_pPassedOn) const override;

private:
    Handle<ExpressionBaseImpl> m_pImplementation;
    FormerNodes m_vFormerImplementations;
};

} // namespace Velmora::Math::Xpr
