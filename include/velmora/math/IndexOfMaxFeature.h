#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

/// The index of the largest element, counted from 0: one value, without a unit.
///
/// Of equal elements the first counts; zeros of both signs are equal. If there are NaNs, the result
/// is the index of the first of them. `compute` returns false for an empty vector.
class VELMORA_EXPORT IndexOfMaxFeature : public SignalFeature {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;
};

} // namespace Velmora::Math
