#pragma once

#include <iosfwd>
#include <unordered_set>
#include <vector>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

namespace Velmora::Math::Xpr {

/// How the nodes below a written node come into a Graphviz text.
///
/// As a rule a node writes what stands below it in place, and a shared node comes once for each
/// path that leads to it; Graphviz merges that. In a graph with too many paths each node comes
/// once, behind what was being written, for as long as an object of this class lives on the thread:
/// the picture is the same.
class GraphvizNodes {
public:
    explicit GraphvizNodes(bool in_bInPlace);
    ~GraphvizNodes();
    GraphvizNodes(const GraphvizNodes&) = delete;
    GraphvizNodes& operator=(const GraphvizNodes&) = delete;

    /// What a node calls for each node below it.
    static void write(std::ostream& out_Stream, const ExpressionBaseImpl& in_Node);

    /// Writes the nodes that were put off, and those below them.
    void writePending(std::ostream& out_Stream);

private:
    GraphvizNodes* m_pOuter;
    bool m_bInPlace;
    std::vector<const ExpressionBaseImpl*> m_vPending;
    std::unordered_set<const ExpressionBaseImpl*> m_Seen;
};

} // namespace Velmora::Math::Xpr
