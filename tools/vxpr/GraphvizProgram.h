#pragma once

#include <string>

namespace Vxpr {

/// The program `dot` of Graphviz, which draws graphs. It is searched on the PATH and run without a
/// shell; nothing of vxpr needs it but pictures.
class GraphvizProgram {
public:
    /// Draws a graph in a format that `dot` knows, such as `svg`. Throws a Failure that says what
    /// to do if the program isn't there or fails.
    static std::string draw(const std::string& in_strGraph, const std::string& in_strFormat);
};

} // namespace Vxpr
