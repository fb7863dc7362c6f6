#pragma once

#include <velmora/math/xpr/BinaryOperatorImpl.h>

namespace Velmora::Math::Xpr {

/// Addition, element by element. The sizes must be equal and not 0: there is no broadcasting.
class VELMORA_EXPORT OperatorPlus : public virtual BinaryOperator,
                                    public BinaryOperatorImpl<OperatorPlus> {
public:
    /// Bears the name "add".
    OperatorPlus();
    explicit OperatorPlus(const char* in_szName);

    bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                   DoubleVector& out) override;
};

} // namespace Velmora::Math::Xpr
