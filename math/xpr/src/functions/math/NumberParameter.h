#pragma once

#include <velmora/ParameterValue.h>
#include <velmora/ROConfiguration.h>

namespace Velmora::Math::Xpr {

/// Reads a parameter that may be an integer or a float. False for any other kind.
inline bool readNumber(const ROConfiguration& in_Configuration, const char* in_szKey,
                       double& out_dValue) {
    ParameterValue value;
    if (!in_Configuration.getParameter(in_szKey, value)) {
        return false;
    }
    switch (value.getTag()) {
    case ParameterValue::IntTag:
        out_dValue = static_cast<double>(static_cast<int>(value));
        return true;
    case ParameterValue::FloatTag:
        out_dValue = static_cast<double>(static_cast<float>(value));
        return true;
    default:
        return false;
    }
}

} // namespace Velmora::Math::Xpr
