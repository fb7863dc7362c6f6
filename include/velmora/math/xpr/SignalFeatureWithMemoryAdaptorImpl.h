#pragma once

#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorBaseImpl.h>

namespace Velmora::Math::Xpr {

/// A function of a signal feature with memory.
template <class T>
class VELMORA_EXPORT SignalFeatureWithMemoryAdaptorImpl
    : public SignalFeatureToFunctionAdaptorBaseImpl<T>,
      public NoParamFunctionImpl {
public:
    /// Scripts call it by that name.
    explicit SignalFeatureWithMemoryAdaptorImpl(const char* in_szFunctionName)
        : SignalFeatureToFunctionAdaptorBaseImpl<T>(in_szFunctionName) {}

    bool reset() override { return !this->m_pFeature.isNull() && this->m_pFeature->reset(); }
};

} // namespace Velmora::Math::Xpr
