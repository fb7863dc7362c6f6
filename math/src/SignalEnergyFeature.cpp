#include <velmora/math/SignalEnergyFeature.h>

#include "FeatureParameters.h"
#include "Kernels.h"
#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* SignalEnergyFeature::clone() const {
    return new SignalEnergyFeature(*this);
}

bool SignalEnergyFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (m_sampleRate == 0.0) {
        return false;
    }
    setSingleValue(out_vResult,
                   kernels().m_SumOfSquares(in_vInput.begin(), in_vInput.end()) / m_sampleRate);
    return true;
}

bool SignalEnergyFeature::configure(const ROConfiguration& in_config) {
    return readRate(in_config, "signalfeature.SampleRate", m_sampleRate);
}

} // namespace Velmora::Math
