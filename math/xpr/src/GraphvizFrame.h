#pragma once

#include <iosfwd>
#include <string>

namespace Velmora::Math::Xpr {

/// What the legend of a Graphviz file explains. A dictionary's leaves the parameter out.
enum class GraphvizLegend { WithParameter, WithoutParameter };

/// The opening of a Graphviz file.
void writeGraphvizHead(std::ostream& out_Stream);

/// The legend and the closing of a Graphviz file.
void writeGraphvizLegend(std::ostream& out_Stream, GraphvizLegend in_eLegend);

/// A Graphviz node name made of a name and an identifier: NAME_ID, with "_" for every character
/// that isn't an ASCII letter or digit, and a leading "_" unless the name starts with a letter.
void makeDotName(const char* in_szName, unsigned long in_ulId, std::string& out_strDotName);

} // namespace Velmora::Math::Xpr
