#pragma once

#include "ScriptGraph.h"

#include <string>

namespace Vxpr {

/// The graph in the language of Graphviz, under a title. The same graph gives the same text.
std::string toGraphviz(const ScriptGraph& in_Graph, const std::string& in_strTitle);

} // namespace Vxpr
