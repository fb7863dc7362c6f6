#include <velmora/math/MinFeature.h>

#include <velmora/math/DoubleVector.h>

#include "Kernels.h"
#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* MinFeature::clone() const {
    return new MinFeature(*this);
}

bool MinFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (in_vInput.empty()) {
        return false;
    }
    setSingleValue(out_vResult, kernels().m_Min(in_vInput.begin(), in_vInput.end()));
    return true;
}

} // namespace Velmora::Math
