#pragma once

#include <cstddef>
#include <vector>

#include "ReductionGroup.h"
#include "SealedPlan.h"
#include "SumJoint.h"

namespace Velmora::Math::Xpr {

/// What a set of nodes computes in frames that are alike, with operations on vectors joined that
/// one pass over the frame can do.
///
/// An operator reads its sides from memory and writes its result there, and the next one reads it
/// again. Most of the time goes that way, and not in the arithmetic. A sum of scaled vectors, which
/// scripts are full of, is computed in one pass that leaves the result of every operator in its
/// place: the same numbers and flags as those of the nodes one by one.
///
/// Where the operands of such a sum haven't the shapes that they had when the program was made, the
/// nodes are computed one by one.
class SealedPlan::VectorProgram {
public:
    /// Makes room for the program of a set, so that nothing allocates later.
    void reserve(const SealedPlan& in_Plan, const Needs& in_Needs);

    /// Makes the program for what wasn't valid when the plan last remembered the set's flags, and
    /// has been computed since.
    void make(SealedPlan& inout_Plan, const Needs& in_Needs);

    /// Computes the set. Returns the node that failed, or `PassedOver`.
    Index run(SealedPlan& inout_Plan) const;

private:
    /// A node and, where it passes a value on or computes with two, those that have them; or the
    /// number of a joint, or of a group of reductions.
    struct Item {
        Index m_uiNode = PassedOver;
        Index m_uiJoint = PassedOver;
        Index m_uiGroup = PassedOver;
        Step* m_pStep = nullptr;
        const Step* m_pFirst = nullptr;
        const Step* m_pSecond = nullptr;
        /// As many items from this one on may be computed together.
        std::size_t m_uiTogether = 1;
    };

    /// An input of the graph, or a variable that passes on the value of one, or what is valid as
    /// the frame begins.
    struct Ahead {
        Index m_uiNode;
        Step* m_pStep;
        /// Null for an input.
        const Step* m_pSource;
    };

    static bool isKnownAhead(SealedPlan& inout_Plan, Index in_uiNode);
    void appendAhead(SealedPlan& inout_Plan, Index in_uiNode);
    void computeAhead(SealedPlan& inout_Plan) const;
    void appendNode(SealedPlan& inout_Plan, Index in_uiNode);
    void appendReduction(SealedPlan& inout_Plan, Index in_uiNode);
    void flush(SealedPlan& inout_Plan);
    void findTogether(const SealedPlan& in_Plan);
    static bool computeTogether(SealedPlan& inout_Plan, const Item* in_pFirst);
    static bool computeNode(SealedPlan& inout_Plan, const Item& in_Item);
    Index computeAlone(SealedPlan& inout_Plan) const;
    Index computeAmongOthers(SealedPlan& inout_Plan) const;
    Index computeSeveral(SealedPlan& inout_Plan, const Item& in_Item) const;
    Index computeSeveralAmongOthers(SealedPlan& inout_Plan, const Item& in_Item) const;

    std::vector<Ahead> m_vAhead;
    std::vector<Item> m_vItems;
    std::vector<SumJoint> m_vJoints;
    std::vector<ReductionGroup> m_vGroups;
    /// Are there other nodes than operators and what they read?
    bool m_bOthers = false;
    /// Operators that wait for others to be joined with, while the program is made.
    std::vector<Index> m_vPending;
    /// Variables that wait for an operator's value.
    std::vector<Index> m_vBehind;
};

} // namespace Velmora::Math::Xpr
