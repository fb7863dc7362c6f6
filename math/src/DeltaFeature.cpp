#include <velmora/math/DeltaFeature.h>

#include <algorithm>
#include <cstddef>

namespace Velmora::Math {

Cloneable* DeltaFeature::clone() const {
    return new DeltaFeature(*this);
}

bool DeltaFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    const std::size_t count = in_vInput.size();
    out_vResult.resize(count);
    if (m_vPrevious.size() != count) {
        m_vPrevious = in_vInput;
        std::fill(out_vResult.begin(), out_vResult.end(), 0.0);
        return true;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const double value = in_vInput[i];
        out_vResult[i] = value - m_vPrevious[i];
        m_vPrevious[i] = value;
    }
    return true;
}

bool DeltaFeature::reset() {
    m_vPrevious.clear();
    return true;
}

} // namespace Velmora::Math
