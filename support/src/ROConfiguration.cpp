#include <velmora/ROConfiguration.h>

namespace Velmora {

namespace {

bool readTagged(const ROConfiguration& in_configuration, const char* in_szKey, int in_iTag,
                ParameterValue& out_value) {
    return in_configuration.getParameter(in_szKey, out_value) && out_value.getTag() == in_iTag;
}

} // namespace

bool ROConfiguration::parameterDefined(const char* in_szKey) const {
    ParameterValue value;
    return getParameter(in_szKey, value) && !value.isEmpty();
}

bool ROConfiguration::getIntParameter(const char* in_szKey, int& out_iValue) const {
    ParameterValue value;
    if (!readTagged(*this, in_szKey, ParameterValue::IntTag, value)) {
        return false;
    }
    out_iValue = value;
    return true;
}

bool ROConfiguration::getBoolParameter(const char* in_szKey, bool& out_bValue) const {
    ParameterValue value;
    if (!getParameter(in_szKey, value)) {
        return false;
    }
    if (value.getTag() == ParameterValue::IntTag) {
        out_bValue = static_cast<int>(value) != 0;
        return true;
    }
    const bool bTrue = value == ParameterValue("true");
    if (!bTrue && value != ParameterValue("false")) {
        return false;
    }
    out_bValue = bTrue;
    return true;
}

bool ROConfiguration::getStringParameter(const char* in_szKey, std::string& out_strValue) const {
    ParameterValue value;
    if (!readTagged(*this, in_szKey, ParameterValue::StringTag, value)) {
        return false;
    }
    out_strValue = value.getString();
    return true;
}

bool ROConfiguration::getFloatParameter(const char* in_szKey, float& out_fValue) const {
    ParameterValue value;
    if (!readTagged(*this, in_szKey, ParameterValue::FloatTag, value)) {
        return false;
    }
    out_fValue = value;
    return true;
}

} // namespace Velmora
