#pragma once

#include <velmora/math/xpr/XaryFunction.h>

namespace Velmora::Math::Xpr {

/// The second argument if the first element of the first isn't zero, otherwise the third. Only the
/// chosen one is evaluated, and if it fails the operator succeeds with what it held.
class VELMORA_EXPORT OperatorIf : public XaryFunction<OperatorIf> {
public:
    /// Bears the name "if".
    OperatorIf();
    explicit OperatorIf(const char* in_szName);

    /// "if".
    static const char* getNameStatic();

    bool calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                   DoubleVector& out) override;
};

} // namespace Velmora::Math::Xpr
