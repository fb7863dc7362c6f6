#pragma once

#include <velmora/CloneableObjPtr.h>
#include <velmora/math/xpr/SingleVariableFunctionImpl.h>

namespace Velmora::Math::Xpr {

/// What the functions that wrap a signal feature `T` share: a feature of their own, made by its
/// default constructor, and the argument "x".
///
/// A copy of the function owns a clone of the feature, configuration and memory included.
template <class T>
class VELMORA_EXPORT SignalFeatureToFunctionAdaptorBaseImpl : public SingleVariableFunctionImpl {
public:
    /// Scripts call it by that name.
    explicit SignalFeatureToFunctionAdaptorBaseImpl(const char* in_szFunctionName)
        : SingleVariableFunctionImpl(in_szFunctionName, "x"), m_pFeature(new T) {}

    /// What the feature makes of the argument.
    bool calculate(const ArgumentMap& in_ArgNameToDomain, DoubleVector& out) override {
        const DoubleVector* const pInput = findArgument(in_ArgNameToDomain);
        return pInput != nullptr && !m_pFeature.isNull() && m_pFeature->compute(*pInput, out);
    }

protected:
    /// Null only after a copy whose source had a feature that doesn't clone itself as a `T`.
    CloneableObjPtr<T> m_pFeature;
};

} // namespace Velmora::Math::Xpr
