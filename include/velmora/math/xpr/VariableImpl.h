#pragma once

#include <memory>
#include <string>
#include <vector>

#include <velmora/MemAccounting.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// A variable: a node with at most one child, whose value it passes on without a copy.
///
/// A failure of the value stops here: the variable succeeds and hands out the pointer that it had,
/// which is null if the value never succeeded. Once set, a variable always has a value.
class VELMORA_EXPORT VariableImpl : public virtual Variable, public ExpressionBaseImpl {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("VariableImpl")

    VariableImpl();

    /// The word for nodes of this class: "Variable".
    static const char* TypeName();

    /// "unamed variable" until `setName`. The address of the text is the variable's identity in
    /// `isDependantOf`.
    const char* getName() const override { return m_strName.c_str(); }
    void setName(const char* in_szName);

    bool setValue(const Handle<Expression>& in_pExpression) override;
    bool setValue(const DoubleVector& in_vValue) override;

    /// The value; null until set.
    const Handle<ExpressionBaseImpl>& getValue() const { return m_pValueExpr; }

    VariableImpl* asVariable() override { return this; }

    std::ostream& write(std::ostream& out_Stream) const override;

protected:
    bool configure_i(const TSHandle<VirtualFileSystem>& in_pFileSystem) override;
    bool evaluate_i(LimitedObjPtr<DoubleVector>& out) override;
    bool reset_i() override;
    void replaceChild_i(ExpressionBaseImpl& in_OldChild,
                        const Handle<ExpressionBaseImpl>& in_pNewChild) override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;
    bool isDependantOf_i(const Handle<ExpressionBaseImpl>& in_pExpression) const override;
    bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const override;
    const FormerNodes* getFormer(Handle<ExpressionBaseImpl>& out_pPassedOn) const override;

    /// What both forms of `setValue` come to.
    virtual bool setValue_i(const Handle<Expression>& in_pExpression, bool in_bCheck);

    using ExpressionBaseImpl::fill;

    /// Makes this variable a copy of another: name and value.
    void fill(const VariableImpl& in_Source, ExpressionImplCopier& inout_Copier);

    /// The part of `fill` that copies what gives the value.
    void copyValue(const VariableImpl& in_Source, ExpressionImplCopier& inout_Copier);

    /// The value once more, when it is a domain value; null otherwise.
    LimitedObjPtr<DomainValueNoCopyImpl> getDomainValue() const {
        return m_pExtras == nullptr ? nullptr : m_pExtras->m_pDomainValue.get();
    }

private:
    std::string m_strName;
    Handle<ExpressionBaseImpl> m_pValueExpr;
    /// What few variables have; null for the others.
    struct Extras {
        /// Owned, since a `replaceChild` doesn't reach it.
        Handle<DomainValueNoCopyImpl> m_pDomainValue;
        FormerNodes m_vFormerValues;
    };
    std::unique_ptr<Extras> m_pExtras;
};

} // namespace Velmora::Math::Xpr
