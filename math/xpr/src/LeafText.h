#pragma once

#include <iosfwd>
#include <string>

#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// The generated name of a constant or a domain value: its word, "_" and the text of its value.
std::string makeLeafName(const char* in_szWord, const DoubleVector& in_vValue);

/// The Graphviz statement of a constant or a domain value: shows at most two elements. Throws
/// std::out_of_range for an empty value.
std::ostream& writeLeaf(std::ostream& out_Stream, const ExpressionBaseImpl& in_Leaf,
                        const char* in_szWord, const DoubleVector& in_vValue);

} // namespace Velmora::Math::Xpr
