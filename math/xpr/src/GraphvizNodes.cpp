#include "GraphvizNodes.h"

#include <ostream>

namespace Velmora::Math::Xpr {

namespace {

thread_local GraphvizNodes* t_pNodes = nullptr;

} // namespace

GraphvizNodes::GraphvizNodes(bool in_bInPlace) : m_pOuter(t_pNodes), m_bInPlace(in_bInPlace) {
    t_pNodes = this;
}

GraphvizNodes::~GraphvizNodes() {
    t_pNodes = m_pOuter;
}

void GraphvizNodes::write(std::ostream& out_Stream, const ExpressionBaseImpl& in_Node) {
    if (t_pNodes == nullptr || t_pNodes->m_bInPlace) {
        out_Stream << in_Node;
    } else if (t_pNodes->m_Seen.insert(&in_Node).second) {
        t_pNodes->m_vPending.push_back(&in_Node);
    }
}

void GraphvizNodes::writePending(std::ostream& out_Stream) {
    for (std::size_t uiNode = 0; uiNode != m_vPending.size(); ++uiNode) {
        out_Stream << *m_vPending[uiNode];
    }
}

} // namespace Velmora::Math::Xpr
