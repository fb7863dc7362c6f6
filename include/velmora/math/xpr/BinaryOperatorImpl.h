#pragma once

#include <memory>

#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/BinaryOperator.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// The frame of the binary operators: owns the arguments "Left" and "Right", evaluates them, left
/// first, and holds the result.
///
/// Before sealing, an argument that fails fails the operator, with an ERROR line. After sealing the
/// operator reads the nodes that compute its sides directly; a side that fails leaves the value of
/// the evaluation before in place, and isn't reported. A side that never had a value fails the
/// operator in both cases.
class VELMORA_EXPORT BinaryOperatorImplNoT : public virtual BinaryOperator,
                                             public FunctionBaseImpl {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("BinaryOperatorImpl")

    BinaryOperatorImplNoT();

    /// Has both arguments, without values, under that name.
    explicit BinaryOperatorImplNoT(const char* in_szName);
    ~BinaryOperatorImplNoT() override;

    /// The argument, kept from the first call on: it doesn't follow a later `replaceChild`.
    const Handle<Variable>& getLeftArgument() const override;
    const Handle<Variable>& getRightArgument() const override;

    std::ostream& write(std::ostream& out_Stream) const override;

    /// Computes the operator. False, with an ERROR line, for values that don't fit it.
    virtual bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                           DoubleVector& out) = 0;

    /// A new operator of the same class.
    virtual Handle<BinaryOperatorImplNoT> createNew() const = 0;

protected:
    using FunctionBaseImpl::configure_i;
    bool configure_i(const ROConfiguration& in_Configuration,
                     const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    void seal_i() override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;
    bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const override;

private:
    friend class SealedPlan;

    const Handle<Variable>& getInvalidVariable() const;
    void initArguments();
    bool evaluateSides();
    bool readSealedSides();
    static void forgetOtherValue(const Handle<ExpressionBaseImpl>& in_pChild,
                                 LimitedObjPtr<DoubleVector>& inout_pValue);

    mutable Handle<Variable> m_pLeftArgument;
    mutable Handle<Variable> m_pRightArgument;
    DoubleVector m_Result;
    Handle<ExpressionBaseImpl> m_pLeftChild;
    Handle<ExpressionBaseImpl> m_pRightChild;
    LimitedObjPtr<DoubleVector> m_pLeftValue;
    LimitedObjPtr<DoubleVector> m_pRightValue;
    /// Null until somebody asks for an argument that isn't there.
    mutable std::unique_ptr<Handle<Variable>> m_pInvalidVariable;
};

/// The part of the frame that knows the operator's class.
template <class T>
class BinaryOperatorImpl : public BinaryOperatorImplNoT {
public:
    BinaryOperatorImpl() = default;

    /// Under that name.
    explicit BinaryOperatorImpl(const char* in_szName) : BinaryOperatorImplNoT(in_szName) {}

    /// A new `T`.
    Handle<BinaryOperatorImplNoT> createNew() const override {
        return Handle<BinaryOperatorImplNoT>(new T);
    }
};

} // namespace Velmora::Math::Xpr
