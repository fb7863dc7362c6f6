#include <velmora/math/MinFeature.h>
#include <velmora/math/Reductions.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionMin : public SignalFeatureToFunctionAdaptorImpl<MinFeature> {
public:
    FunctionMin() : SignalFeatureToFunctionAdaptorImpl("min") {}

    static Reductions::Kind reductionOf(const FunctionMin&) { return Reductions::Kind::Min; }
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionMin>::registerIn(
    Registry::getInstance(), "the smallest element, one value");

} // namespace Velmora::Math::Xpr
