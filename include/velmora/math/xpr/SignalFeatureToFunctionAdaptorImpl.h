#pragma once

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/NoParamFunctionImpl.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorBaseImpl.h>

namespace Velmora::Math::Xpr {

/// A function of a plain signal feature.
template <class T>
class VELMORA_EXPORT SignalFeatureToFunctionAdaptorImpl
    : public SignalFeatureToFunctionAdaptorBaseImpl<T>,
      public NoParamFunctionImpl,
      public NoMemoryFunctionImpl {
public:
    /// Scripts call it by that name.
    explicit SignalFeatureToFunctionAdaptorImpl(const char* in_szFunctionName)
        : SignalFeatureToFunctionAdaptorBaseImpl<T>(in_szFunctionName) {}
};

} // namespace Velmora::Math::Xpr
