#pragma once

#include <velmora/ROConfiguration.h>

#include <functional>
#include <map>
#include <string>

namespace Velmora {

/// The configuration that can be written: a short-lived object, filled and then passed on as a
/// `ROConfiguration`.
class VELMORA_EXPORT ParameterTrie : public ROConfiguration {
public:
    ParameterTrie();
    ParameterTrie(const ParameterTrie&) = default;
    ParameterTrie& operator=(const ParameterTrie&) = default;
    ~ParameterTrie() override;

    bool getParameter(const char* in_szKey, ParameterValue& out_value) const override;

    /// Stores the value in place of an earlier one. False for a null key only; an empty value is
    /// stored and makes the parameter undefined.
    virtual bool setParameter(const char* in_szKey, const ParameterValue& in_value);

private:
    std::map<std::string, ParameterValue, std::less<>> m_mapParameters;
};

} // namespace Velmora
