#include <velmora/math/xpr/ConstantImpl.h>

namespace Velmora::Math::Xpr {

ConstantImpl::ConstantImpl(const DoubleVector& in_vValue) : m_Value(in_vValue) {}

ConstantBase* ConstantImpl::createNew(const DoubleVector& in_vValue) const {
    return new ConstantImpl(in_vValue);
}

} // namespace Velmora::Math::Xpr
