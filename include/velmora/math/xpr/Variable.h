#pragma once

#include <velmora/Handle.h>
#include <velmora/math/xpr/Expression.h>

namespace Velmora::Math::Xpr {

/// A named slot for an expression or for the host's vector of the frame.
class VELMORA_EXPORT Variable : public virtual Expression {
public:
    /// The name for people and dictionaries.
    virtual const char* getName() const = 0;

    /// Binds the variable to an expression. False, and nothing changes, for a null handle and for
    /// an expression that isn't an `ExpressionBaseImpl`. Setting a variable to itself is a
    /// programming error: it fails an assertion, and the handle is stored all the same.
    virtual bool setValue(const Handle<Expression>& in_pExpression) = 0;

    /// The value is that vector from now on. It isn't copied: the caller keeps it alive and
    /// unchanged until evaluation has finished. From the second call on nothing is allocated.
    virtual bool setValue(const DoubleVector& in_vValue) = 0;
};

} // namespace Velmora::Math::Xpr
