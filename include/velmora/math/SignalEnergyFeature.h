#pragma once

#include <velmora/Export.h>
#include <velmora/math/SignalFeatureWithParameters.h>

namespace Velmora::Math {

/// The energy of a frame of samples: the sum of their squares over the sample rate, one value, in
/// the samples' unit squared times seconds.
///
/// Summed by pairs, as SumFeature does. The energy of an empty frame is 0; a NaN propagates.
/// `compute` returns false before a sample rate has been configured.
class VELMORA_EXPORT SignalEnergyFeature : public virtual SignalFeatureWithParameters {
public:
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;

    /// Reads "signalfeature.SampleRate": an integer or a float, finite and above 0, in hertz.
    bool configure(const ROConfiguration& in_config) override;

private:
    double m_sampleRate = 0.0;
};

} // namespace Velmora::Math
