#pragma once

#include <velmora/math/xpr/DomainValueNoCopyImpl.h>

#include "SealedPlan.h"

// What a plan does in fewer instructions than a call of it would take.

namespace Velmora::Math::Xpr {

/// The sum, difference or product of scalars is written where the operator's result, a scalar, was.
/// False, and nothing has happened, for all else.
inline bool SealedPlan::computeScalar(const Step& in_Step, const Step& in_First,
                                      const Step& in_Second) {
    double* const pResult = in_Step.m_pScalar;
    const double* const pFirst = findScalar(in_First);
    const double* const pSecond = findScalar(in_Second);
    if (pResult == nullptr || pFirst == nullptr || pSecond == nullptr) {
        return false;
    }
    switch (in_Step.m_eKind) {
    case Kind::Plus:
        *pResult = *pFirst + *pSecond;
        return true;
    case Kind::Minus:
        *pResult = *pFirst - *pSecond;
        return true;
    case Kind::Multiply:
        *pResult = *pFirst * *pSecond;
        return true;
    default:
        return false;
    }
}

inline bool SealedPlan::computeScalar(Step& inout_Step, const Step* in_pSteps) {
    return inout_Step.m_pScalar != nullptr && inout_Step.m_eKind <= Kind::Multiply &&
           computeScalar(inout_Step, in_pSteps[inout_Step.m_uiFirst],
                         in_pSteps[inout_Step.m_uiSecond]);
}

/// Without the line of `getValue` in the log.
inline void SealedPlan::readInput(Step& inout_Step, Index in_uiNode) {
    auto& node = static_cast<DomainValueNoCopyImpl&>(*m_vNodes[in_uiNode]);
    inout_Step.m_pVector = node.m_pVector.get();
    node.m_pValue = const_cast<DoubleVector*>(inout_Step.m_pVector);
}

/// Has the input elements, and has the node a number to write over? A host may set the result as an
/// input.
inline bool SealedPlan::isReducible(const Step& in_Step, const Step& in_Input) {
    const DoubleVector* const pInput = in_Input.m_pVector;
    const DoubleVector* const pResult = in_Step.m_pVector;
    return pInput != nullptr && pResult != nullptr && pInput != pResult && !pInput->empty() &&
           pResult->size() == 1;
}

inline bool SealedPlan::computeByNode(Step& inout_Step, Index in_uiNode) {
    ExpressionBaseImpl& node = *m_vNodes[in_uiNode];
    if (!node.evaluate_i(node.m_pValue)) {
        return false;
    }
    inout_Step.m_pVector = node.m_pValue.get();
    lookAtHanded(in_uiNode);
    if (inout_Step.m_pVector == nullptr) {
        // What reads it will fail for that, and the recursion asks nothing beyond.
        noteFailure();
    }
    return true;
}

/// A host asks for many of these in a row. How long one takes is how many loads follow from each
/// other, which is why the operation stands beside the variable.
inline bool SealedPlan::computeOne(Index in_uiNode) {
    if (in_uiNode == PassedOver || !m_bUsable || !m_bIntact) {
        return false;
    }
    // Flags are bytes, which may be anything to a compiler: it would look for both after each.
    Step* const pSteps = m_vSteps.data();
    std::uint8_t* const pValid = flagOf(0);
    Step& variable = pSteps[in_uiNode];
    if (!variable.m_bOneOperation) {
        return false;
    }
    const Index uiOperation = in_uiNode - 1;
    const Step& operation = pSteps[uiOperation];
    const Index uiFirst = operation.m_uiFirst;
    const Index uiSecond = operation.m_uiSecond;
    // Not twice: a host may set the result as an input.
    if (pValid[uiOperation] != 0 || pValid[uiFirst] == 0 || pValid[uiSecond] == 0 ||
        !computeScalar(operation, pSteps[uiFirst], pSteps[uiSecond])) {
        return false;
    }
    passOn(variable, in_uiNode, operation);
    pValid[uiOperation] = 1;
    pValid[in_uiNode] = 1;
    return true;
}

} // namespace Velmora::Math::Xpr
