#pragma once

#include <gtest/gtest.h>

#include <velmora/Handle.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Expression.h>

namespace Velmora::Testing {

/// Has every value on the way succeeded so far? A variable or a function whose value failed is
/// valid although what it reads isn't.
enum class Evaluations { Succeeded, MayHaveFailed };

/// What is true of a graph at every stage:
/// - it has no cycle, and no child is null;
/// - each child lists a parent once for each link; only an operator stands there more often, once
///   for each time that it was sealed onto the child;
/// - each parent in a list has the node as a child, or is an operator;
/// - a valid node has only valid inputs on the way on which it reads them.
///
/// The failure names the nodes and the rule that is broken.
::testing::AssertionResult checkInvariants(const Handle<Math::Xpr::Expression>& in_pRoot,
                                           Evaluations in_Evaluations = Evaluations::Succeeded);
::testing::AssertionResult checkInvariants(const Math::Xpr::Dictionnary& in_Dictionnary,
                                           Evaluations in_Evaluations = Evaluations::Succeeded);

/// Nothing below the entries stands for a name that is still to be found.
::testing::AssertionResult checkLinked(const Math::Xpr::Dictionnary& in_Dictionnary);

} // namespace Velmora::Testing
