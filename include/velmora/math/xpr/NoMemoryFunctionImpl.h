#pragma once

#include <velmora/math/xpr/FunctionAdaptor.h>

namespace Velmora::Math::Xpr {

/// The answer of a function that remembers nothing between frames.
class VELMORA_EXPORT NoMemoryFunctionImpl : public virtual FunctionAdaptor {
public:
    /// True; there is nothing to forget.
    bool reset() override { return true; }
};

} // namespace Velmora::Math::Xpr
