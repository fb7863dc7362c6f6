#pragma once

#include <velmora/math/xpr/BinaryOperatorImpl.h>

namespace Velmora::Math::Xpr {

/// A vector divided by a scalar. The right side must have exactly one element, and not 0; the left
/// side may not be empty.
class VELMORA_EXPORT OperatorDivide : public virtual BinaryOperator,
                                      public BinaryOperatorImpl<OperatorDivide> {
public:
    /// Bears the name "div".
    OperatorDivide();
    explicit OperatorDivide(const char* in_szName);

    bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                   DoubleVector& out) override;
};

} // namespace Velmora::Math::Xpr
