#pragma once

#include <algorithm>
#include <cstddef>
#include <unordered_set>
#include <vector>

namespace Velmora::Math::Xpr {

class ExpressionBaseImpl;

/// The nodes of an upward walk, each once, in the order in which they were added.
class AncestorWalk {
public:
    explicit AncestorWalk(const ExpressionBaseImpl& in_Start) { add(in_Start); }

    void add(const ExpressionBaseImpl& in_Node) {
        if (isNew(&in_Node)) {
            m_vNodes.push_back(&in_Node);
        }
    }

    /// Null behind the last.
    const ExpressionBaseImpl* next() {
        return m_uiNext == m_vNodes.size() ? nullptr : m_vNodes[m_uiNext++];
    }

private:
    /// Most walks are a few nodes long, and a search through them beats a table.
    static constexpr std::size_t SearchLimit = 16;

    bool isNew(const ExpressionBaseImpl* in_pNode) {
        if (m_vNodes.size() < SearchLimit) {
            return std::find(m_vNodes.begin(), m_vNodes.end(), in_pNode) == m_vNodes.end();
        }
        if (m_Seen.empty()) {
            m_Seen.insert(m_vNodes.begin(), m_vNodes.end());
        }
        return m_Seen.insert(in_pNode).second;
    }

    std::vector<const ExpressionBaseImpl*> m_vNodes;
    std::size_t m_uiNext = 0;
    std::unordered_set<const ExpressionBaseImpl*> m_Seen;
};

} // namespace Velmora::Math::Xpr
