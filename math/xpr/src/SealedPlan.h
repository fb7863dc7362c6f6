#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <velmora/math/DoubleVector.h>
#include <velmora/math/Reductions.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "FailedTries.h"

namespace Velmora::Math::Xpr {

class BinaryOperatorImplNoT;

/// The short way of a frame through a sealed graph.
///
/// A sealed graph is described by recursion: an invalid node asks the nodes that it reads, and an
/// invalidation climbs from parent to parent. Both walks jump from node to node through memory. The
/// plan has the same nodes in one list, each behind all that it reads, in the order in which the
/// recursion would come to them, and it keeps their validity flags side by side:
/// - an evaluation runs down the list and computes what is invalid and needed, several flags a
/// look;
/// - a new input clears, in one sweep, the flags of everything that reads it.
///
/// The results are those of the recursion, flag for flag, as long as every valid node has read
/// valid nodes only. A node that fails breaks that: its reader goes on with the value of an earlier
/// frame and becomes valid above a node that isn't. From then on the plan steps aside, and the
/// recursion does the work, until all is well again. It steps aside for good when the structure
/// changes after sealing. What stands above a node that chooses what it reads, or that isn't known,
/// is left to the recursion; in such a graph invalidation climbs as well.
class SealedPlan {
public:
    using Nodes = std::vector<ExpressionBaseImpl*>;
    using Index = std::uint32_t;

    SealedPlan();
    ~SealedPlan();
    SealedPlan(const SealedPlan&) = delete;
    SealedPlan& operator=(const SealedPlan&) = delete;

    /// The index of a node that the plan passes over: an argument that operators read past.
    static constexpr Index PassedOver = UINT32_MAX;

    /// Stands for the node that failed where nothing did, but the graph has changed on the way.
    static constexpr Index Disturbed = PassedOver - 1;

    /// Have the nodes sealed their lists of parents yet?
    enum class Parents { Sealed, Complete };

    /// Makes a plan for the graphs below the roots, which have just been sealed, and gives it to
    /// their nodes, which are all listed. Nodes that had a plan leave it.
    static void make(const Nodes& in_vRoots, const Nodes& in_vNodes, Parents in_eParents);

    /// The flag of a node, which lives here as long as the node has the plan.
    std::uint8_t* flagOf(Index in_uiNode) {
        return reinterpret_cast<std::uint8_t*>(m_vValid.data()) + in_uiNode;
    }

    /// Computes the node and what it needs. False if the plan can't, or came to a node that failed;
    /// the caller takes the long way then, which finds valid what was computed ahead of that.
    /// `out_bSuccess` is what the evaluation returns.
    bool evaluate(Index in_uiNode, bool& out_bSuccess);

    /// Computes a variable that is one operation on scalars, as features are that scale a common
    /// one. False, and nothing has happened, for all else.
    bool computeOne(Index in_uiNode);

    /// Clears the flag of the node and of all that reads it. False, and no flag has changed, if the
    /// plan can't: a node of the host's that does it while it is computed may have changed what was
    /// computed before, and the long way goes on.
    bool invalidate(Index in_uiNode);

    /// A node has just failed. Where an evaluation goes on around the one that came to it, its
    /// readers needn't be computed any more: one may have become valid above the failure.
    /// `in_uiOwn` is the number of the plan's evaluations that know of it, one for the plan itself.
    void noteFailure(std::size_t in_uiOwn = 0) {
        leave();
        m_bIntact = false;
        m_bDisturbed = m_bDisturbed || m_uiRunning > in_uiOwn;
    }

    /// A node that the plan passes over has been evaluated: it must be told of changes too.
    void noteForeignValue() { noteChange(); }

    /// Links have changed: what the plan knows of them is out of date.
    void noteChange() {
        leave();
        m_bUsable = false;
        m_bDisturbed = m_uiRunning != 0;
    }

    /// The node is dying. Nothing that lives needs it, and nothing is asked of its flag.
    void noteDeath(Index in_uiNode) {
        m_vNodes[in_uiNode] = nullptr;
        *flagOf(in_uiNode) = 0;
    }

    /// Goes on as long as the long way computes a node. Holds the plan, whose nodes a host may give
    /// another one meanwhile.
    class LongWay {
    public:
        explicit LongWay(SealedPlan& inout_Plan) : m_pPlan(&inout_Plan) { ++m_pPlan->m_uiLongWays; }
        ~LongWay() {
            if (--m_pPlan->m_uiLongWays == 0) {
                // Neither is of the next evaluation, even if no reader has asked for the failure.
                m_pPlan->m_uiFailed = PassedOver;
                m_pPlan->m_FailedTries.forget();
            }
        }
        LongWay(const LongWay&) = delete;
        LongWay& operator=(const LongWay&) = delete;

    private:
        const boost::intrusive_ptr<SealedPlan> m_pPlan;
    };

    /// What has failed since the outermost long way began.
    FailedTries& failedTries() { return m_FailedTries; }

    /// The long way has computed this node. Looks, now and then, whether all is well again.
    void noteLongWay(Index in_uiNode);

