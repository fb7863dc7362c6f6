#pragma once

#include <velmora/math/xpr/Expression.h>

namespace Velmora::Math::Xpr {

/// Marks an expression whose value never changes.
class VELMORA_EXPORT Constant : public virtual Expression {};

} // namespace Velmora::Math::Xpr
