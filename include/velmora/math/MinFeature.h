#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math {

/// The smallest element: one value, in the unit of the elements.
///
/// A NaN anywhere gives NaN. Of zeros of both signs the negative one is the smaller. `compute`
/// returns false for an empty vector.
class VELMORA_EXPORT MinFeature : public SignalFeature {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;
};

} // namespace Velmora::Math
