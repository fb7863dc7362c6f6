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

void SealedPlan::look(Step& inout_Step) {
    if (inout_Step.m_pNode != nullptr) {
        inout_Step.m_pVector = inout_Step.m_pNode->m_pValue.get();
        setScalar(inout_Step, nullptr);
        inout_Step.m_bAhead = false;
        noteConstant(inout_Step);
    }
}

void SealedPlan::setScalar(Step& inout_Step, double* in_pScalar) {
    if (inout_Step.m_pScalar != in_pScalar) {
        inout_Step.m_pScalar = in_pScalar;
        ++m_uiScalarChanges;
    }
}

/// A constant never changes, so that its element can be read without asking for the size.
void SealedPlan::noteConstant(Step& inout_Step) {
    if (inout_Step.m_eKind == Kind::Constant && inout_Step.m_pVector != nullptr &&
        inout_Step.m_pVector->size() == 1) {
        setScalar(inout_Step, const_cast<double*>(inout_Step.m_pVector->begin()));
    }
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

bool SealedPlan::computeVectors(Step& inout_Step) {
    const Step& first = m_vSteps[inout_Step.m_uiFirst];
    const Step& second = m_vSteps[inout_Step.m_uiSecond];
    auto& op = static_cast<BinaryOperatorImplNoT&>(*inout_Step.m_pNode);
    if (first.m_pVector == nullptr || second.m_pVector == nullptr) {
        setScalar(inout_Step, nullptr);
        return op.reportNoValue();
    }
    inout_Step.m_bAhead = true;
    inout_Step.m_pNode->m_pValue = &op.m_Result;
    inout_Step.m_pVector = &op.m_Result;
    const bool bComputed =
        computeKnown(inout_Step.m_eKind, *first.m_pVector, *second.m_pVector, op.m_Result) ||
        op.calculate(*first.m_pVector, *second.m_pVector, op.m_Result);
    setScalar(inout_Step, bComputed && op.m_Result.size() == 1 ? op.m_Result.begin() : nullptr);
    return bComputed;
}

/// What the operator would do with sides that it doesn't complain of. False for others.
bool SealedPlan::computeKnown(Kind in_eKind, const DoubleVector& in_Left,
                              const DoubleVector& in_Right, DoubleVector& out) {
    const std::size_t uiLeft = in_Left.size();
    const std::size_t uiRight = in_Right.size();
    if (uiLeft == 0 || uiRight == 0) {
        return false;
    }
    switch (in_eKind) {
    case Kind::Plus:
        if (uiLeft == uiRight) {
            out.setSum(in_Left, in_Right);
        }
        return uiLeft == uiRight;
    case Kind::Minus:
        if (uiLeft == uiRight) {
            out.setDifference(in_Left, in_Right);
        }
        return uiLeft == uiRight;
    case Kind::Multiply:
        if (uiLeft == 1) {
            out.setProduct(in_Right, *in_Left.begin());
        } else if (uiRight == 1) {
            out.setProduct(in_Left, *in_Right.begin());
        }
        return uiLeft == 1 || uiRight == 1;
    default:
        const bool bKnown = in_eKind == Kind::Divide && uiRight == 1 && *in_Right.begin() != 0.0;
        if (bKnown) {
            out.setQuotient(in_Left, *in_Right.begin());
        }
        return bKnown;
    }
}

/// The element of a value of one element; null for others.
const double* SealedPlan::findScalar(const Step& in_Step) {
    if (in_Step.m_pScalar != nullptr) {
        return in_Step.m_pScalar;
    }
    const DoubleVector* const pVector = in_Step.m_pVector;
    return pVector != nullptr && pVector->size() == 1 ? pVector->begin() : nullptr;
}

/// A scalar that stays one is written in its place. False, and nothing has happened, for all else.
inline bool SealedPlan::computeScalar(Step& inout_Step) const {
    if (inout_Step.m_pScalar == nullptr || inout_Step.m_eKind > Kind::Multiply) {
        return false;
    }
    const double* const pFirst = findScalar(m_vSteps[inout_Step.m_uiFirst]);
    const double* const pSecond = findScalar(m_vSteps[inout_Step.m_uiSecond]);
    if (pFirst == nullptr || pSecond == nullptr) {
        return false;
    }
    switch (inout_Step.m_eKind) {
    case Kind::Plus:
        *inout_Step.m_pScalar = *pFirst + *pSecond;
        break;
    case Kind::Minus:
        *inout_Step.m_pScalar = *pFirst - *pSecond;
        break;
    default:
        *inout_Step.m_pScalar = *pFirst * *pSecond;
        break;
    }
    return true;
}

bool SealedPlan::computeOperator(Step& inout_Step) {
    if (inout_Step.m_eKind == Kind::Divide && inout_Step.m_pScalar != nullptr) {
        const double* const pFirst = findScalar(m_vSteps[inout_Step.m_uiFirst]);
        const double* const pSecond = findScalar(m_vSteps[inout_Step.m_uiSecond]);
        if (pFirst != nullptr && pSecond != nullptr && *pSecond != 0.0) {
            *inout_Step.m_pScalar = *pFirst / *pSecond;
            return true;
        }
    }
    return computeVectors(inout_Step);
}

bool SealedPlan::compute(Step& inout_Step) {
    switch (inout_Step.m_eKind) {
    case Kind::Constant:
    case Kind::Input:
    case Kind::Other:
        if (!inout_Step.m_pNode->evaluate_i(inout_Step.m_pNode->m_pValue)) {
            return false;
        }
        inout_Step.m_pVector = inout_Step.m_pNode->m_pValue.get();
        noteConstant(inout_Step);
        return true;
    case Kind::Forward: {
        const DoubleVector* const pVector = m_vSteps[inout_Step.m_uiFirst].m_pVector;
        if (inout_Step.m_pVector != pVector) {
            inout_Step.m_pVector = pVector;
            inout_Step.m_pNode->m_pValue = const_cast<DoubleVector*>(pVector);
        }
        return true;
    }
    default:
        return computeOperator(inout_Step);
    }
}

bool SealedPlan::step(Index in_uiNode) {
    Step& step = m_vSteps[in_uiNode];
    if (!computeScalar(step) && !compute(step)) {
        noteFailure();
        return false;
    }
    *flagOf(in_uiNode) = 1;
    return true;
}

bool SealedPlan::evaluate(Index in_uiNode, bool& out_bSuccess) {
    if (!m_bUsable || !m_bIntact || !m_vSteps[in_uiNode].m_bPlanned) {
        return false;
    }
    bool bIsNear = false;
    Index uiFailed = computeNear(in_uiNode, bIsNear);
    if (!bIsNear) {
        Needs* const pNeeds = findNeeds(in_uiNode);
        if (pNeeds == nullptr) {
            return false;
        }
        uiFailed = computeNeeds(*pNeeds);
    }
    out_bSuccess = uiFailed == PassedOver;
    if (!out_bSuccess) {
        // The long way goes on from here: the reader that needs this node is the first that the
        // recursion comes to.
        m_uiFailed = uiFailed == in_uiNode ? PassedOver : uiFailed;
    }
    return out_bSuccess || uiFailed == in_uiNode;
}

/// Computes a node below which one node after the other is all that isn't valid, as in a feature
/// that shares most of its work with one that was asked for before. `out_bIsNear` tells whether it
/// is so. Returns the node that failed, or `PassedOver`.
SealedPlan::Index SealedPlan::computeNear(Index in_uiNode, bool& out_bIsNear) {
    constexpr std::size_t MaxNear = 4;
    Index uiPath[MaxNear];
    std::size_t uiDepth = 0;
    Index uiNode = in_uiNode;
    std::size_t uiInvalid = 1;
    while (uiInvalid == 1 && uiDepth != MaxNear) {
        uiPath[uiDepth++] = uiNode;
        uiNode = findInvalidInput(uiNode, uiInvalid);
    }
    out_bIsNear = uiInvalid == 0;
    while (out_bIsNear && uiDepth != 0) {
        if (!step(uiPath[--uiDepth])) {
            return uiPath[uiDepth];
        }
    }
    return PassedOver;
}

/// The last input that isn't valid, and how many there are.
SealedPlan::Index SealedPlan::findInvalidInput(Index in_uiNode, std::size_t& out_uiCount) const {
    const Step& step = m_vSteps[in_uiNode];
    if (step.m_eKind <= Kind::Forward) {
        const bool bFirst = isValid(step.m_uiFirst);
        const bool bSecond = isValid(step.m_uiSecond);
        out_uiCount = (bFirst ? 0 : 1) + (bSecond || step.m_uiSecond == step.m_uiFirst ? 0 : 1);
        return bSecond ? step.m_uiFirst : step.m_uiSecond;
    }
    Index uiInvalid = PassedOver;
    out_uiCount = 0;
    for (Index ui = m_vInputsBegin[in_uiNode]; ui != m_vInputsBegin[in_uiNode + 1]; ++ui) {
        if (!isValid(m_vInputs[ui])) {
            uiInvalid = m_vInputs[ui];
            ++out_uiCount;
        }
    }
    return uiInvalid;
}

/// Computes what isn't valid; returns the same.
SealedPlan::Index SealedPlan::computeNeeds(Needs& inout_Needs) {
    const ScalarProgram* const pProgram = inout_Needs.findProgram(*this);
    Index uiFailed = PassedOver;
    bool bComputed = false;
    if (pProgram != nullptr && pProgram->isUsable()) {
        bComputed = pProgram->run(*this, inout_Needs, uiFailed);
    } else {
        remember(inout_Needs.m_Set);
    }
    if (!bComputed) {
        uiFailed = inout_Needs.m_bInOrder && inout_Needs.m_bComputed
                       ? computeInListOrder(inout_Needs)
                       : computeInOwnOrder(inout_Needs);
        inout_Needs.m_bComputed = inout_Needs.m_bComputed || uiFailed == PassedOver;
        if (uiFailed == PassedOver && pProgram == nullptr && !inout_Needs.m_Programs.empty()) {
            makeProgram(inout_Needs);
        }
    }
    if (uiFailed != PassedOver) {
        takeBack(inout_Needs, uiFailed);
    }
    return uiFailed;
}

SealedPlan::Index SealedPlan::computeInListOrder(const Needs& in_Needs) {
    for (const Word& word : in_Needs.m_Set.m_vWords) {
        for (Flags flags = word.m_Flags & ~m_vValid[word.m_uiPlace]; flags != 0;
             flags &= flags - 1) {
            const auto uiNode =
                static_cast<Index>(word.m_uiPlace * FlagsPerWord +
                                   static_cast<std::size_t>(__builtin_ctzll(flags)) / 8);
            if (!step(uiNode)) {
                return uiNode;
            }
        }
    }
    return PassedOver;
}

/// The same for a node to which the list, made from other roots, isn't in the recursion's order.
SealedPlan::Index SealedPlan::computeInOwnOrder(const Needs& in_Needs) {
    const auto ite =
        std::find_if(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(),
                     [this](Index in_uiNode) { return !isValid(in_uiNode) && !step(in_uiNode); });
    return ite == in_Needs.m_vOrder.end() ? PassedOver : *ite;
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
