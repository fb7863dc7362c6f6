#include <velmora/math/SumFeature.h>

#include <velmora/math/DoubleVector.h>

#include "SingleValue.h"
#include "Summation.h"

namespace Velmora::Math {

Cloneable* SumFeature::clone() const {
    return new SumFeature(*this);
}

bool SumFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    setSingleValue(out_vResult, sum(in_vInput.begin(), in_vInput.end()));
    return true;
}

} // namespace Velmora::Math
