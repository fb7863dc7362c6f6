#pragma once

#include <velmora/math/xpr/FunctionAdaptor.h>

namespace Velmora::Math::Xpr {

/// The answer of a function of one parameter: the parameter's name.
class VELMORA_EXPORT SingleParameterFunctionImpl : public virtual FunctionAdaptor {
public:
    /// Copies the name.
    explicit SingleParameterFunctionImpl(const char* in_szParameterName)
        : m_strParameterName(in_szParameterName) {}

    void getParameterNames(std::vector<std::string>& out) override {
        out.push_back(m_strParameterName);
    }

    /// The name of the parameter.
    const std::string& parameterName() const { return m_strParameterName; }

private:
    std::string m_strParameterName;
};

} // namespace Velmora::Math::Xpr
