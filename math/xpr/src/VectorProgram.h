#pragma once

#include <cstddef>
#include <vector>

#include <velmora/math/ScaledSum.h>

#include "ReductionGroup.h"
#include "SealedPlan.h"

namespace Velmora::Math::Xpr {

/// What a set of nodes computes in frames that are alike, with operations on vectors joined that
/// one pass over the frame can do.
///
/// An operator reads its sides from memory and writes its result there, and the next one reads it
/// again. Most of the time goes that way, and not in the arithmetic. A sum of scaled vectors, which
/// scripts are full of, is computed in one pass that leaves the result of every operator in its
/// place: the same numbers and flags as those of the nodes one by one.
///
/// A joint is taken where its operands have the shapes that they had when the program was made. The
/// nodes are computed one by one where they haven't.
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
    /// An operator of a joint, where its result stands, and what it scales by if it does. Not every
    /// joint has all of them.
    struct Part {
        Index m_uiNode = PassedOver;
        Step* m_pStep = nullptr;
        DoubleVector* m_pResult = nullptr;
        const Step* m_pFactor = nullptr;

        explicit operator bool() const { return m_pStep != nullptr; }
    };

    /// An operator that scales, what it reads, and where the value of that comes from.
    struct Scaling {
        Part m_Part;
        const Step* m_pVector = nullptr;
        const Step* m_pSource = nullptr;
    };

    /// Operators that one pass computes, and the vectors that they read.
    struct Joint {
        const Step* m_pLeft = nullptr;
        const Step* m_pRight = nullptr;
        Part m_ScaledLeft;
        Part m_ScaledRight;
        Part m_Sum;
        Part m_Behind;
        ScaledSum m_Operation{ScaledSum::Form()};
    };

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
    std::size_t findJoint(SealedPlan& inout_Plan, std::size_t in_uiFirst, Joint& out_Joint) const;
    bool findSum(SealedPlan& inout_Plan, std::size_t in_uiFirst, std::size_t in_uiScaled,
                 Joint& out_Joint) const;
    Scaling findScaling(SealedPlan& inout_Plan, std::size_t in_uiPlace) const;
    static Part makePart(SealedPlan& inout_Plan, Index in_uiNode, const Step* in_pFactor);
    static Step& sourceOf(SealedPlan& inout_Plan, Index in_uiNode);
    static bool computeNode(SealedPlan& inout_Plan, const Item& in_Item);
    Index computeAlone(SealedPlan& inout_Plan) const;
    Index computeAmongOthers(SealedPlan& inout_Plan) const;
    Index computeSeveral(SealedPlan& inout_Plan, const Item& in_Item) const;
    Index computeSeveralAmongOthers(SealedPlan& inout_Plan, const Item& in_Item) const;
    static bool isBegun(const SealedPlan& in_Plan, const Joint& in_Joint);
    static Index computeOneByOne(SealedPlan& inout_Plan, const Joint& in_Joint);
    static bool computeJoint(SealedPlan& inout_Plan, const Joint& in_Joint);
    static bool take(const Part& in_Part, std::size_t in_uiCount, double*& out_pResult);
    static bool takeFactor(const Part& in_Part, double& out_dFactor);
    static void note(SealedPlan& inout_Plan, const Part& in_Part);

    std::vector<Ahead> m_vAhead;
    std::vector<Item> m_vItems;
    std::vector<Joint> m_vJoints;
    std::vector<ReductionGroup> m_vGroups;
    /// Are there other nodes than operators and what they read?
    bool m_bOthers = false;
    /// Operators that wait for others to be joined with, while the program is made.
    std::vector<Index> m_vPending;
    /// Variables that wait for an operator's value.
    std::vector<Index> m_vBehind;
};

} // namespace Velmora::Math::Xpr
