#pragma once

#include <boost/container/small_vector.hpp>

#include <velmora/Handle.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// Releases the handles. Children that die on the way have theirs released by the outermost call,
/// one after the other, so that a chain of any length is destroyed without recursion.
void releaseDeferred(
    boost::container::small_vector_base<Handle<ExpressionBaseImpl>>& inout_vHandles) noexcept;

} // namespace Velmora::Math::Xpr
