#include <velmora/math/SlidingWindowFeature.h>

#include <algorithm>

#include "FeatureParameters.h"
#include "Room.h"

namespace Velmora::Math {

SlidingWindowFeature::SlidingWindowFeature() {
    SlidingWindowFeature::reset();
}

Cloneable* SlidingWindowFeature::clone() const {
    return new SlidingWindowFeature(*this);
}

bool SlidingWindowFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (m_windowSize == 0) {
        return false;
    }
    makeRoom(out_vResult, std::min(m_window.size() + in_vInput.size(), m_windowSize));
    slide_i(in_vInput);
    out_vResult.resize(m_window.size());
    copyWindow_i(out_vResult.begin());
    return true;
}

bool SlidingWindowFeature::configure(const ROConfiguration& in_config) {
    std::size_t windowSize = m_windowSize;
    if (!readSize(in_config, featureParameterKey(SlidingWindow, "WindowSize"), windowSize)) {
        return false;
    }
    setWindowSize_i(windowSize);
    return true;
}

bool SlidingWindowFeature::reset() {
    m_window.clear();
    m_oldest = 0;
    return true;
}

void SlidingWindowFeature::slide_i(const DoubleVector& in_vInput) {
    const double* first = in_vInput.begin();
    const double* const last = in_vInput.end();
    if (in_vInput.size() > m_windowSize) {
        first = last - m_windowSize;
    }

    const std::size_t room = m_windowSize - m_window.size();
    const double* const fitting = first + std::min(room, static_cast<std::size_t>(last - first));
    m_window.insert(m_window.end(), first, fitting);

    for (const double* value = fitting; value != last; ++value) {
        m_window[m_oldest] = *value;
        m_oldest = m_oldest + 1 == m_windowSize ? 0 : m_oldest + 1;
    }
}

void SlidingWindowFeature::copyWindow_i(double* out_pTo) const {
    const double* const oldest = m_window.begin() + m_oldest;
    std::copy(m_window.begin(), oldest, std::copy(oldest, m_window.end(), out_pTo));
}

void SlidingWindowFeature::setWindowSize_i(std::size_t in_uiWindowSize) {
    if (in_uiWindowSize != m_windowSize) {
        m_windowSize = in_uiWindowSize;
        SlidingWindowFeature::reset();
    }
}

} // namespace Velmora::Math
