#include <velmora/math/SumFeature.h>

#include <velmora/math/DoubleVector.h>

#include "Kernels.h"
#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* SumFeature::clone() const {
    return new SumFeature(*this);
}

bool SumFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    setSingleValue(out_vResult, kernels().m_Sum(in_vInput.begin(), in_vInput.end()));
    return true;
}

} // namespace Velmora::Math
