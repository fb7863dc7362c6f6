#pragma once

#include <string>

#include <velmora/StringUtil.h>
#include <velmora/math/SignalFeature.h>

namespace Velmora::Math::Xpr {

/// What the parameter keys of a feature begin with: the name of its type in lower case, and ".".
/// Built at the first call.
template <SignalFeature::FeatureType Type>
const std::string& featurePrefix() {
    static const std::string s_strPrefix =
        strToLower(SignalFeature::getFeatureTypeString(Type)) + ".";
    return s_strPrefix;
}

} // namespace Velmora::Math::Xpr
