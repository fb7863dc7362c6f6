#include "SealedPlan.h"

#include <algorithm>
#include <iterator>

#include <velmora/math/xpr/BinaryOperatorImpl.h>

#include "Ahead.h"
#include "FlagBlock.h"
#include "SealedPlanBuilder.h"
#include "SealedPlanNeeds.h"

namespace Velmora::Math::Xpr {

void intrusive_ptr_add_ref(SealedPlan* inout_pPlan) noexcept {
    ++inout_pPlan->m_uiOwners;
}

void intrusive_ptr_release(SealedPlan* inout_pPlan) noexcept {
    if (--inout_pPlan->m_uiOwners == 0) {
        delete inout_pPlan;
    }
}

SealedPlan::SealedPlan() = default;

SealedPlan::~SealedPlan() = default;

/// Gives the nodes a plan, and finds out whether it can be used. All that a node takes is done
/// while the node is at hand.
class SealedPlan::Joining {
public:
    Joining(const boost::intrusive_ptr<SealedPlan>& inout_pPlan, const Builder& in_Builder,
            const Nodes& in_vNodes, Parents in_eParents)
        : m_pPlan(inout_pPlan),
          m_Builder(in_Builder),
          m_vNodes(in_vNodes),
          m_eParents(in_eParents) {
        m_vDoubtful.reserve(m_vNodes.size());
    }

    void run() {
        std::size_t uiNext = 0;
        forEachAhead(m_vNodes, 0, [&](ExpressionBaseImpl& inout_Node) {
            join(inout_Node);
            if (++uiNext > Lag && !hasPlannedParents(*m_vNodes[uiNext - Lag - 1])) {
                m_vDoubtful.push_back(m_vNodes[uiNext - Lag - 1]);
            }
        });
        const bool bAllPlanned =
            areParentsPlanned(m_vDoubtful, 0) &&
            areParentsPlanned(m_vNodes, m_vNodes.size() - std::min(Lag, m_vNodes.size()));
        // What an operator reads needn't be below it: its arguments may have been replaced behind
        // its back.
        if (!bAllPlanned || m_uiSteps != m_pPlan->m_vSteps.size()) {
            m_pPlan->m_bUsable = false;
        }
    }

private:
    /// Most parents have joined some nodes later.
    static constexpr std::size_t Lag = 64;

    void join(ExpressionBaseImpl& inout_Node) {
        if (m_eParents == Parents::Complete) {
            inout_Node.m_Parents.seal();
        }
        const Index uiIndex = m_Builder.find(inout_Node);
        inout_Node.joinPlan(m_pPlan, uiIndex);
        if (uiIndex != PassedOver) {
            ++m_uiSteps;
            m_pPlan->look(m_pPlan->m_vSteps[uiIndex]);
        } else if (inout_Node.isValid()) {
            m_pPlan->m_bUsable = false;
        }
    }

    /// A change must reach every parent: those outside of these graphs can't be told by a plan.
    bool hasPlannedParents(const ExpressionBaseImpl& in_Node) const {
        return std::all_of(in_Node.m_Parents.begin(), in_Node.m_Parents.sealedEnd(),
                           [&](const auto& in_pParent) { return in_pParent->m_pPlan == m_pPlan; });
    }

    bool areParentsPlanned(const Nodes& in_vNodes, std::size_t in_uiFirst) const {
        return std::all_of(in_vNodes.begin() + static_cast<std::ptrdiff_t>(in_uiFirst),
                           in_vNodes.end(),
                           [&](const auto* in_pNode) { return hasPlannedParents(*in_pNode); });
    }

