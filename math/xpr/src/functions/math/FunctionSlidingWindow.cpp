#include "FunctionSlidingWindow.h"

#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionSlidingWindow>::registerIn(
        Registry::getInstance(),
        "the last values over all frames, oldest first, up to the size of the window");

} // namespace Velmora::Math::Xpr
