#pragma once

#include <velmora/IDGenerator.h>

namespace Velmora::Math::Xpr {

/// The process's generators of identifiers. Expressions and parameters are numbered independently.
IDGenerator& expressionIdGenerator();
IDGenerator& parameterIdGenerator();

} // namespace Velmora::Math::Xpr
