#include <velmora/math/SignalEnergyFeature.h>
#include <velmora/math/xpr/SignalFeatureWithSingleParamAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

namespace Velmora::Math::Xpr {

class FunctionEnergy : public SignalFeatureWithSingleParamAdaptorImpl<SignalEnergyFeature> {
public:
    FunctionEnergy()
        : SignalFeatureWithSingleParamAdaptorImpl("energy", "signalfeature.SampleRate") {}
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionEnergy>::registerIn(
    Registry::getInstance(), "the sum of the squares over the sample rate, one value");

} // namespace Velmora::Math::Xpr
