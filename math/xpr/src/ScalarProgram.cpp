#include "ScalarProgram.h"

#include <algorithm>
#include <functional>
#include <tuple>

#include "FlagBlock.h"
#include "SealedPlanNeeds.h"
#include "SealedPlanSteps.h"

namespace Velmora::Math::Xpr {

void SealedPlan::ScalarProgram::reserve(const SealedPlan& in_Plan, const Needs& in_Needs) {
    const auto count = [&](auto in_isWanted) {
        return static_cast<std::size_t>(
            std::count_if(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), [&](Index in_uiNode) {
                return in_isWanted(in_Plan.m_vSteps[in_uiNode].m_eKind);
            }));
    };
    const std::size_t uiOperators = count(isOperator);
    const std::size_t uiInputs = count([](Kind in_eKind) { return in_eKind == Kind::Input; });
    m_vOperations.reserve(uiOperators);
    m_vNodes.reserve(uiOperators);
    m_Own.reserve(uiOperators);
    m_vForwards.reserve(count([](Kind in_eKind) { return in_eKind == Kind::Forward; }));
    m_vInputs.reserve(uiInputs);
    m_vElements.reserve(uiInputs);
    m_vFetches.reserve(uiInputs);
    m_vNew.reserve(uiInputs);
}

void SealedPlan::ScalarProgram::make(SealedPlan& inout_Plan, const Needs& in_Needs) {
    m_vOperations.clear();
    m_vNodes.clear();
    m_Own.clear();
    m_vForwards.clear();
    m_vInputs.clear();
    m_vElements.clear();
    m_vFetches.clear();
    m_vNew.clear();
    m_bUsable = std::all_of(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(),
                            [&](Index in_uiNode) { return list(inout_Plan, in_uiNode); });
    if (m_bUsable) {
        sort(inout_Plan);
        std::for_each(m_vNodes.begin(), m_vNodes.end(),
                      [&](Index in_uiNode) { append(inout_Plan, in_uiNode); });
        m_uiChain = findChain();
        listFetches(inout_Plan);
    }
}

/// Notes where the element of a node is, and how far the node is from what isn't computed. False if
/// something that is computed, or read for it, is no scalar.
bool SealedPlan::ScalarProgram::list(SealedPlan& inout_Plan, Index in_uiNode) {
    const Step& step = inout_Plan.m_vSteps[in_uiNode];
    const bool bComputed = !inout_Plan.wasValid(in_uiNode);
    Source& source = inout_Plan.m_vSources[in_uiNode];
    source = {step.m_pScalar, 0};
    if (step.m_eKind == Kind::Input) {
        m_vInputs.push_back(in_uiNode);
        if (bComputed) {
            m_vNew.push_back(in_uiNode);
        }
        m_vElements.push_back(0.0);
        source.m_pElement = &m_vElements.back();
    } else if (step.m_eKind == Kind::Forward) {
        source = inout_Plan.m_vSources[step.m_uiFirst];
        if (bComputed && isElement(source.m_pElement)) {
            m_vForwards.push_back(in_uiNode);
        }
    } else if (bComputed && isOperator(step.m_eKind)) {
        const Source& first = inout_Plan.m_vSources[step.m_uiFirst];
        const Source& second = inout_Plan.m_vSources[step.m_uiSecond];
        source.m_uiDistance = 1 + std::max(first.m_uiDistance, second.m_uiDistance);
        m_vNodes.push_back(in_uiNode);
        m_Own.insert(step.m_pVector);
        return first.m_pElement != nullptr && second.m_pElement != nullptr &&
               source.m_pElement != nullptr;
    }
    return source.m_pElement != nullptr || !bComputed;
}

/// Gives the operations their order.
void SealedPlan::ScalarProgram::sort(SealedPlan& inout_Plan) {
    const auto keyOf = [&](Index in_uiNode) {
        return std::make_tuple(inout_Plan.m_vSources[in_uiNode].m_uiDistance,
                               inout_Plan.m_vSteps[in_uiNode].m_eKind, in_uiNode);
    };
    std::sort(m_vNodes.begin(), m_vNodes.end(),
              [&](Index in_uiA, Index in_uiB) { return keyOf(in_uiA) < keyOf(in_uiB); });
}

void SealedPlan::ScalarProgram::append(const SealedPlan& in_Plan, Index in_uiNode) {
    const Step& step = in_Plan.m_vSteps[in_uiNode];
    m_vOperations.push_back({in_Plan.m_vSources[step.m_uiFirst].m_pElement,
                             in_Plan.m_vSources[step.m_uiSecond].m_pElement, step.m_pScalar,
                             step.m_eKind});
}

std::size_t SealedPlan::ScalarProgram::findChain() const {
    std::size_t uiFirst = m_vOperations.size();
    while (uiFirst > 1) {
        const Operation& operation = m_vOperations[uiFirst - 1];
        const double* const pLast = m_vOperations[uiFirst - 2].m_pResult;
        if (operation.m_pFirst != pLast && operation.m_pSecond != pLast) {
            break;
        }
        --uiFirst;
    }
    return uiFirst;
}