    /// Is this the node whose failure made the plan hand over to the long way? True once: the
    /// reader that asks first is the one for which the node was computed.
    bool takeFailure(Index in_uiNode) {
        const bool bFailed = m_uiFailed == in_uiNode;
        if (bFailed) {
            m_uiFailed = PassedOver;
        }
        return bFailed;
    }

private:
    friend void intrusive_ptr_add_ref(SealedPlan* inout_pPlan) noexcept;
    friend void intrusive_ptr_release(SealedPlan* inout_pPlan) noexcept;

    enum class Kind : std::uint8_t {
        Plus,
        Minus,
        Multiply,
        Divide,
        Forward,
        Constant,
        Input,
        Concatenate,
        Reduce,
        Other
    };

    /// One place of the list: what is computed there, and what came out last.
    ///
    /// The results of all places are looked up here, and not in the nodes, which lie too far apart:
    /// a frame of scalars touches the list and the numbers and nothing else.
    struct Step {
        /// The node's cached pointer once more.
        const DoubleVector* m_pVector = nullptr;
        /// The only element of an operator's result or of a constant; null if it has another size.
        double* m_pScalar = nullptr;
        /// What the node reads, for an operator and for a node that passes a value on.
        Index m_uiFirst = PassedOver;
        Index m_uiSecond = PassedOver;
        Kind m_eKind = Kind::Other;
        /// For one that reduces its only input.
        Reductions::Kind m_eReduction{};
        /// Is the way to this node, from all that it needs, one of the plan's?
        bool m_bPlanned = false;
        /// Does the operator lack the pointers that it would have read through?
        bool m_bAhead = false;
        /// Is this a planned variable whose value is a sum, difference or product, the step before?
        bool m_bOneOperation = false;
        /// Evaluations during which nobody looks whether all that isn't valid is near this node.
        std::uint8_t m_uiFar = 0;
    };

    /// Where a program finds the element of a node, and how many operations it is away from what
    /// the program doesn't compute.
    struct Source {
        const double* m_pElement = nullptr;
        Index m_uiDistance = 0;
    };

    /// Eight flags, a byte each, the first in the lowest.
    using Flags = std::uint64_t;
    static constexpr std::size_t FlagsPerWord = 8;

    /// The flags of some nodes that stand side by side.
    struct Word {
        Flags m_Flags;
        std::size_t m_uiPlace;
    };

    /// A set of nodes, in the order of the list.
    struct NodeSet {
        std::vector<Word> m_vWords;
        /// Where the words are close together, what stays of those from a place on when the nodes
        /// are taken out, in whole blocks: many words are cleared at once.
        std::vector<Flags> m_vOthers;
        std::size_t m_uiFirstPlace = 0;
    };

    /// Goes on as long as the plan computes, and holds it like `LongWay`, but without the calls of
    /// a pointer that counts.
    class Computing {
    public:
        explicit Computing(SealedPlan& inout_Plan) : m_Plan(inout_Plan) {
            ++m_Plan.m_uiOwners;
            ++m_Plan.m_uiRunning;
        }
        ~Computing() {
            if (--m_Plan.m_uiRunning == 0) {
                m_Plan.m_bDisturbed = false;
            }
            if (--m_Plan.m_uiOwners == 0) {
                delete &m_Plan;
            }
        }
        Computing(const Computing&) = delete;
        Computing& operator=(const Computing&) = delete;

    private:
        SealedPlan& m_Plan;
    };

    class Builder;
    class FlagPattern;
    class Joining;
    class ReductionGroup;
    class ScalarProgram;
    class SumJoint;
    class VectorProgram;
    struct Program;
    struct Needs;

