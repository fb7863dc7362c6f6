#pragma once

#include <velmora/CountedObjPtr.h>

#include "OptimizerExpressionData.h"
#include "OptimizerExpressionKind.h"

namespace Velmora::Math::Xpr {

/// Where the data of an expression is found.
class OptimizerExpressionDataContainer {
public:
    OptimizerExpressionDataContainer() = default;
    OptimizerExpressionDataContainer(const OptimizerExpressionDataContainer&) {}
    OptimizerExpressionDataContainer& operator=(const OptimizerExpressionDataContainer&) {
        return *this;
    }
    virtual ~OptimizerExpressionDataContainer() = default;

    virtual CountedObjPtr<OptimizerExpressionData>& get(const Expression& in_Expression) = 0;

    /// The same without a cast.
    virtual CountedObjPtr<OptimizerExpressionData>& get(const ExpressionBaseImpl& in_Expression) {
        return get(static_cast<const Expression&>(in_Expression));
    }

    OptimizerKeyTable& getKeys() { return m_Keys; }
    OptimizerExpressionKinds& getKinds() { return m_Kinds; }

private:
    OptimizerKeyTable m_Keys;
    OptimizerExpressionKinds m_Kinds;
};

/// The container that makes data of class `T`.
template <class T>
class OptimizerExpressionDataContainerImpl : public virtual OptimizerExpressionDataContainer {
public:
    /// The caller owns the result.
    virtual OptimizerExpressionData* newData(OptimizerExpressionDataContainer& inout_Container,
                                             const Handle<ExpressionBaseImpl>& in_pExpression) {
        return new T(inout_Container, in_pExpression);
    }
};

} // namespace Velmora::Math::Xpr
