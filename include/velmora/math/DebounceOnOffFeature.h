#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeatureWithMemory.h>
#include <velmora/math/SignalFeatureWithParameters.h>

#include <cstddef>

namespace Velmora::Math {

/// A switch that reacts to what lasts: one value, 0 or 1, and 0 at first.
///
/// It becomes 1 after as many consecutive frames with a first value other than zero as the "on"
/// value says, and 0 again after as many consecutive frames with a first value of zero as the "off"
/// value says. A NaN isn't zero. `compute` returns false, and nothing changes, for an empty frame
/// and before both values have been configured.
class VELMORA_EXPORT DebounceOnOffFeature : public virtual SignalFeatureWithMemory,
                                            public virtual SignalFeatureWithParameters {
public:
    DebounceOnOffFeature();
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;

    /// Reads "debounceonoff.DebounceOnValue" and "debounceonoff.DebounceOffValue": integers not
    /// below 0, numbers of frames; 0 counts as 1. Keeps the memory.
    bool configure(const ROConfiguration& in_config) override;

    bool reset() override;

private:
    /// 0 until they have been configured; a configured 0 is kept as 1.
    std::size_t m_debounceOnValue = 0;
    std::size_t m_debounceOffValue = 0;

    /// 1 while the switch is on; the lengths of the current runs, of which at most one isn't 0.
    std::size_t m_on = 0;
    std::size_t m_onCount = 0;
    std::size_t m_offCount = 0;
};

} // namespace Velmora::Math
