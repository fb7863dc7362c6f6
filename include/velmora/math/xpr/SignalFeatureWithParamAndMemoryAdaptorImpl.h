#pragma once

#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorBaseImpl.h>

namespace Velmora::Math::Xpr {

/// A function of a signal feature with memory and parameters. The function that derives from it
/// lists the parameters.
template <class T>
class VELMORA_EXPORT SignalFeatureWithParamAndMemoryAdaptorImpl
    : public SignalFeatureToFunctionAdaptorBaseImpl<T> {
public:
    /// Scripts call it by that name.
    explicit SignalFeatureWithParamAndMemoryAdaptorImpl(const char* in_szFunctionName)
        : SignalFeatureToFunctionAdaptorBaseImpl<T>(in_szFunctionName) {}

    bool reset() override { return !this->m_pFeature.isNull() && this->m_pFeature->reset(); }

    /// The feature reads its parameters; it gets no file system.
    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>&) override {
        return !this->m_pFeature.isNull() && this->m_pFeature->configure(in_Configuration);
    }
};

} // namespace Velmora::Math::Xpr
