#include <velmora/math/LogFeature.h>

#include <velmora/math/DoubleVector.h>

#include <cmath>
#include <cstddef>
#include <limits>

#include "Logarithm.h"

namespace Velmora::Math {

namespace {

double logarithmOf(double in_dValue) {
    if (in_dValue == 0.0) {
        in_dValue = std::numeric_limits<double>::min();
    }
    if (in_dValue > 0.0 && in_dValue <= std::numeric_limits<double>::max()) {
        return naturalLogarithm(in_dValue);
    }
    return in_dValue < 0.0 ? std::numeric_limits<double>::quiet_NaN() : in_dValue;
}

} // namespace

Cloneable* LogFeature::clone() const {
    return new LogFeature(*this);
}

bool LogFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    const std::size_t count = in_vInput.size();
    out_vResult.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        out_vResult[i] = logarithmOf(in_vInput[i]);
    }
    return true;
}

} // namespace Velmora::Math
