#include <velmora/math/AbsFeature.h>

#include <velmora/math/DoubleVector.h>

#include <cmath>
#include <cstddef>

namespace Velmora::Math {

Cloneable* AbsFeature::clone() const {
    return new AbsFeature(*this);
}

bool AbsFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    const std::size_t count = in_vInput.size();
    out_vResult.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        out_vResult[i] = std::fabs(in_vInput[i]);
    }
    return true;
}

} // namespace Velmora::Math
