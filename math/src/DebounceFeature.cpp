#include <velmora/math/DebounceFeature.h>

#include <algorithm>
#include <cmath>

#include "FeatureParameters.h"

namespace Velmora::Math {

namespace {

bool equalFrames(const DoubleVector& in_vA, const DoubleVector& in_vB) {
    return std::equal(
        in_vA.begin(), in_vA.end(), in_vB.begin(), in_vB.end(),
        [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); });
}

} // namespace

DebounceFeature::DebounceFeature() {
    DebounceFeature::reset();
}

Cloneable* DebounceFeature::clone() const {
    return new DebounceFeature(*this);
}

bool DebounceFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (m_debounceValue == 0) {
        return false;
    }
    // The first frame has another size than the empty frame that stands here at first, unless it
    // is empty itself.
    if (m_debounceValue == 1 || in_vInput.size() != m_vSteady.size()) {
        m_vSteady = in_vInput;
        // Room for the day on which the frame changes, so that it isn't allocated then.
        m_vCandidate.resize(in_vInput.size());
        m_candidateCount = 0;
    } else if (equalFrames(in_vInput, m_vSteady)) {
        m_candidateCount = 0;
    } else if (m_candidateCount != 0 && equalFrames(in_vInput, m_vCandidate)) {
        ++m_candidateCount;
    } else {
        m_vCandidate = in_vInput;
        m_candidateCount = 1;
    }
    if (m_candidateCount >= m_debounceValue) {
        m_vSteady = m_vCandidate;
        m_candidateCount = 0;
    }
    out_vResult = m_vSteady;
    return true;
}

bool DebounceFeature::configure(const ROConfiguration& in_config) {
    return readFrameCount(in_config, featureParameterKey(Debounce, "DebounceValue"),
                          m_debounceValue);
}

bool DebounceFeature::reset() {
    m_vSteady.clear();
    m_vCandidate.clear();
    m_candidateCount = 0;
    return true;
}

} // namespace Velmora::Math