bool SealedPlan::ScalarProgram::isElement(const double* in_pSource) const {
    const std::less<const double*> isBefore;
    return !isBefore(in_pSource, m_vElements.data()) &&
           isBefore(in_pSource, m_vElements.data() + m_vElements.size());
}

/// Fetched is what is computed, and what the operations read.
void SealedPlan::ScalarProgram::listFetches(const SealedPlan& in_Plan) {
    const auto markRead = [this](const double* in_pSource) {
        if (isElement(in_pSource)) {
            m_vElements[static_cast<std::size_t>(in_pSource - m_vElements.data())] = 1.0;
        }
    };
    for (const Operation& operation : m_vOperations) {
        markRead(operation.m_pFirst);
        markRead(operation.m_pSecond);
    }
    for (std::size_t ui = 0; ui != m_vInputs.size(); ++ui) {
        if (m_vElements[ui] != 0.0 || !in_Plan.wasValid(m_vInputs[ui])) {
            m_vFetches.push_back({&in_Plan.m_vSteps[m_vInputs[ui]], &m_vElements[ui], nullptr});
        }
    }
}

bool SealedPlan::ScalarProgram::run(SealedPlan& inout_Plan, const Needs& in_Needs) {
    readInputs(inout_Plan);
    if (!fetchElements() || !compute()) {
        for (const Index uiInput : m_vNew) {
            *inout_Plan.flagOf(uiInput) = 1;
        }
        return false;
    }
    for (const Index uiForward : m_vForwards) {
        Step& forward = inout_Plan.m_vSteps[uiForward];
        inout_Plan.passOn(forward, uiForward, inout_Plan.m_vSteps[forward.m_uiFirst]);
    }
    FlagBlock::add(inout_Plan.m_vValid.data() + in_Needs.m_uiFirstPlace, in_Needs.m_vFlags);
    return true;
}

/// The flags are set at the end, all at a time.
void SealedPlan::ScalarProgram::readInputs(SealedPlan& inout_Plan) const {
    for (const Index uiInput : m_vNew) {
        inout_Plan.readInput(inout_Plan.m_vSteps[uiInput], uiInput);
    }
}

/// False if one isn't a scalar, or is a result.
bool SealedPlan::ScalarProgram::fetchElements() {
    for (Fetch& fetch : m_vFetches) {
        const DoubleVector* const pVector = fetch.m_pInput->m_pVector;
        // Most inputs of most frames are as they were, but for what the host writes into them.
        if (pVector != fetch.m_pVector) {
            if (pVector == nullptr || m_Own.contains(pVector)) {
                return false;
            }
            fetch.m_pVector = pVector;
        }
        if (pVector->size() != 1) {
            return false;
        }
        *fetch.m_pElement = *pVector->begin();
    }
    return true;
}

/// False for a division by zero.
inline bool SealedPlan::ScalarProgram::computeOne(Kind in_eKind, double in_dFirst,
                                                  double in_dSecond, double& out_dResult) {
    switch (in_eKind) {
    case Kind::Plus:
        out_dResult = in_dFirst + in_dSecond;
        return true;
    case Kind::Minus:
        out_dResult = in_dFirst - in_dSecond;
        return true;
    case Kind::Multiply:
        out_dResult = in_dFirst * in_dSecond;
        return true;
    default:
        if (in_dSecond == 0.0) {
            return false;
        }
        out_dResult = in_dFirst / in_dSecond;
        return true;
    }
}

/// False if a divisor is zero: the operator itself says so.
bool SealedPlan::ScalarProgram::compute() const {
    const Operation* const pFirst = m_vOperations.data();
    return std::all_of(pFirst, pFirst + m_uiChain,
                       [](const Operation& in_Operation) {
                           return computeOne(in_Operation.m_eKind, *in_Operation.m_pFirst,
                                             *in_Operation.m_pSecond, *in_Operation.m_pResult);
                       }) &&
           computeChain();
}

/// No operation waits until memory has the result of the one ahead.
bool SealedPlan::ScalarProgram::computeChain() const {
    if (m_uiChain == m_vOperations.size()) {
        return true;
    }
    const double* pLast = m_vOperations[m_uiChain - 1].m_pResult;
    double dLast = *pLast;
    for (std::size_t ui = m_uiChain; ui != m_vOperations.size(); ++ui) {
        const Operation& operation = m_vOperations[ui];
        double dFirst = dLast;
        double dSecond = dLast;
        if (operation.m_pFirst != pLast) {
            dFirst = *operation.m_pFirst;
        }
        if (operation.m_pSecond != pLast) {
            dSecond = *operation.m_pSecond;
        }
        if (!computeOne(operation.m_eKind, dFirst, dSecond, dLast)) {
            return false;
        }
        pLast = operation.m_pResult;
        *operation.m_pResult = dLast;
    }
    return true;
}

} // namespace Velmora::Math::Xpr
