#include <velmora/math/DeltaFeature.h>
#include <velmora/math/xpr/SignalFeatureWithMemoryAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionDelta : public SignalFeatureWithMemoryAdaptorImpl<DeltaFeature> {
public:
    FunctionDelta() : SignalFeatureWithMemoryAdaptorImpl("delta") {}
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionDelta>::registerIn(
    Registry::getInstance(), "each element minus the same element of the frame before");

} // namespace Velmora::Math::Xpr
