#include "FeatureParameters.h"

#include <velmora/ParameterValue.h>
#include <velmora/StringUtil.h>

#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>
#include <utility>

namespace Velmora::Math {

namespace {

bool isSeparator(char in_cCharacter) {
    return in_cCharacter == ',' || std::strchr(" \t\r\n\v\f", in_cCharacter) != nullptr;
}

bool numberOf(const ParameterValue& in_value, double& out_dNumber) {
    switch (in_value.getTag()) {
    case ParameterValue::IntTag:
        out_dNumber = static_cast<int>(in_value);
        return true;
    case ParameterValue::FloatTag:
        out_dNumber = static_cast<double>(static_cast<float>(in_value));
        return true;
    default:
        return false;
    }
}

bool numbersOf(const char* in_szText, DoubleVector& out_vNumbers) {
    const char* const end = in_szText + std::strlen(in_szText);
    const char* position = in_szText;
    while (position != end) {
        if (isSeparator(*position)) {
            ++position;
            continue;
        }
        if (*position == '+' && position + 1 != end && position[1] != '-') {
            ++position;
        }
        double number = 0.0;
        const auto [behind, error] = std::from_chars(position, end, number);
        if (error != std::errc() || (behind != end && !isSeparator(*behind))) {
            return false;
        }
        out_vNumbers.push_back(number);
        position = behind;
    }
    return true;
}

} // namespace

std::string featureParameterKey(SignalFeature::FeatureType in_type, const char* in_szName) {
    return strToLower(SignalFeature::getFeatureTypeString(in_type)) + "." + in_szName;
}

bool readSize(const ROConfiguration& in_config, const std::string& in_strKey,
              std::size_t& inout_uiSize) {
    if (!in_config.parameterDefined(in_strKey.c_str())) {
        return true;
    }
    int size = 0;
    if (!in_config.getIntParameter(in_strKey.c_str(), size) || size <= 0) {
        return false;
    }
    inout_uiSize = static_cast<std::size_t>(size);
    return true;
}

bool readFrameCount(const ROConfiguration& in_config, const std::string& in_strKey,
                    std::size_t& inout_uiCount) {
    if (!in_config.parameterDefined(in_strKey.c_str())) {
        return true;
    }
    int count = 0;
    if (!in_config.getIntParameter(in_strKey.c_str(), count) || count < 0) {
        return false;
    }
    inout_uiCount = count == 0 ? 1 : static_cast<std::size_t>(count);
    return true;
}

bool readFlag(const ROConfiguration& in_config, const std::string& in_strKey, bool& inout_bFlag) {
    return !in_config.parameterDefined(in_strKey.c_str()) ||
           in_config.getBoolParameter(in_strKey.c_str(), inout_bFlag);
}

bool readRate(const ROConfiguration& in_config, const std::string& in_strKey, double& inout_dRate) {
    if (!in_config.parameterDefined(in_strKey.c_str())) {
        return true;
    }
    ParameterValue value;
    double rate = 0.0;
    if (!in_config.getParameter(in_strKey.c_str(), value) || !numberOf(value, rate) ||
        !(rate > 0.0) || !std::isfinite(rate)) {
        return false;
    }
    inout_dRate = rate;
    return true;
}

bool readNumbers(const ROConfiguration& in_config, const std::string& in_strKey,
                 DoubleVector& inout_vNumbers) {
    if (!in_config.parameterDefined(in_strKey.c_str())) {
        return true;
    }
    ParameterValue value;
    if (!in_config.getParameter(in_strKey.c_str(), value)) {
        return false;
    }
    DoubleVector numbers;
    double number = 0.0;
    if (numberOf(value, number)) {
        numbers.push_back(number);
    } else if (value.getTag() != ParameterValue::StringTag ||
               !numbersOf(value.getString(), numbers)) {
        return false;
    }
    inout_vNumbers = std::move(numbers);
    return true;
}

} // namespace Velmora::Math
