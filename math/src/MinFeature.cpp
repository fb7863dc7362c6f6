#include <velmora/math/MinFeature.h>

#include <velmora/math/DoubleVector.h>

#include <cmath>

#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* MinFeature::clone() const {
    return new MinFeature(*this);
}

bool MinFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (in_vInput.empty()) {
        return false;
    }
    double smallest = in_vInput[0];
    for (const double value : in_vInput) {
        if (std::isnan(value)) {
            smallest = value;
            break;
        }
        // The comparison alone would leave the sign of a zero to the order of the elements.
        if (value < smallest || (value == smallest && std::signbit(value))) {
            smallest = value;
        }
    }
    setSingleValue(out_vResult, smallest);
    return true;
}

} // namespace Velmora::Math
