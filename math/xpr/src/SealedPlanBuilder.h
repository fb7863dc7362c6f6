#pragma once

#include <vector>

#include "GraphWalk.h"
#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// Puts a plan together.
class SealedPlan::Builder {
public:
    explicit Builder(SealedPlan& out_Plan) : m_Plan(out_Plan) {}

    void build(const Nodes& in_vRoots);

    /// The place of a node in the list; `PassedOver` if it has none.
    Index find(const ExpressionBaseImpl& in_Node) const;

    /// For each input of the graph, what reads it. None at all if a node chooses what it reads:
    /// what its unused branch reads doesn't reach it.
    void buildReaders();

    /// Of one node at least.
    static NodeSet makeSet(std::vector<Index> in_vNodes);

private:
    struct Place {
        ExpressionBaseImpl* m_pNode;
        /// Its inputs, which are the last ones when it is appended.
        std::size_t m_uiInputs;
        std::size_t m_uiInputsEnd;
        std::size_t m_uiNext;
        Kind m_eKind;
        /// Is it known what the node reads?
        bool m_bKnown;
    };

    void enter(ExpressionBaseImpl& in_Node);
    void advance();
    void append(const Place& in_Place);
    static bool isDerived(ExpressionBaseImpl& in_Node);
    static Kind kindOf(const ExpressionBaseImpl& in_Node);
    static bool seesVectors(const ExpressionBaseImpl& in_Node);
    void appendHanded(Index in_uiInput);
    void listReaders();
    std::vector<Index> listAllReaders(Index in_uiNode) const;
    static NodeSet makeSparseSet(std::vector<Index> in_vNodes);
    static NodeSet makeDenseSet(const std::vector<Index>& in_vNodes, std::size_t in_uiFirst,
                                std::size_t in_uiCount);
    static Flags flagOf(Index in_uiNode) { return Flags(1) << (in_uiNode % FlagsPerWord * 8); }
    static void spread(NodeSet& inout_Set);

    SealedPlan& m_Plan;
    const GraphWalk m_Walk;
    std::vector<Place> m_vPath;
    /// Of the nodes on the path, and of the one that is entered.
    Nodes m_vInputs;
    Nodes m_vInputsOfNode;
    std::vector<Index> m_vReaders;
    std::vector<Index> m_vReadersBegin;
};

} // namespace Velmora::Math::Xpr
