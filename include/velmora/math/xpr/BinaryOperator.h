#pragma once

#include <velmora/Handle.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// An operator of two arguments.
class VELMORA_EXPORT BinaryOperator : public virtual Expression {
public:
    /// The variable of that side.
    virtual const Handle<Variable>& getLeftArgument() const = 0;
    virtual const Handle<Variable>& getRightArgument() const = 0;
};

} // namespace Velmora::Math::Xpr
