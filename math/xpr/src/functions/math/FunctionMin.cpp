#include <velmora/math/MinFeature.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionMin : public SignalFeatureToFunctionAdaptorImpl<MinFeature> {
public:
    FunctionMin() : SignalFeatureToFunctionAdaptorImpl("min") {}
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionMin>::registerIn(
    Registry::getInstance(), "the smallest element, one value");

} // namespace Velmora::Math::Xpr
