#pragma once

#include <velmora/math/xpr/BinaryOperatorImpl.h>

namespace Velmora::Math::Xpr {

/// A vector times a scalar. One side, at least, must have exactly one element, neither may be
/// empty.
class VELMORA_EXPORT OperatorMultiply : public virtual BinaryOperator,
                                        public BinaryOperatorImpl<OperatorMultiply> {
public:
    /// Bears the name "mult".
    OperatorMultiply();
    explicit OperatorMultiply(const char* in_szName);

    bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                   DoubleVector& out) override;
};

} // namespace Velmora::Math::Xpr
