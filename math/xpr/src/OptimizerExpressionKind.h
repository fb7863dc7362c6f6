#pragma once

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "KindCache.h"

namespace Velmora::Math::Xpr {

/// What the optimizer tells apart.
enum class OptimizerExpressionKind { Function, Variable, Constant, DomainValue, Unknown };

/// Tells kinds of expressions.
class OptimizerExpressionKinds {
public:
    OptimizerExpressionKind of(const ExpressionBaseImpl& in_Expression);

private:
    KindCache<ExpressionBaseImpl, OptimizerExpressionKind> m_Known;
};

} // namespace Velmora::Math::Xpr
