#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

/// The sum of the elements: one value, in the unit of the elements.
///
/// Summed by pairs, so that the error grows with the logarithm of the number of elements. The sum
/// of an empty vector is 0, that of zeros is +0; a NaN propagates. Always returns true.
class VELMORA_EXPORT SumFeature : public SignalFeature {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;
};

} // namespace Velmora::Math