    const boost::intrusive_ptr<SealedPlan>& m_pPlan;
    const Builder& m_Builder;
    const Nodes& m_vNodes;
    const Parents m_eParents;
    std::size_t m_uiSteps = 0;
    /// Those of which a parent hadn't joined yet.
    Nodes m_vDoubtful;
};

void SealedPlan::make(const Nodes& in_vRoots, const Nodes& in_vNodes, Parents in_eParents) {
    const boost::intrusive_ptr<SealedPlan> pPlan(new SealedPlan);
    Builder builder(*pPlan);
    builder.build(in_vRoots);
    builder.buildReaders();
    Joining(pPlan, builder, in_vNodes, in_eParents).run();
    pPlan->m_bIntact = pPlan->isIntact();
    if (!pPlan->m_bUsable) {
        pPlan->lookAtAll();
    }
}

bool SealedPlan::areInputsValid(Index in_uiNode) const {
    return std::all_of(m_vInputs.begin() + m_vInputsBegin[in_uiNode],
                       m_vInputs.begin() + m_vInputsBegin[in_uiNode + 1],
                       [this](Index in_uiInput) { return isValid(in_uiInput); });
}

/// What reads a valid node without a value fails for that, and the recursion asks nothing beyond.
bool SealedPlan::isIntact() const {
    for (Index uiNode = 0; uiNode != m_vSteps.size(); ++uiNode) {
        const Step& step = m_vSteps[uiNode];
        if (step.m_bPlanned && isValid(uiNode) &&
            (step.m_pVector == nullptr || !areInputsValid(uiNode))) {
            return false;
        }
    }
    return true;
}

void SealedPlan::noteLongWay(Index in_uiNode) {
    look(m_vSteps[in_uiNode]);
    // As long as readers are still to be computed, one of them may yet become valid above a node
    // that has failed.
    if (m_bIntact || !m_bUsable || m_uiLongWays != 0 || m_uiRunning != 0) {
        return;
    }
    // The look at all takes as long as the list; it is spread over as many frames.
    constexpr std::size_t NodesPerFrame = 16;
    if (++m_uiPastLongWays % (1 + m_vSteps.size() / NodesPerFrame) == 0 && isIntact()) {
        m_bIntact = true;
        lookAtAll();
    }
}

void SealedPlan::lookAtAll() {
    std::for_each(m_vSteps.begin(), m_vSteps.end(), [this](Step& inout_Step) { look(inout_Step); });
}

/// Leaves the operators as the long way would have: with the pointers that they read last.
void SealedPlan::leave() {
    if (!m_bUsable || !m_bIntact) {
        return;
    }
    for (Step& step : m_vSteps) {
        if (step.m_bAhead && nodeOf(step) != nullptr) {
            auto& op = static_cast<BinaryOperatorImplNoT&>(*nodeOf(step));
            op.m_pLeftValue = const_cast<DoubleVector*>(m_vSteps[step.m_uiFirst].m_pVector);
            op.m_pRightValue = const_cast<DoubleVector*>(m_vSteps[step.m_uiSecond].m_pVector);
            step.m_bAhead = false;
        }
    }
}

/// Computes what isn't valid. Returns the node that failed, or `PassedOver`.
SealedPlan::Index SealedPlan::computeNeeds(Needs& inout_Needs) {
    const std::size_t uiEvaluation = ++m_uiEvaluations;
    remember(inout_Needs.m_Set);
    const Index uiFailed = computeByNodes(inout_Needs);
    if (uiFailed != PassedOver) {
        takeBack(inout_Needs, uiFailed);
    } else if (uiEvaluation == m_uiEvaluations && !inout_Needs.m_Programs.empty() &&
               !inout_Needs.m_bRunning) {
        // What another evaluation has remembered on the way isn't how this one began, and the
        // program that goes on further out stays.
        makeProgram(inout_Needs);
    }
    return uiFailed;
}

SealedPlan::Index SealedPlan::computeByNodes(Needs& inout_Needs) {
    const Index uiFailed = inout_Needs.m_bInOrder && inout_Needs.m_bComputed
                               ? computeInListOrder(inout_Needs)
                               : computeInOwnOrder(inout_Needs);
    inout_Needs.m_bComputed = inout_Needs.m_bComputed || uiFailed == PassedOver;
    return uiFailed;
}

void SealedPlan::remember(const NodeSet& in_Set) {
    for (const Word& word : in_Set.m_vWords) {
        m_vBefore[word.m_uiPlace] = m_vValid[word.m_uiPlace];
    }
}

/// Inputs and variables were computed ahead of their turn, where nobody sees it. The recursion
/// stops where a node fails, and wouldn't have come to some of them.
void SealedPlan::takeBack(const Needs& in_Needs, Index in_uiFailed) {
    const auto iteFailed =
        std::find(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), in_uiFailed);
    for (auto ite = in_Needs.m_vOrder.end(); ite != iteFailed;) {
        --ite;
        if (isReadAheadInVain(*ite)) {
            *flagOf(*ite) = 0;
        }
    }
}

/// A node of the host's may have evaluated others on the way, which stay as they are with all that
/// they have read.
bool SealedPlan::isReadAheadInVain(Index in_uiNode) const {
    const ExpressionBaseImpl* const pNode = m_vNodes[in_uiNode];
    return isSilent(in_uiNode) && !wasValid(in_uiNode) && pNode != nullptr &&
           std::none_of(pNode->m_Parents.begin(), pNode->m_Parents.sealedEnd(),
                        [](const auto& in_pParent) { return in_pParent->isValid(); });
}

bool SealedPlan::invalidate(Index in_uiNode) {
    // A node that goes on being computed will be valid above this one.
    if (m_uiRunning != 0 || m_uiLongWays != 0) {
        noteFailure();
        return false;
    }
    const NodeSet* const pReaders = m_vReaders[in_uiNode].get();
    if (!m_bUsable || !m_bIntact || pReaders == nullptr) {
        return false;
    }
    if (!pReaders->m_vOthers.empty()) {
        FlagBlock::keep(m_vValid.data() + pReaders->m_uiFirstPlace, pReaders->m_vOthers);
        return true;
    }
    for (const Word& word : pReaders->m_vWords) {
        m_vValid[word.m_uiPlace] &= ~word.m_Flags;
    }
    return true;
}

} // namespace Velmora::Math::Xpr
