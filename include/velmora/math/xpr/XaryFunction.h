#pragma once

#include <vector>

#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// The frame of the operators with any number of arguments. It evaluates nothing itself: it hands
/// the list of inputs to `calculate`, which decides what to evaluate.
///
/// Before sealing the inputs are the arguments, listed anew for each evaluation; after it they are
/// the nodes that compute the arguments' values, as found by `seal`.
class VELMORA_EXPORT XaryFunctionNoT : public virtual Function, public FunctionBaseImpl {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("XaryFunctionNoT")

    XaryFunctionNoT();

    /// Without arguments, under that name.
    explicit XaryFunctionNoT(const char* in_szName);
    ~XaryFunctionNoT() override;

    /// Computes the operator from its inputs, one an argument, in their order.
    virtual bool calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                           DoubleVector& out) = 0;

    /// A new operator of the same class.
    virtual Handle<XaryFunctionNoT> createNew() const = 0;

protected:
    using FunctionBaseImpl::configure_i;
    bool configure_i(const ROConfiguration& in_Configuration,
                     const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    void seal_i() override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;

    /// What `calculate` is handed.
    const std::vector<Handle<ExpressionBaseImpl>>& getInputs() const { return m_Inputs; }

private:
    friend class SealedPlan;

    DoubleVector m_Result;
    std::vector<Handle<ExpressionBaseImpl>> m_Inputs;
};

/// The part of the frame that knows the operator's class.
template <class T>
class XaryFunction : public XaryFunctionNoT {
public:
    XaryFunction() = default;

    /// Under that name.
    explicit XaryFunction(const char* in_szName) : XaryFunctionNoT(in_szName) {}

    /// A new `T`.
    Handle<XaryFunctionNoT> createNew() const override { return Handle<XaryFunctionNoT>(new T); }
};

} // namespace Velmora::Math::Xpr
