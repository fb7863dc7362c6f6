#pragma once

#include <cstddef>

#include <velmora/math/xpr/XaryFunction.h>

namespace Velmora::Math::Xpr {

/// The elements of all arguments, one argument after the other. The first argument that fails fails
/// the operator.
class VELMORA_EXPORT OperatorConcatenate : public XaryFunction<OperatorConcatenate> {
public:
    /// How long a result may be: thirty definitions of which each doubles the one before would make
    /// eight gigabytes of one element.
    static constexpr std::size_t MaxConcatenation = std::size_t(1) << 24;

    /// Bears the name "unamed": the optimizer looks for "concat" and leaves it as it is.
    OperatorConcatenate();
    explicit OperatorConcatenate(const char* in_szName);

    /// "concat", the name under which the optimizer flattens concatenations.
    static const char* getNameStatic();

    bool calculate(std::vector<Handle<ExpressionBaseImpl>>& inout_vInputs,
                   DoubleVector& out) override;

protected:
    bool getSealedInputs(std::vector<ExpressionBaseImpl*>& out_vInputs) const override;
};

} // namespace Velmora::Math::Xpr
