#pragma once

#include <velmora/math/SignalFeature.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>

namespace Velmora::Math::Xpr {

/// A signal feature that is a built-in function by itself: a base for features of a host, which
/// implement `compute` and `clone`. One argument, "x"; no parameters; no memory.
class VELMORA_EXPORT SignalFeatureFunctionAdaptorImpl : public virtual SignalFeature,
                                                        public SingleVariableFunctionImpl {
public:
    /// Scripts call it by that name.
    explicit SignalFeatureFunctionAdaptorImpl(const char* in_szFunctionName)
        : SingleVariableFunctionImpl(in_szFunctionName, "x") {}

    bool reset() override { return true; }
    void getParameterNames(std::vector<std::string>&) override {}
    bool configure(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        return true;
    }

    /// What `compute` makes of the argument.
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector* const pInput = findArgument(in_ArgNameToDomain);
        return pInput != nullptr && compute(*pInput, out);
    }
};

} // namespace Velmora::Math::Xpr