    bool compute(Step& inout_Step);
    void readInput(Step& inout_Step, Index in_uiNode);
    void passOn(Step& inout_Step, Index in_uiNode, const Step& in_From) {
        const DoubleVector* const pVector = in_From.m_pVector;
        if (inout_Step.m_pVector != pVector) {
            inout_Step.m_pVector = pVector;
            m_vNodes[in_uiNode]->m_pValue = const_cast<DoubleVector*>(pVector);
        }
    }
    static bool computeScalar(Step& inout_Step, const Step* in_pSteps);
    static bool computeScalar(const Step& in_Step, const Step& in_First, const Step& in_Second);
    bool computeOperator(Step& inout_Step);
    bool concatenate(Index in_uiNode);
    bool reduce(Step& inout_Step);
    static bool isReducible(const Step& in_Step, const Step& in_Input);
    bool computeByNode(Step& inout_Step, Index in_uiNode);
    bool computeAgain(Step& inout_Step);
    bool computeVectors(Step& inout_Step);
    static bool computeKnown(Kind in_eKind, const DoubleVector& in_Left,
                             const DoubleVector& in_Right, DoubleVector& out);
    void lookAtAll();
    void look(Step& inout_Step);
    /// The element of a value of one element; null for others.
    static const double* findScalar(const Step& in_Step) {
        if (in_Step.m_pScalar != nullptr) {
            return in_Step.m_pScalar;
        }
        const DoubleVector* const pVector = in_Step.m_pVector;
        return pVector != nullptr && pVector->size() == 1 ? pVector->begin() : nullptr;
    }
    void setScalar(Step& inout_Step, double* in_pScalar);
    void noteConstant(Step& inout_Step);
    /// To be called when a node has computed that isn't one of the library's operators.
    void lookAtHanded(Index in_uiNode) {
        for (Index ui = m_vHandedBegin[in_uiNode]; ui != m_vHandedBegin[in_uiNode + 1]; ++ui) {
            lookAtScalar(m_vSteps[m_vHanded[ui]]);
        }
    }
    void lookAtScalar(Step& inout_Step);
    void leave();
    Index computeNear(Index in_uiNode, bool& out_bIsNear);
    bool findInvalidInput(Index in_uiNode, Index& out_uiInput) const;
    Index computeNeeds(Needs& inout_Needs);
    bool computeFar(Index in_uiNode, Index& out_uiFailed);
    Index computeByProgram(Program& inout_Program, Needs& inout_Needs);
    Index computeByNodes(Needs& inout_Needs);
    void makeProgram(Needs& inout_Needs);
    void makeRoomForPrograms(Needs& inout_Needs);
    Index computeInListOrder(const Needs& in_Needs);
    Index computeInOwnOrder(const Needs& in_Needs);
    void remember(const NodeSet& in_Set);
    void takeBack(const Needs& in_Needs, Index in_uiFailed);
    bool isReadAheadInVain(Index in_uiNode) const;
    bool step(Index in_uiNode);
    bool areInputsValid(Index in_uiNode) const;
    bool isIntact() const;
    bool isSilent(Index in_uiNode) const;
    Needs* findNeeds(Index in_uiNode) {
        Needs* const pNeeds = m_vNeeds[in_uiNode].get();
        return pNeeds != nullptr ? pNeeds : listNewNeeds(in_uiNode);
    }
    Needs* listNewNeeds(Index in_uiNode);
    std::unique_ptr<Needs> makeNeeds(Index in_uiNode);
    std::vector<Index> listNeeds(Index in_uiNode) const;

    Index placeOf(const Step& in_Step) const {
        return static_cast<Index>(&in_Step - m_vSteps.data());
    }

    /// Where the value of a node comes from, which may be a variable that passes it on.
    Step& sourceOf(Index in_uiNode) {
        while (m_vSteps[in_uiNode].m_eKind == Kind::Forward) {
            in_uiNode = m_vSteps[in_uiNode].m_uiFirst;
        }
        return m_vSteps[in_uiNode];
    }

    ExpressionBaseImpl* nodeOf(const Step& in_Step) const { return m_vNodes[placeOf(in_Step)]; }

    bool isValid(Index in_uiNode) const {
        return reinterpret_cast<const std::uint8_t*>(m_vValid.data())[in_uiNode] != 0;
    }

    /// Was the node valid when the flags were last remembered?
    bool wasValid(Index in_uiNode) const {
        return reinterpret_cast<const std::uint8_t*>(m_vBefore.data())[in_uiNode] != 0;
    }

    static bool isOperator(Kind in_eKind) { return in_eKind < Kind::Forward; }

    std::vector<Step> m_vSteps;
    /// The node of each step, apart from what most steps of a frame need; null once it has died.
    Nodes m_vNodes;
    std::vector<Flags> m_vValid;
    /// What each node reads: places from m_vInputsBegin[node] to m_vInputsBegin[node + 1].
    std::vector<Index> m_vInputs;
    std::vector<Index> m_vInputsBegin;
    /// The same of the operators and constants whose vectors a function gets to see: a host's may
    /// change their size.
    std::vector<Index> m_vHanded;
    std::vector<Index> m_vHandedBegin;
    /// For an input of the graph, what reads it.
    std::vector<std::unique_ptr<NodeSet>> m_vReaders;
    /// For a node that was asked for, what it needs.
    std::vector<std::unique_ptr<Needs>> m_vNeeds;
    /// Nodes that the sets of needs, and their programs, may still list.
    std::size_t m_uiNeedsRoom = 0;
    std::size_t m_uiProgramRoom = 0;
    /// How often what a node needs was computed.
    std::size_t m_uiEvaluations = 0;
    /// Evaluations by the plan that go on, one within the other.
    std::size_t m_uiRunning = 0;
    /// How often a step became a scalar, or ceased to be one, or has its element elsewhere.
    std::size_t m_uiScalarChanges = 1;
    /// For a program that is being put together, by node.
    std::vector<Source> m_vSources;
    /// Long ways that go on, one within the other, and those that are over.
    std::size_t m_uiLongWays = 0;
    std::size_t m_uiPastLongWays = 0;
    FailedTries m_FailedTries;
    /// The flags of what the running evaluation needs, as they were before.
    std::vector<Flags> m_vBefore;
    Index m_uiFailed = PassedOver;
    /// The nodes that have the plan; as those of a graph, they aren't counted by several threads at
    /// a time.
    std::size_t m_uiOwners = 0;
    bool m_bUsable = true;
    bool m_bIntact = true;
    /// Have flags or links been changed since the outermost of the running evaluations began?
    bool m_bDisturbed = false;
};

} // namespace Velmora::Math::Xpr
