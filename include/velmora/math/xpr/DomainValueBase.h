#pragma once

#include <string>

#include <velmora/math/xpr/DomainValue.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// What all domain values share: the name made of the value, evaluation, copying. The twin of
/// ConstantBase.
///
/// Has no children. The name is built when it is first asked for after a change of the value.
class VELMORA_EXPORT DomainValueBase : public virtual DomainValue, public ExpressionBaseImpl {
public:
    DomainValueBase();

    /// The word for nodes of this class: "DomainValue".
    static const char* TypeName();

    /// "DomainValue_" and the value's text. Equal values have equal names.
    const char* getName() const override;

    std::ostream& write(std::ostream& out_Stream) const override;
    bool isDomainValue() const override { return true; }

    /// The value of this moment.
    virtual const DoubleVector& getValue() const = 0;

    /// A new node of the same concrete class, which the caller owns.
    virtual DomainValueBase* createNew(const DoubleVector& in_vValue) const = 0;

protected:
    bool configure_i(const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;
    bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const override;

    /// What `copy_i` makes: a node of this class with that value.
    Handle<ExpressionBaseImpl> copyWith(const DoubleVector& in_vValue,
                                        ExpressionImplCopier& inout_Copier) const;

    /// The next getName builds the name anew.
    void forgetName() { m_bNameBuilt = false; }

private:
    mutable std::string m_strName;
    mutable bool m_bNameBuilt = false;
};

} // namespace Velmora::Math::Xpr
