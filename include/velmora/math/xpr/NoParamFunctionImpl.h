#pragma once

#include <velmora/math/xpr/FunctionAdaptor.h>

namespace Velmora::Math::Xpr {

/// The answers of a function without parameters.
class VELMORA_EXPORT NoParamFunctionImpl : public virtual FunctionAdaptor {
public:
    /// Appends nothing.
    void getParameterNames(std::vector<std::string>&) override {}

    /// True; there is nothing to read.
    bool configure(const ROConfiguration&, const TSHandle<VirtualFileSystem>&) override {
        return true;
    }
};

} // namespace Velmora::Math::Xpr
