#pragma once

#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "OptimizerKeyTable.h"

namespace Velmora::Math::Xpr {

/// The keys of the kinds of expressions, each from what it is made of.

/// A leaf is equal to itself only, whatever its value.
OptimizerKeyTable::Number insertLeafKey(OptimizerKeyTable& inout_Keys,
                                        const ExpressionBaseImpl& in_Leaf);

/// A variable without a value is equal to those of its name. (One with a value has the value's
/// key.)
OptimizerKeyTable::Number insertNameKey(OptimizerKeyTable& inout_Keys,
                                        const VariableImpl& in_Variable);

/// A function is equal to those of its name and parameters over children of the same keys.
OptimizerKeyTable::Number insertFunctionKey(OptimizerKeyTable& inout_Keys,
                                            const FunctionBaseImpl& in_Function,
                                            const OptimizerKeyTable::Numbers& in_vChilds);

} // namespace Velmora::Math::Xpr
