#include <velmora/math/DebounceOnOffFeature.h>

#include <velmora/math/DoubleVector.h>

#include "FeatureParameters.h"
#include "Room.h"
#include "SingleValue.h"

namespace Velmora::Math {

DebounceOnOffFeature::DebounceOnOffFeature() {
    DebounceOnOffFeature::reset();
}

Cloneable* DebounceOnOffFeature::clone() const {
    return new DebounceOnOffFeature(*this);
}

bool DebounceOnOffFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (m_debounceOnValue == 0 || m_debounceOffValue == 0 || in_vInput.empty()) {
        return false;
    }
    makeRoom(out_vResult, 1);
    if (in_vInput[0] != 0.0) {
        m_offCount = 0;
        if (++m_onCount >= m_debounceOnValue) {
            m_on = 1;
        }
    } else {
        m_onCount = 0;
        if (++m_offCount >= m_debounceOffValue) {
            m_on = 0;
        }
    }
    setSingleValue(out_vResult, m_on != 0 ? 1.0 : 0.0);
    return true;
}

bool DebounceOnOffFeature::configure(const ROConfiguration& in_config) {
    std::size_t onValue = m_debounceOnValue;
    std::size_t offValue = m_debounceOffValue;
    if (!readFrameCount(in_config, featureParameterKey(DebounceOnOff, "DebounceOnValue"),
                        onValue) ||
        !readFrameCount(in_config, featureParameterKey(DebounceOnOff, "DebounceOffValue"),
                        offValue)) {
        return false;
    }
    m_debounceOnValue = onValue;
    m_debounceOffValue = offValue;
    return true;
}

bool DebounceOnOffFeature::reset() {
    m_on = 0;
    m_onCount = 0;
    m_offCount = 0;
    return true;
}

} // namespace Velmora::Math
