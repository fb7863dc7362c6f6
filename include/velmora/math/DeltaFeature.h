#pragma once

#include <velmora/Export.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/SignalFeatureWithMemory.h>

namespace Velmora::Math {

/// The frame minus the frame before, element by element: the size and the unit of the input.
///
/// The first frame, and one whose size differs from that of the frame before, gives zeros; an empty
/// frame gives an empty one and is a frame like any other. A NaN propagates, into the frame after
/// it too. `compute` always returns true.
class VELMORA_EXPORT DeltaFeature : public virtual SignalFeatureWithMemory {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;
    bool reset() override;

private:
    DoubleVector m_vPrevious;
};

} // namespace Velmora::Math
