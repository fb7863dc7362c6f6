#pragma once

#include <velmora/math/DoubleVector.h>

namespace Velmora::Math {

/// Makes the vector hold that value alone, in the block that it has.
inline void setSingleValue(DoubleVector& out_vResult, double in_dValue) {
    out_vResult.clear();
    out_vResult.push_back(in_dValue);
}

} // namespace Velmora::Math
