// How the nodes of a plan are computed, one by one.

#include "SealedPlanSteps.h"

#include <algorithm>
#include <utility>

#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>

#include "Ahead.h"
#include "SealedPlanNeeds.h"

namespace Velmora::Math::Xpr {

void SealedPlan::look(Step& inout_Step) {
    if (const ExpressionBaseImpl* const pNode = nodeOf(inout_Step)) {
        inout_Step.m_pVector = pNode->m_pValue.get();
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

void SealedPlan::lookAtScalar(Step& inout_Step) {
    if (inout_Step.m_pScalar != nullptr) {
        const bool bScalar = inout_Step.m_pVector->size() == 1;
        setScalar(inout_Step,
                  bScalar ? const_cast<double*>(inout_Step.m_pVector->begin()) : nullptr);
    }
}

/// A constant never changes, so that its element can be read without asking for the size.
void SealedPlan::noteConstant(Step& inout_Step) {
    if (inout_Step.m_eKind == Kind::Constant && inout_Step.m_pVector != nullptr &&
        inout_Step.m_pVector->size() == 1) {
        setScalar(inout_Step, const_cast<double*>(inout_Step.m_pVector->begin()));
    }
}

/// What the operator would do with sides that it doesn't complain of. False for others.
inline bool SealedPlan::computeKnown(Kind in_eKind, const DoubleVector& in_Left,
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

/// An operator that handed out its result before, on sides that fit each other, as in all frames
/// but the first. False for all else, of which the long form below sees to it.
inline bool SealedPlan::computeAgain(Step& inout_Step) {
    const DoubleVector* const pFirst = m_vSteps[inout_Step.m_uiFirst].m_pVector;
    const DoubleVector* const pSecond = m_vSteps[inout_Step.m_uiSecond].m_pVector;
    DoubleVector& vResult = static_cast<BinaryOperatorImplNoT&>(*nodeOf(inout_Step)).m_Result;
    if (inout_Step.m_pVector != &vResult || pFirst == nullptr || pSecond == nullptr) {
        return false;
    }
    inout_Step.m_bAhead = true;
    if (!computeKnown(inout_Step.m_eKind, *pFirst, *pSecond, vResult)) {
        return false;
    }
    if (inout_Step.m_pScalar != nullptr || vResult.size() == 1) {
        setScalar(inout_Step, vResult.size() == 1 ? vResult.begin() : nullptr);
    }
    return true;
}

bool SealedPlan::computeVectors(Step& inout_Step) {
    const Step& first = m_vSteps[inout_Step.m_uiFirst];
    const Step& second = m_vSteps[inout_Step.m_uiSecond];
    auto& op = static_cast<BinaryOperatorImplNoT&>(*nodeOf(inout_Step));
    if (first.m_pVector == nullptr || second.m_pVector == nullptr) {
        setScalar(inout_Step, nullptr);
        return op.reportNoValue();
    }
    inout_Step.m_bAhead = true;
    op.m_pValue = &op.m_Result;
    inout_Step.m_pVector = &op.m_Result;
    const bool bComputed =
        computeKnown(inout_Step.m_eKind, *first.m_pVector, *second.m_pVector, op.m_Result) ||
        op.calculate(*first.m_pVector, *second.m_pVector, op.m_Result);
    setScalar(inout_Step, bComputed && op.m_Result.size() == 1 ? op.m_Result.begin() : nullptr);
    return bComputed;
}

inline bool SealedPlan::computeOperator(Step& inout_Step) {
    if (inout_Step.m_pScalar != nullptr && inout_Step.m_eKind == Kind::Divide) {
        const double* const pFirst = findScalar(m_vSteps[inout_Step.m_uiFirst]);
        const double* const pSecond = findScalar(m_vSteps[inout_Step.m_uiSecond]);
        if (pFirst != nullptr && pSecond != nullptr && *pSecond != 0.0) {
            *inout_Step.m_pScalar = *pFirst / *pSecond;
            return true;
        }
    }
    return computeAgain(inout_Step) || computeVectors(inout_Step);
}

/// The values of the inputs, one behind the other, where a result as long as that was. False for
/// all else: the result is to be made anew then.
bool SealedPlan::concatenate(Index in_uiNode) {
    const Step& step = m_vSteps[in_uiNode];
    DoubleVector& vResult = static_cast<OperatorConcatenate&>(*m_vNodes[in_uiNode]).m_Result;
    // What failed for its length may have left that much.
    if (step.m_pVector != &vResult || vResult.size() > OperatorConcatenate::MaxConcatenation) {
        return false;
    }
    double* pNext = vResult.begin();
    double* const pEnd = vResult.end();
    const Index* const pInputsEnd = m_vInputs.data() + m_vInputsBegin[in_uiNode + 1];
    for (const Index* pInput = m_vInputs.data() + m_vInputsBegin[in_uiNode]; pInput != pInputsEnd;
         ++pInput) {
        const DoubleVector* const pVector = m_vSteps[*pInput].m_pVector;
        // A host may set a result as an input.
        if (pVector == nullptr || pVector == &vResult ||
            pVector->size() > static_cast<std::size_t>(pEnd - pNext)) {
            return false;
        }
        if (pVector->size() == 1) {
            *pNext++ = *pVector->begin();
        } else {
            pNext = std::copy(pVector->begin(), pVector->end(), pNext);
        }
    }
    return pNext == pEnd;
}

/// False, and nothing has happened, for what the node has to compute itself.
bool SealedPlan::reduce(Step& inout_Step) {
    const Step& input = m_vSteps[inout_Step.m_uiFirst];
    if (!isReducible(inout_Step, input)) {
        return false;
    }
    Reductions reductions;
    reductions.add(inout_Step.m_eReduction);
    Reductions::Results results;
    reductions.compute(input.m_pVector->begin(), input.m_pVector->end(), results);
    *const_cast<double*>(inout_Step.m_pVector->begin()) =
        results[static_cast<std::size_t>(inout_Step.m_eReduction)];
    return true;
}

inline bool SealedPlan::compute(Step& inout_Step) {
    switch (inout_Step.m_eKind) {
    case Kind::Reduce:
        return reduce(inout_Step) || computeByNode(inout_Step, placeOf(inout_Step));
    case Kind::Concatenate:
        return concatenate(placeOf(inout_Step)) || computeByNode(inout_Step, placeOf(inout_Step));
    case Kind::Constant:
        if (!computeByNode(inout_Step, placeOf(inout_Step))) {
            return false;
        }
        noteConstant(inout_Step);
        return true;
    case Kind::Input:
    case Kind::Other:
        return computeByNode(inout_Step, placeOf(inout_Step));
    case Kind::Forward:
        passOn(inout_Step, placeOf(inout_Step), m_vSteps[inout_Step.m_uiFirst]);
        return true;
    default:
        return computeOperator(inout_Step);
    }
}

bool SealedPlan::step(Index in_uiNode) {
    Step& step = m_vSteps[in_uiNode];
    if (!computeScalar(step, m_vSteps.data()) && !compute(step)) {
        noteFailure(1);
        return false;
    }
    *flagOf(in_uiNode) = 1;
    return true;
}

SealedPlan::Index SealedPlan::computeInListOrder(const Needs& in_Needs) {
    for (const Word& word : in_Needs.m_Set.m_vWords) {
        for (Flags flags = word.m_Flags & ~m_vValid[word.m_uiPlace]; flags != 0;
             flags &= flags - 1) {
            const auto uiNode =
                static_cast<Index>(word.m_uiPlace * FlagsPerWord +
                                   static_cast<std::size_t>(__builtin_ctzll(flags)) / 8);
            // A node of the host's may have evaluated others on the way.
            if (!isValid(uiNode) && !step(uiNode)) {
                return uiNode;
            }
            if (m_bDisturbed) {
                return Disturbed;
            }
        }
    }
    return PassedOver;
}

/// The same for a node to which the list, made from other roots, isn't in the recursion's order,
/// and for the first frame.
SealedPlan::Index SealedPlan::computeInOwnOrder(const Needs& in_Needs) {
    const std::vector<Index>& vOrder = in_Needs.m_vOrder;
    for (std::size_t ui = 0; ui != vOrder.size(); ++ui) {
        const Index uiNode = vOrder[ui];
        // Nothing of a node has been in the caches since a large graph was sealed.
        if (!in_Needs.m_bComputed && ui + NodesAhead < vOrder.size()) {
            fetchAhead<AllLines>(m_vNodes[vOrder[ui + NodesAhead]]);
        }
        if (!isValid(uiNode) && !step(uiNode)) {
            return uiNode;
        }
        if (m_bDisturbed) {
            return Disturbed;
        }
    }
    return PassedOver;
}

/// Computes a node below which one node after the other is all that isn't valid, as in a feature
/// that shares most of its work with one that was asked for before. `out_bIsNear` tells whether it
/// is so. Returns the node that failed, or `PassedOver`.
SealedPlan::Index SealedPlan::computeNear(Index in_uiNode, bool& out_bIsNear) {
    constexpr std::size_t MaxNear = 4;
    Index uiPath[MaxNear];
    std::size_t uiDepth = 0;
    out_bIsNear = false;
    for (Index uiNode = in_uiNode; uiNode != PassedOver;) {
        if (uiDepth == MaxNear || !findInvalidInput(uiNode, uiPath[uiDepth])) {
            return PassedOver;
        }
        std::swap(uiNode, uiPath[uiDepth++]);
    }
    out_bIsNear = true;
    while (uiDepth != 0) {
        if (!step(uiPath[--uiDepth])) {
            return uiPath[uiDepth];
        }
        if (m_bDisturbed) {
            return Disturbed;
        }
    }
    return PassedOver;
}

/// The only input that isn't valid, or `PassedOver`. False if there are several.
inline bool SealedPlan::findInvalidInput(Index in_uiNode, Index& out_uiInput) const {
    const Step& step = m_vSteps[in_uiNode];
    out_uiInput = PassedOver;
    if (step.m_eKind <= Kind::Forward) {
        const bool bFirst = isValid(step.m_uiFirst);
        if (!isValid(step.m_uiSecond)) {
            out_uiInput = step.m_uiSecond;
            return bFirst || step.m_uiSecond == step.m_uiFirst;
        }
        if (!bFirst) {
            out_uiInput = step.m_uiFirst;
        }
        return true;
    }
    for (Index ui = m_vInputsBegin[in_uiNode]; ui != m_vInputsBegin[in_uiNode + 1]; ++ui) {
        if (!isValid(m_vInputs[ui])) {
            if (out_uiInput != PassedOver) {
                return false;
            }
            out_uiInput = m_vInputs[ui];
        }
    }
    return true;
}

/// Computes what isn't valid where that, and what is scalar, is as it was when the program was
/// made. Returns the node that failed, or `PassedOver`.
inline SealedPlan::Index SealedPlan::computeByProgram(Program& inout_Program, Needs& inout_Needs) {
    ++m_uiEvaluations;
    Index uiFailed = PassedOver;
    if (!inout_Program.m_Scalars.isUsable()) {
        const Needs::Running running(inout_Needs);
        uiFailed = inout_Program.m_Vectors.run(*this);
    } else if (!inout_Program.m_Scalars.run(*this, inout_Needs)) {
        uiFailed = computeByNodes(inout_Needs);
    }
    if (uiFailed != PassedOver) {
        inout_Program.m_Pattern.remember(*this, inout_Needs);
        takeBack(inout_Needs, uiFailed);
    }
    return uiFailed;
}

/// False if the plan can't. `out_uiFailed` is the node that failed, or `PassedOver`.
inline bool SealedPlan::computeFar(Index in_uiNode, Index& out_uiFailed) {
    // Inputs are read out of their turn, which would show in the log.
    if (DomainValueNoCopyImpl::areReadsLogged()) {
        return false;
    }
    Needs* const pNeeds = findNeeds(in_uiNode);
    if (pNeeds == nullptr) {
        return false;
    }
    Program* const pProgram = pNeeds->findProgram(*this);
    out_uiFailed =
        pProgram != nullptr ? computeByProgram(*pProgram, *pNeeds) : computeNeeds(*pNeeds);
    return true;
}

bool SealedPlan::evaluate(Index in_uiNode, bool& out_bSuccess) {
    if (!m_bUsable || !m_bIntact || !m_vSteps[in_uiNode].m_bPlanned) {
        return false;
    }
    const Computing computing(*this);
    Step& step = m_vSteps[in_uiNode];
    bool bIsNear = false;
    Index uiFailed = PassedOver;
    // A program takes its time with all flags of what the node needs, however little isn't valid.
    if (step.m_uiFar == 0) {
        uiFailed = computeNear(in_uiNode, bIsNear);
    }
    if (!bIsNear) {
        // What was far is likely to be far in the next frame too.
        constexpr std::uint8_t EvaluationsUntilNextLook = 32;
        step.m_uiFar = step.m_uiFar == 0 ? EvaluationsUntilNextLook : step.m_uiFar - 1;
        if (!computeFar(in_uiNode, uiFailed)) {
            return false;
        }
    }
    if (uiFailed == Disturbed) {
        // The node itself may have been the last.
        out_bSuccess = isValid(in_uiNode);
        return out_bSuccess;
    }
    out_bSuccess = uiFailed == PassedOver;
    if (!out_bSuccess) {
        // The long way goes on from here: the reader that needs this node is the first that the
        // recursion comes to.
        m_uiFailed = uiFailed == in_uiNode ? PassedOver : uiFailed;
    }
    return out_bSuccess || uiFailed == in_uiNode;
}

} // namespace Velmora::Math::Xpr
