#pragma once

#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// The node that stands in a parent list in the place of a parent that has died: never valid, so
/// that no invalidation walks on from it, and without parents or children. Lives for ever.
ExpressionBaseImpl& deadParent();

} // namespace Velmora::Math::Xpr
