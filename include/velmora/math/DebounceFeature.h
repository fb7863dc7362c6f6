#pragma once

#include <velmora/Export.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/SignalFeatureWithMemory.h>
#include <velmora/math/SignalFeatureWithParameters.h>

#include <cstddef>

namespace Velmora::Math {

/// The frame, held back until it is steady: a new frame replaces the one that comes out once it has
/// come unchanged on as many consecutive frames as the debounce value says.
///
/// The first frame, and one of another size than the one that comes out, comes out at once. Frames
/// are compared as a whole, and a NaN equals a NaN. The result has the size and the unit of the
/// input. `compute` returns false before a debounce value has been configured.
class VELMORA_EXPORT DebounceFeature : public virtual SignalFeatureWithMemory,
                                       public virtual SignalFeatureWithParameters {
public:
    DebounceFeature();
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;

    /// Reads "debounce.DebounceValue": an integer not below 0, a number of frames; 0 and 1 let
    /// every frame through. Keeps the memory.
    bool configure(const ROConfiguration& in_config) override;

    bool reset() override;

private:
    /// 0 until it has been configured; a configured 0 is kept as 1, which means the same.
    std::size_t m_debounceValue = 0;

    DoubleVector m_vSteady;
    DoubleVector m_vCandidate;

    /// How often the candidate has come in a row; 0 without a candidate.
    std::size_t m_candidateCount = 0;
};

} // namespace Velmora::Math
