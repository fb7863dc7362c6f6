#include <velmora/math/TappedDelayFeature.h>
#include <velmora/math/xpr/SignalFeatureWithParamAndMemoryAdaptorImpl.h>
#include <velmora/math/xpr/UserFunctionImpl.h>

#include "FeaturePrefix.h"

namespace Velmora::Math::Xpr {

class FunctionTappedDelay : public SignalFeatureWithParamAndMemoryAdaptorImpl<TappedDelayFeature> {
public:
    FunctionTappedDelay() : SignalFeatureWithParamAndMemoryAdaptorImpl("tappedDelay") {}

    void getParameterNames(std::vector<std::string>& out) override {
        const std::string& strPrefix = featurePrefix<SignalFeature::TappedDelay>();
        out.push_back(strPrefix + "TapeSize");
        out.push_back(strPrefix + "IncludeUsedTapeSizeInOutput");
        out.push_back(strPrefix + "PaddingValues");
    }
};

[[maybe_unused]] static const bool s_bRegistered =
    UserFunctionImpl<FunctionTappedDelay>::registerIn(
        Registry::getInstance(),
        "the last values over all frames, oldest first, padded in front to the size of the tape");

} // namespace Velmora::Math::Xpr
