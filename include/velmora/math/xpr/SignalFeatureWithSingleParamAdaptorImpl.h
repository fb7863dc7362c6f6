#pragma once

#include <velmora/math/xpr/NoMemoryFunctionImpl.h>
#include <velmora/math/xpr/SignalFeatureToFunctionAdaptorBaseImpl.h>
#include <velmora/math/xpr/SingleParameterFunctionImpl.h>

namespace Velmora::Math::Xpr {

/// A function of a signal feature with one parameter.
template <class T>
class VELMORA_EXPORT SignalFeatureWithSingleParamAdaptorImpl
    : public SignalFeatureToFunctionAdaptorBaseImpl<T>,
      public SingleParameterFunctionImpl,
      public NoMemoryFunctionImpl {
public:
    /// Scripts call it by the first name; its parameter bears the second.
    SignalFeatureWithSingleParamAdaptorImpl(const char* in_szFunctionName,
                                            const char* in_szParameterName)
        : SignalFeatureToFunctionAdaptorBaseImpl<T>(in_szFunctionName),
          SingleParameterFunctionImpl(in_szParameterName) {}

    /// The feature reads its parameter; it gets no file system.
    bool configure(const ROConfiguration& in_Configuration,
                   const TSHandle<VirtualFileSystem>&) override {
        return !this->m_pFeature.isNull() && this->m_pFeature->configure(in_Configuration);
    }
};

} // namespace Velmora::Math::Xpr
