#include <velmora/math/Reductions.h>
#include <velmora/math/SumFeature.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionSum : public SignalFeatureToFunctionAdaptorImpl<SumFeature> {
public:
    FunctionSum() : SignalFeatureToFunctionAdaptorImpl("sum") {}

    static Reductions::Kind reductionOf(const FunctionSum&) { return Reductions::Kind::Sum; }
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionSum>::registerIn(
    Registry::getInstance(), "the sum of the elements, one value");

} // namespace Velmora::Math::Xpr
