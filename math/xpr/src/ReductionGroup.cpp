#include "ReductionGroup.h"

#include <algorithm>

#include "SealedPlanSteps.h"

namespace Velmora::Math::Xpr {

bool SealedPlan::ReductionGroup::add(SealedPlan& inout_Plan, Index in_uiNode) {
    Step& step = inout_Plan.m_vSteps[in_uiNode];
    if (!m_Reductions.add(step.m_eReduction)) {
        return false;
    }
    m_Parts[m_uiParts++] = {in_uiNode, &step, &inout_Plan.m_vSteps[step.m_uiFirst]};
    return true;
}

bool SealedPlan::ReductionGroup::isBegun(const SealedPlan& in_Plan) const {
    return std::any_of(begin(), end(),
                       [&](const Part& in_Part) { return in_Plan.isValid(in_Part.m_uiNode); });
}

bool SealedPlan::ReductionGroup::compute(SealedPlan& inout_Plan) const {
    const DoubleVector* const pInput = m_pInput->m_pVector;
    for (const Part& part : *this) {
        // A valid argument stays with what it has, though a host evaluates what it had that from.
        if (part.m_pArgument->m_pVector != pInput || !isReducible(*part.m_pStep, *m_pInput)) {
            return false;
        }
    }
    Reductions::Results results;
    m_Reductions.compute(pInput->begin(), pInput->end(), results);
    std::uint8_t* const pValid = inout_Plan.flagOf(0);
    for (const Part& part : *this) {
        Step& step = *part.m_pStep;
        *const_cast<double*>(step.m_pVector->begin()) =
            results[static_cast<std::size_t>(step.m_eReduction)];
        pValid[part.m_uiNode] = 1;
    }
    return true;
}

SealedPlan::Index SealedPlan::ReductionGroup::computeOneByOne(SealedPlan& inout_Plan) const {
    for (const Part& part : *this) {
        if (!inout_Plan.isValid(part.m_uiNode) && !inout_Plan.step(part.m_uiNode)) {
            return part.m_uiNode;
        }
        // A function of the host's that computes itself may have changed something.
        if (inout_Plan.m_bDisturbed) {
            return Disturbed;
        }
    }
    return PassedOver;
}

} // namespace Velmora::Math::Xpr
