#include <velmora/math/DebounceFeature.h>
#include <velmora/math/xpr/SignalFeatureWithParamAndMemoryAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "FeaturePrefix.h"

namespace Velmora::Math::Xpr {

class FunctionDebounce : public SignalFeatureWithParamAndMemoryAdaptorImpl<DebounceFeature> {
public:
    FunctionDebounce() : SignalFeatureWithParamAndMemoryAdaptorImpl("debounce") {}

    void getParameterNames(std::vector<std::string>& out) override {
        const std::string& strPrefix = featurePrefix<SignalFeature::Debounce>();
        out.push_back(strPrefix + "DebounceValue");
    }
};

[[maybe_unused]] static const bool s_bRegistered = UserFunctionImpl<FunctionDebounce>::registerIn(
    Registry::getInstance(),
    "the frame, held back until it has come unchanged on enough consecutive frames");

} // namespace Velmora::Math::Xpr
