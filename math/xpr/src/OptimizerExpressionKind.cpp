#include "OptimizerExpressionKind.h"

#include <velmora/math/xpr/ConstantBase.h>
#include <velmora/math/xpr/DomainValueBase.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

namespace Velmora::Math::Xpr {

namespace {

template <class Kind>
bool is(const ExpressionBaseImpl& in_Expression) {
    return dynamic_cast<const Kind*>(&in_Expression) != nullptr;
}

OptimizerExpressionKind tell(const ExpressionBaseImpl& in_Expression) {
    if (is<FunctionBaseImpl>(in_Expression)) {
        return OptimizerExpressionKind::Function;
    }
    if (is<VariableImpl>(in_Expression)) {
        return OptimizerExpressionKind::Variable;
    }
    if (is<ConstantBase>(in_Expression)) {
        return OptimizerExpressionKind::Constant;
    }
    return is<DomainValueBase>(in_Expression) ? OptimizerExpressionKind::DomainValue
                                              : OptimizerExpressionKind::Unknown;
}

} // namespace

OptimizerExpressionKind OptimizerExpressionKinds::of(const ExpressionBaseImpl& in_Expression) {
    return m_Known.of(in_Expression, tell);
}

} // namespace Velmora::Math::Xpr
