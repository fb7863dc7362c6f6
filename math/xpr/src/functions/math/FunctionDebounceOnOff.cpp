#include <velmora/math/DebounceOnOffFeature.h>
#include <velmora/math/xpr/SignalFeatureWithParamAndMemoryAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "FeaturePrefix.h"

namespace Velmora::Math::Xpr {

class FunctionDebounceOnOff
    : public SignalFeatureWithParamAndMemoryAdaptorImpl<DebounceOnOffFeature> {
public:
    FunctionDebounceOnOff() : SignalFeatureWithParamAndMemoryAdaptorImpl("debounceOnOff") {}

    void getParameterNames(std::vector<std::string>& out) override {
        const std::string& strPrefix = featurePrefix<SignalFeature::DebounceOnOff>();
        out.push_back(strPrefix + "DebounceOnValue");
        out.push_back(strPrefix + "DebounceOffValue");
    }
};

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionDebounceOnOff>::registerIn(
        Registry::getInstance(),
        "1 after enough consecutive frames that aren't zero, 0 after enough that are, one value");

} // namespace Velmora::Math::Xpr
