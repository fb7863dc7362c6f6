#include "SealedPlan.h"

#include <algorithm>
#include <iterator>

#include <velmora/math/xpr/BinaryOperatorImpl.h>

#include "Ahead.h"
#include "SealedPlanBuilder.h"
#include "SealedPlanNeeds.h"

namespace Velmora::Math::Xpr {

SealedPlan::SealedPlan() = default;

SealedPlan::~SealedPlan() = default;

void SealedPlan::make(const Nodes& in_vRoots, const Nodes& in_vNodes) {
    const auto pPlan = std::make_shared<SealedPlan>();
    Builder builder(*pPlan);
    builder.build(in_vRoots);
    builder.buildReaders();

    forEachAhead(in_vNodes, [&](ExpressionBaseImpl& inout_Node) {
        inout_Node.joinPlan(pPlan, builder.find(inout_Node));
    });
    // A change must reach every parent: those outside of these graphs can't be told by a plan.
    for (const ExpressionBaseImpl* pNode : in_vNodes) {
        const bool bAllPlanned =
            std::all_of(pNode->m_Parents.begin(), pNode->m_Parents.sealedEnd(),
                        [&](const auto& in_pParent) { return in_pParent->m_pPlan == pPlan; });
        if (!bAllPlanned) {
            pPlan->m_bUsable = false;
        }
        if (pNode->isValid() && pNode->m_uiPlanIndex == PassedOver) {
            pPlan->m_bUsable = false;
        }
    }
    // What an operator reads needn't be below it: its arguments may have been replaced behind its
    // back.
    const auto isOfPlan = [&](const Step& in_Step) { return in_Step.m_pNode->m_pPlan == pPlan; };
    pPlan->m_bUsable =
        pPlan->m_bUsable && std::all_of(pPlan->m_vSteps.begin(), pPlan->m_vSteps.end(), isOfPlan);
    pPlan->m_bIntact = pPlan->isIntact();
    pPlan->lookAtAll();
}

bool SealedPlan::areInputsValid(Index in_uiNode) const {
    return std::all_of(m_vInputs.begin() + m_vInputsBegin[in_uiNode],
                       m_vInputs.begin() + m_vInputsBegin[in_uiNode + 1],
                       [this](Index in_uiInput) { return isValid(in_uiInput); });
}

bool SealedPlan::isIntact() const {
    for (Index uiNode = 0; uiNode != m_vSteps.size(); ++uiNode) {
        if (m_vSteps[uiNode].m_bPlanned && isValid(uiNode) && !areInputsValid(uiNode)) {
            return false;
        }
    }
    return true;
}

void SealedPlan::noteLongWay(Index in_uiNode) {
    look(m_vSteps[in_uiNode]);
    // As long as readers are still to be computed, one of them may yet become valid above a node
    // that has failed.
    if (m_bIntact || !m_bUsable || m_uiLongWays != 0) {
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
        if (step.m_bAhead && step.m_pNode != nullptr) {
            auto& op = static_cast<BinaryOperatorImplNoT&>(*step.m_pNode);
            op.m_pLeftValue = const_cast<DoubleVector*>(m_vSteps[step.m_uiFirst].m_pVector);
            op.m_pRightValue = const_cast<DoubleVector*>(m_vSteps[step.m_uiSecond].m_pVector);
            step.m_bAhead = false;
        }
    }
}

/// Computes what isn't valid. Returns the node that failed, or `PassedOver`.
SealedPlan::Index SealedPlan::computeNeeds(Needs& inout_Needs) {
    Index uiFailed = PassedOver;
    if (const Program* const pProgram = inout_Needs.findProgram(*this); pProgram != nullptr) {
        uiFailed = computeByProgram(*pProgram, inout_Needs);
    } else {
        remember(inout_Needs.m_Set);
        uiFailed = computeByNodes(inout_Needs);
        if (uiFailed == PassedOver && !inout_Needs.m_Programs.empty()) {
            makeProgram(inout_Needs);
        }
    }
    if (uiFailed != PassedOver) {
        takeBack(inout_Needs, uiFailed);
    }
    return uiFailed;
}

SealedPlan::Index SealedPlan::computeByProgram(const Program& in_Program, Needs& inout_Needs) {
    Index uiFailed = PassedOver;
    if (!in_Program.m_Scalars.isUsable()) {
        uiFailed = in_Program.m_Vectors.run(*this);
    } else if (!in_Program.m_Scalars.run(*this, inout_Needs, uiFailed)) {
        uiFailed = computeByNodes(inout_Needs);
    }
    if (uiFailed != PassedOver) {
        in_Program.m_Pattern.remember(*this, inout_Needs);
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
    auto ite = std::find(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), in_uiFailed);
    for (; ite != in_Needs.m_vOrder.end(); ++ite) {
        if (!wasValid(*ite)) {
            *flagOf(*ite) = 0;
        }
    }
}

bool SealedPlan::invalidate(Index in_uiNode) {
    const NodeSet* const pReaders = m_vReaders[in_uiNode].get();
    if (!m_bUsable || !m_bIntact || pReaders == nullptr) {
        return false;
    }
    if (!pReaders->m_vOthers.empty()) {
        Flags* const pValid = m_vValid.data() + pReaders->m_uiFirstPlace;
        const Flags* const pOthers = pReaders->m_vOthers.data();
        const std::size_t uiCount = pReaders->m_vOthers.size();
        for (std::size_t ui = 0; ui != uiCount; ++ui) {
            pValid[ui] &= pOthers[ui];
        }
        return true;
    }
    for (const Word& word : pReaders->m_vWords) {
        m_vValid[word.m_uiPlace] &= ~word.m_Flags;
    }
    return true;
}

} // namespace Velmora::Math::Xpr
