#pragma once

#include <velmora/math/xpr/ConstantBase.h>

namespace Velmora::Math::Xpr {

/// A constant that owns its vector.
class VELMORA_EXPORT ConstantImpl : public virtual Constant, public ConstantBase {
public:
    /// Copies the vector.
    explicit ConstantImpl(const DoubleVector& in_vValue);

    const DoubleVector& getValue() const override { return m_Value; }
    ConstantBase* createNew(const DoubleVector& in_vValue) const override;
    bool isConstant() const override { return true; }

private:
    DoubleVector m_Value;
};

} // namespace Velmora::Math::Xpr
