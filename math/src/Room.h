#pragma once

#include <velmora/math/DoubleVector.h>

#include <algorithm>
#include <cstddef>

namespace Velmora::Math {

/// Makes room for so many values and leaves those that are there.
///
/// Features with memory take the room for their result ahead of a change of that memory: a frame
/// that runs out of memory can be tried again then, and counts once.
inline void makeRoom(DoubleVector& inout_vValues, std::size_t in_uiCount) {
    const std::size_t former = inout_vValues.size();
    inout_vValues.resize(std::max(former, in_uiCount));
    inout_vValues.resize(former);
}

} // namespace Velmora::Math
