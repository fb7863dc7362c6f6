#pragma once

#include <velmora/math/xpr/InvalidExpression.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// The null object in the place of a variable that can't be found: each of its operations fails.
class VELMORA_EXPORT InvalidVariable : public virtual Variable, public InvalidExpression {
public:
    const char* getName() const override;
    bool setValue(const Handle<Expression>& in_pExpression) override;
    bool setValue(const DoubleVector& in_vValue) override;
};

} // namespace Velmora::Math::Xpr
