#pragma once

#include <velmora/math/xpr/FunctionAdaptor.h>

namespace Velmora::Math::Xpr {

/// The answers of a function of one argument: its name and that of the argument.
class VELMORA_EXPORT SingleVariableFunctionImpl : public virtual FunctionAdaptor {
public:
    /// Copies both names.
    SingleVariableFunctionImpl(const char* in_szFunctionName, const char* in_szArgumentName)
        : m_strFunctionName(in_szFunctionName), m_strArgumentName(in_szArgumentName) {}

    const char* getFunctionName() const override { return m_strFunctionName.c_str(); }

    void getArgumentNames(std::vector<std::string>& out) override {
        out.push_back(m_strArgumentName);
    }

    /// The name of the argument.
    const std::string& argumentName() const { return m_strArgumentName; }

protected:
    /// The vector of the argument; null if there is none of that name.
    const DoubleVector* findArgument(const ArgumentMap& in_ArgNameToDomain) const {
        // Nearly always the argument is alone, and its name is one letter.
        const auto iteFirst = in_ArgNameToDomain.begin();
        const bool bFirst = iteFirst != in_ArgNameToDomain.end() && iteFirst->first.size() == 1 &&
                            m_strArgumentName.size() == 1 &&
                            iteFirst->first.front() == m_strArgumentName.front();
        return bFirst ? iteFirst->second.get() : searchArgument(in_ArgNameToDomain);
    }

    /// The vector of the first argument, whatever its name; null if there is none.
    static const DoubleVector* firstArgument(const ArgumentMap& in_ArgNameToDomain) {
        return in_ArgNameToDomain.empty() ? nullptr : in_ArgNameToDomain.begin()->second.get();
    }

private:
    [[gnu::noinline]] const DoubleVector*
    searchArgument(const ArgumentMap& in_ArgNameToDomain) const {
        const auto iteArgument = in_ArgNameToDomain.find(m_strArgumentName);
        return iteArgument == in_ArgNameToDomain.end() ? nullptr : iteArgument->second.get();
    }

    std::string m_strFunctionName;
    std::string m_strArgumentName;
};

} // namespace Velmora::Math::Xpr
