#pragma once

#include <typeindex>
#include <unordered_map>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

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

/// Tells kinds of nodes, with the checked casts made once for each class and not for each node.
class NodeKinds {
public:
    NodeKind of(const ExpressionBaseImpl& in_Node);

private:
    std::unordered_map<std::type_index, NodeKind> m_mapKinds;
};

} // namespace Velmora::Math::Xpr
