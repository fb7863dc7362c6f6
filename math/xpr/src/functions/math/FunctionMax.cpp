#include <velmora/math/MaxFeature.h>
#include <velmora/math/Reductions.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionMax : public SignalFeatureToFunctionAdaptorImpl<MaxFeature> {
public:
    FunctionMax() : SignalFeatureToFunctionAdaptorImpl("max") {}

    static Reductions::Kind reductionOf(const FunctionMax&) { return Reductions::Kind::Max; }
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionMax>::registerIn(
    Registry::getInstance(), "the largest element, one value");

} // namespace Velmora::Math::Xpr
