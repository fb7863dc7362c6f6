#pragma once

#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

/// A variable that has a value from its construction on, [0.0]: an input declared by a script.
///
/// Each domain value that is bound to it by handle is made to point at the initial value. A copy
/// shares the domain value of its source, so that setting either feeds both; the deep copy of a
/// dictionary undoes that. The initial value is one vector for all variables and lives for ever, so
/// that it doesn't matter which of those that share a domain value die, and when.
class VELMORA_EXPORT DomainVariableImpl : public virtual Variable, public VariableImpl {
public:
    VELMORA_MEM_ACCOUNT_NO_SIZE("DomainVariableImpl")

    DomainVariableImpl();

protected:
    bool setValue_i(const Handle<Expression>& in_pExpression, bool in_bCheck) override;
    Handle<ExpressionBaseImpl> copy_i(ExpressionImplCopier& inout_Copier) const override;

    using VariableImpl::fill;

    /// Makes this variable a copy of another, which shares its domain value.
    void fill(const DomainVariableImpl& in_Source, ExpressionImplCopier& inout_Copier);
};

} // namespace Velmora::Math::Xpr
