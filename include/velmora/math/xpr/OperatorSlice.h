#pragma once

#include <velmora/math/xpr/BinaryOperatorImpl.h>

namespace Velmora::Math::Xpr {

/// The elements of the left side that the right side lists by index, from 0, in the order of the
/// list; indices are truncated toward zero. An index out of range fails the operator, and the
/// result holds what stood before it.
class VELMORA_EXPORT OperatorSlice : public virtual BinaryOperator,
                                     public BinaryOperatorImpl<OperatorSlice> {
public:
    /// Bears the name "Slice".
    OperatorSlice();
    explicit OperatorSlice(const char* in_szName);

    bool calculate(const DoubleVector& in_Left, const DoubleVector& in_Right,
                   DoubleVector& out) override;
};

} // namespace Velmora::Math::Xpr
