#include <velmora/math/MaxFeature.h>

#include <velmora/math/DoubleVector.h>

#include "Kernels.h"
#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* MaxFeature::clone() const {
    return new MaxFeature(*this);
}

bool MaxFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (in_vInput.empty()) {
        return false;
    }
    setSingleValue(out_vResult, kernels().m_Max(in_vInput.begin(), in_vInput.end()));
    return true;
}

} // namespace Velmora::Math
