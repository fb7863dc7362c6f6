#include "NodeKind.h"

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/Constant.h>
#include <velmora/math/xpr/DomainValue.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/Variable.h>

#include "UnknownFunction.h"
#include "UnknownVariable.h"

namespace Velmora::Math::Xpr {

namespace {

template <class T>
bool isA(const ExpressionBaseImpl& in_Node) {
    return dynamic_cast<const T*>(&in_Node) != nullptr;
}

NodeKind tell(const ExpressionBaseImpl& in_Node) {
    if (isA<UnknownFunction>(in_Node)) {
        return NodeKind::UnknownFunction;
    }
    if (isA<UnknownVariable>(in_Node)) {
        return NodeKind::UnknownVariable;
    }
    if (isA<Function>(in_Node)) {
        return NodeKind::Function;
    }
    if (isA<Argument>(in_Node)) {
        return NodeKind::Argument;
    }
    if (isA<Variable>(in_Node)) {
        return NodeKind::Variable;
    }
    if (isA<Constant>(in_Node)) {
        return NodeKind::Constant;
    }
    return isA<DomainValue>(in_Node) ? NodeKind::DomainValue : NodeKind::Other;
}

} // namespace

NodeKind NodeKinds::of(const ExpressionBaseImpl& in_Node) {
    return m_Known.of(in_Node, tell);
}

} // namespace Velmora::Math::Xpr
