#pragma once

#include <cstddef>
#include <optional>

#include "ScriptIterator.h"

namespace Velmora::Math::Xpr {

/// Looks through a script for the statement with which it has more definitions and operands than
/// the limit, as far as its commas and equals signs tell: outside of comments and texts each stands
/// for one of them.
///
/// A list of millions takes seconds and a gigabyte until its nodes show that it is too long; its
/// commas are counted in no time.
std::optional<ScriptIterator> findOperandsBeyond(std::size_t in_uiLimit,
                                                 const ScriptIterator& in_First);

} // namespace Velmora::Math::Xpr
