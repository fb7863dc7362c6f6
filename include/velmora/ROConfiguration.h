#pragma once

#include <velmora/Object.h>
#include <velmora/ParameterValue.h>

#include <string>

namespace Velmora {

/// A read-only map from parameter name to value.
///
/// Every getter returns true when the parameter is there with a fitting kind, and leaves its output
/// alone otherwise. A parameter with an empty value counts as not defined.
class VELMORA_EXPORT ROConfiguration : public virtual Object {
public:
    /// What the others read through.
    virtual bool getParameter(const char* in_szKey, ParameterValue& out_value) const = 0;

    /// Whether the parameter is there with a value.
    virtual bool parameterDefined(const char* in_szKey) const;

    /// Reads tag 2 only.
    virtual bool getIntParameter(const char* in_szKey, int& out_iValue) const;

    /// Reads an integer, zero being false, or one of the texts "true" and "false".
    virtual bool getBoolParameter(const char* in_szKey, bool& out_bValue) const;

    /// Reads tag 1 only.
    virtual bool getStringParameter(const char* in_szKey, std::string& out_strValue) const;

    /// Reads tag 5 only.
    virtual bool getFloatParameter(const char* in_szKey, float& out_fValue) const;
};

} // namespace Velmora
