#pragma once

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "KindCache.h"

namespace Velmora::Math::Xpr {

/// What the resolver tells apart.
enum class NodeKind {
    UnknownFunction,
    UnknownVariable,
    Function,
    Argument,
    Variable,
    Constant,
    DomainValue,
    Other
};

inline bool isFunction(NodeKind in_Kind) {
    return in_Kind == NodeKind::Function || in_Kind == NodeKind::UnknownFunction;
}

inline bool isVariable(NodeKind in_Kind) {
    return in_Kind == NodeKind::Variable || in_Kind == NodeKind::Argument ||
           in_Kind == NodeKind::UnknownVariable;
}

/// Tells kinds of nodes.
class NodeKinds {
public:
    NodeKind of(const ExpressionBaseImpl& in_Node);

private:
    KindCache<ExpressionBaseImpl, NodeKind> m_Known;
};

} // namespace Velmora::Math::Xpr
