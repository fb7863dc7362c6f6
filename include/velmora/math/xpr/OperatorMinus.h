#pragma once

#include <velmora/math/xpr/BinaryOperatorImpl.h>

namespace Velmora::Math::Xpr {

/// Subtraction, element by element. The sizes must be equal and not 0: there is no broadcasting.
class VELMORA_EXPORT OperatorMinus : public virtual BinaryOperator,
                                     public BinaryOperatorImpl<OperatorMinus> {
public:
    /// Bears the name "sub".
    OperatorMinus();
    explicit OperatorMinus(const char* in_szName);

    bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                   DoubleVector& out) override;
};

} // namespace Velmora::Math::Xpr
