#pragma once

#include <velmora/math/SlidingWindowFeature.h>
#include <velmora/math/xpr/SignalFeatureWithParamAndMemoryAdaptorImpl.h>

#include "FeaturePrefix.h"

namespace Velmora::Math::Xpr {

/// The last values over all frames.
class FunctionSlidingWindow
    : public SignalFeatureWithParamAndMemoryAdaptorImpl<SlidingWindowFeature> {
public:
    FunctionSlidingWindow() : SignalFeatureWithParamAndMemoryAdaptorImpl("slidingWindow") {}

    void getParameterNames(std::vector<std::string>& out) override {
        out.push_back(featurePrefix<SignalFeature::SlidingWindow>() + "WindowSize");
    }
};

} // namespace Velmora::Math::Xpr
