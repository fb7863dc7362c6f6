#include <velmora/math/IndexOfMaxFeature.h>

#include <velmora/math/DoubleVector.h>

#include <cmath>
#include <cstddef>

#include "SingleValue.h"

namespace Velmora::Math {

Cloneable* IndexOfMaxFeature::clone() const {
    return new IndexOfMaxFeature(*this);
}

bool IndexOfMaxFeature::compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) {
    if (in_vInput.empty()) {
        return false;
    }
    std::size_t indexOfLargest = 0;
    double largest = in_vInput[0];
    for (std::size_t i = 0; i < in_vInput.size(); ++i) {
        const double value = in_vInput[i];
        if (std::isnan(value)) {
            indexOfLargest = i;
            break;
        }
        if (value > largest) {
            largest = value;
            indexOfLargest = i;
        }
    }
    setSingleValue(out_vResult, static_cast<double>(indexOfLargest));
    return true;
}

} // namespace Velmora::Math
