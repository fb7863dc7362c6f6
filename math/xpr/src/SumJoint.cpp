#include "SumJoint.h"

#include <algorithm>
#include <iterator>

#include <velmora/math/xpr/BinaryOperatorImpl.h>

namespace Velmora::Math::Xpr {

std::size_t SealedPlan::SumJoint::find(SealedPlan& inout_Plan,
                                       const std::vector<Index>& in_vPending,
                                       std::size_t in_uiFirst) {
    std::size_t uiScaled = 3;
    do {
        if (uiScaled-- == 0) {
            return 0;
        }
    } while (!findSum(inout_Plan, in_vPending, in_uiFirst, uiScaled));
    std::size_t uiJoined = uiScaled + 1;
    const Scaling behind = findScaling(inout_Plan, in_vPending, in_uiFirst + uiJoined);
    ScaledSum::Form form;
    if (behind.m_Part && behind.m_pSource == m_Sum.m_pStep) {
        m_Behind = behind.m_Part;
        form.m_eBehind = behind.m_Part.m_pStep->m_eKind == Kind::Divide
                             ? ScaledSum::Scale::Divide
                             : ScaledSum::Scale::Multiply;
        ++uiJoined;
    }
    form.m_bSubtract = m_Sum.m_pStep->m_eKind == Kind::Minus;
    form.m_bScaleLeft = static_cast<bool>(m_ScaledLeft);
    form.m_bScaleRight = static_cast<bool>(m_ScaledRight);
    m_Operation = ScaledSum(form);
    return uiJoined > 1 ? uiJoined : 0;
}

/// Is there a sum, or a difference, behind so many operators that scale its sides?
bool SealedPlan::SumJoint::findSum(SealedPlan& inout_Plan, const std::vector<Index>& in_vPending,
                                   std::size_t in_uiFirst, std::size_t in_uiScaled) {
    *this = SumJoint();
    if (in_uiFirst + in_uiScaled >= in_vPending.size()) {
        return false;
    }
    const Index uiSum = in_vPending[in_uiFirst + in_uiScaled];
    const Step& sum = inout_Plan.m_vSteps[uiSum];
    const Kind eKind = sum.m_eKind;
    if ((eKind != Kind::Plus && eKind != Kind::Minus) || sum.m_pScalar != nullptr) {
        return false;
    }
    m_Sum = makePart(inout_Plan, uiSum, nullptr);
    m_pLeft = &inout_Plan.m_vSteps[sum.m_uiFirst];
    m_pRight = &inout_Plan.m_vSteps[sum.m_uiSecond];
    const Step* const pLeft = &inout_Plan.sourceOf(sum.m_uiFirst);
    const Step* const pRight = &inout_Plan.sourceOf(sum.m_uiSecond);
    for (std::size_t ui = in_uiFirst; ui != in_uiFirst + in_uiScaled; ++ui) {
        const Scaling scaling = findScaling(inout_Plan, in_vPending, ui);
        const bool bLeft = scaling.m_Part.m_pStep == pLeft;
        const bool bRight = scaling.m_Part.m_pStep == pRight;
        const bool bInOrder = in_uiScaled == 1 || bLeft == (ui == in_uiFirst);
        if (!scaling.m_Part || scaling.m_Part.m_pStep->m_eKind != Kind::Multiply ||
            bLeft == bRight || !bInOrder) {
            return false;
        }
        (bLeft ? m_ScaledLeft : m_ScaledRight) = scaling.m_Part;
        (bLeft ? m_pLeft : m_pRight) = scaling.m_pVector;
    }
    return true;
}

/// The operator at that place if it multiplies a vector by a scalar, or divides it; else none.
SealedPlan::SumJoint::Scaling
SealedPlan::SumJoint::findScaling(SealedPlan& inout_Plan, const std::vector<Index>& in_vPending,
                                  std::size_t in_uiPlace) {
    if (in_uiPlace >= in_vPending.size()) {
        return {};
    }
    const Step& step = inout_Plan.m_vSteps[in_vPending[in_uiPlace]];
    const Step& first = inout_Plan.m_vSteps[step.m_uiFirst];
    const Step& second = inout_Plan.m_vSteps[step.m_uiSecond];
    const bool bByFirst = step.m_eKind == Kind::Multiply && findScalar(first) != nullptr;
    const bool bBySecond = (step.m_eKind == Kind::Multiply || step.m_eKind == Kind::Divide) &&
                           findScalar(second) != nullptr;
    if (step.m_pScalar != nullptr || bByFirst == bBySecond) {
        return {};
    }
    const Index uiVector = bByFirst ? step.m_uiSecond : step.m_uiFirst;
    return {makePart(inout_Plan, in_vPending[in_uiPlace], bByFirst ? &first : &second),
            &inout_Plan.m_vSteps[uiVector], &inout_Plan.sourceOf(uiVector)};
}

SealedPlan::SumJoint::Part SealedPlan::SumJoint::makePart(SealedPlan& inout_Plan, Index in_uiNode,
                                                          const Step* in_pFactor) {
    Step& step = inout_Plan.m_vSteps[in_uiNode];
    return {in_uiNode, &step,
            &static_cast<BinaryOperatorImplNoT&>(*inout_Plan.m_vNodes[in_uiNode]).m_Result,
            in_pFactor};
}

bool SealedPlan::SumJoint::isBegun(const SealedPlan& in_Plan) const {
    const Part* const pParts[] = {&m_ScaledLeft, &m_ScaledRight, &m_Sum, &m_Behind};
    return std::any_of(std::begin(pParts), std::end(pParts), [&](const Part* in_pPart) {
        return *in_pPart && in_Plan.isValid(in_pPart->m_uiNode);
    });
}

/// Where the operator's result goes; null for one that the joint hasn't got. False if it isn't the
/// value of a former frame, of that size.
inline bool SealedPlan::SumJoint::take(const Part& in_Part, std::size_t in_uiCount,
                                       double*& out_pResult) {
    if (!in_Part) {
        return true;
    }
    out_pResult = in_Part.m_pResult->begin();
    return in_Part.m_pStep->m_pVector == in_Part.m_pResult &&
           in_Part.m_pResult->size() == in_uiCount;
}

inline bool SealedPlan::SumJoint::takeFactor(const Part& in_Part, double& out_dFactor) {
    if (!in_Part) {
        return true;
    }
    const double* const pFactor = findScalar(*in_Part.m_pFactor);
    if (pFactor != nullptr) {
        out_dFactor = *pFactor;
    }
    return pFactor != nullptr;
}

inline void SealedPlan::SumJoint::note(SealedPlan& inout_Plan, const Part& in_Part) {
    if (in_Part) {
        in_Part.m_pStep->m_bAhead = true;
        *inout_Plan.flagOf(in_Part.m_uiNode) = 1;
    }
}

bool SealedPlan::SumJoint::compute(SealedPlan& inout_Plan) const {
    const DoubleVector* const pLeft = m_pLeft->m_pVector;
    const DoubleVector* const pRight = m_pRight->m_pVector;
    if (pLeft == nullptr || pRight == nullptr || pLeft->size() != pRight->size() ||
        pLeft->size() < 2) {
        return false;
    }
    ScaledSum::Operands operands;
    operands.m_uiCount = pLeft->size();
    operands.m_pLeft = pLeft->begin();
    operands.m_pRight = pRight->begin();
    const std::size_t uiCount = operands.m_uiCount;
    if (!take(m_ScaledLeft, uiCount, operands.m_pScaledLeft) ||
        !takeFactor(m_ScaledLeft, operands.m_dLeftFactor) ||
        !take(m_ScaledRight, uiCount, operands.m_pScaledRight) ||
        !takeFactor(m_ScaledRight, operands.m_dRightFactor) ||
        !take(m_Sum, uiCount, operands.m_pSum) || !take(m_Behind, uiCount, operands.m_pScaledSum) ||
        !takeFactor(m_Behind, operands.m_dBehind)) {
        return false;
    }
    // A host may set a result as an input. One by one, the operators would read what was just made.
    if (operands.m_pLeft == operands.m_pScaledRight ||
        operands.m_pRight == operands.m_pScaledLeft) {
        return false;
    }
    if (operands.m_dBehind == 0.0 && m_Behind.m_pStep->m_eKind == Kind::Divide) {
        return false;
    }
    m_Operation.compute(operands);
    note(inout_Plan, m_ScaledLeft);
    note(inout_Plan, m_ScaledRight);
    note(inout_Plan, m_Sum);
    note(inout_Plan, m_Behind);
    return true;
}

SealedPlan::Index SealedPlan::SumJoint::computeOneByOne(SealedPlan& inout_Plan) const {
    for (const Part* pPart : {&m_ScaledLeft, &m_ScaledRight, &m_Sum, &m_Behind}) {
        if (*pPart && !inout_Plan.isValid(pPart->m_uiNode) && !inout_Plan.step(pPart->m_uiNode)) {
            return pPart->m_uiNode;
        }
    }
    return PassedOver;
}

} // namespace Velmora::Math::Xpr
