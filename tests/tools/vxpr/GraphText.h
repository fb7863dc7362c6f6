#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace Vxpr::TestSupport {

/// A graph in the language of Graphviz, as `vxpr graph` writes it.
struct GraphText {
    explicit GraphText(const std::string& in_strText);

    /// The texts of the nodes, sorted: their lines with " | " between, without markup.
    std::vector<std::string> getLabels() const;

    /// The attributes of the node of that text; empty if there isn't exactly one.
    std::string getAttributes(const std::string& in_strLabel) const;

    /// What the nodes of that text read: ROLE=TEXT of each source, in the order written.
    std::vector<std::string> getSources(const std::string& in_strLabel) const;

    std::map<std::string, std::string> m_mapLabels; ///< by the nodes' identifiers
    std::map<std::string, std::string> m_mapAttributes;
    struct Edge {
        std::string m_strFrom;
        std::string m_strTo;
        std::string m_strRole;
    };
    std::vector<Edge> m_vEdges;
};

} // namespace Vxpr::TestSupport
