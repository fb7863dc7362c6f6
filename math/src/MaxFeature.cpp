#include <velmora/math/MaxFeature.h>

#include <velmora/math/DoubleVector.h>

#include <cmath>

#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* MaxFeature::clone() const {
    return new MaxFeature(*this);
}

bool MaxFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (in_vInput.empty()) {
        return false;
    }
    double largest = in_vInput[0];
    for (const double value : in_vInput) {
        if (std::isnan(value)) {
            largest = value;
            break;
        }
        // The comparison alone would leave the sign of a zero to the order of the elements.
        if (value > largest || (value == largest && !std::signbit(value))) {
            largest = value;
        }
    }
    setSingleValue(out_vResult, largest);
    return true;
}

} // namespace Velmora::Math
