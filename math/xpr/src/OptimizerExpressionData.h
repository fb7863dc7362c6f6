#pragma once

#include <cstddef>
#include <string>

#include <velmora/Handle.h>
#include <velmora/Object.h>
#include <velmora/OutputStreamable.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "OptimizerKeyTable.h"

namespace Velmora::Math::Xpr {

/// What the optimizer knows of one expression: the key, which is equal for expressions that compute
/// the same thing, and the complexity.
class OptimizerExpressionData : public virtual Object, public virtual OutputStreamable {
public:
    virtual bool operator==(const OptimizerExpressionData& in_Other) const = 0;
    virtual bool operator!=(const OptimizerExpressionData& in_Other) const = 0;

    /// The nodes of the expression's tree, a shared node once for each path.
    virtual unsigned long getComplexity() const = 0;

    /// The canonical text of the expression as it was when the key was first asked for.
    virtual const std::string& key() const = 0;

    virtual std::size_t hash() const = 0;

    virtual bool isValid() const = 0;

    /// Takes the expression out, unless a parent is still in; then what was held by it alone.
    virtual void invalidate() = 0;

    virtual const Handle<ExpressionBaseImpl>& getExpression() const = 0;

    /// The number of the key: equal exactly for equal keys.
    virtual OptimizerKeyTable::Number getKeyNumber() const = 0;
};

} // namespace Velmora::Math::Xpr
