#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

/// The absolute value of each element: the size and the unit of the input.
///
/// An empty vector gives an empty one; a NaN propagates. Always returns true.
class VELMORA_EXPORT AbsFeature : public SignalFeature {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;
};

} // namespace Velmora::Math
