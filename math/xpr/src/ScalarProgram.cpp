#include "ScalarProgram.h"

#include <algorithm>
#include <functional>

#include "SealedPlanNeeds.h"

namespace Velmora::Math::Xpr {

void SealedPlan::ScalarProgram::reserve(const SealedPlan& in_Plan, const Needs& in_Needs) {
    const auto count = [&](auto in_isWanted) {
        return static_cast<std::size_t>(
            std::count_if(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), [&](Index in_uiNode) {
                return in_isWanted(in_Plan.m_vSteps[in_uiNode].m_eKind);
            }));
    };
    const std::size_t uiInputs = count([](Kind in_eKind) { return in_eKind == Kind::Input; });
    m_vOperations.reserve(count(isOperator));
    m_vForwards.reserve(count([](Kind in_eKind) { return in_eKind == Kind::Forward; }));
    m_vInputs.reserve(uiInputs);
    m_vElements.reserve(uiInputs);
    m_vFetches.reserve(uiInputs);
}

void SealedPlan::ScalarProgram::make(SealedPlan& inout_Plan, const Needs& in_Needs) {
    m_vOperations.clear();
    m_vForwards.clear();
    m_vInputs.clear();
    m_vElements.clear();
    m_vFetches.clear();
    m_bUsable = std::all_of(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(),
                            [&](Index in_uiNode) { return append(inout_Plan, in_uiNode); });
    listFetches(inout_Plan);
}

/// False if something that is computed, or read for it, is no scalar.
bool SealedPlan::ScalarProgram::append(SealedPlan& inout_Plan, Index in_uiNode) {
    const Step& step = inout_Plan.m_vSteps[in_uiNode];
    const bool bComputed = !inout_Plan.wasValid(in_uiNode);
    const double*& pSource = inout_Plan.m_vSources[in_uiNode];
    pSource = step.m_pScalar;
    if (step.m_eKind == Kind::Input) {
        m_vInputs.push_back(in_uiNode);
        m_vElements.push_back(0.0);
        pSource = &m_vElements.back();
    } else if (step.m_eKind == Kind::Forward) {
        pSource = inout_Plan.m_vSources[step.m_uiFirst];
        if (bComputed && isElement(pSource)) {
            m_vForwards.push_back(in_uiNode);
        }
    } else if (bComputed && isOperator(step.m_eKind)) {
        const double* const pFirst = inout_Plan.m_vSources[step.m_uiFirst];
        const double* const pSecond = inout_Plan.m_vSources[step.m_uiSecond];
        m_vOperations.push_back(
            {pFirst, pSecond, step.m_pScalar, in_uiNode, codeOf(step.m_eKind, pFirst, pSecond)});
        return pFirst != nullptr && pSecond != nullptr && pSource != nullptr;
    }
    return pSource != nullptr || !bComputed;
}

SealedPlan::ScalarProgram::Code SealedPlan::ScalarProgram::codeOf(Kind in_eKind,
                                                                  const double* in_pFirst,
                                                                  const double* in_pSecond) const {
    constexpr int Forms = 3;
    const int iPlain = Forms * static_cast<int>(in_eKind);
    const double* const pLast = m_vOperations.empty() ? nullptr : m_vOperations.back().m_pResult;
    if (pLast == nullptr || (in_pFirst == pLast) == (in_pSecond == pLast)) {
        return static_cast<Code>(iPlain);
    }
    return static_cast<Code>(iPlain + (in_pSecond == pLast ? 1 : 2));
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
            m_vFetches.push_back({m_vInputs[ui], &m_vElements[ui]});
        }
    }
}

bool SealedPlan::ScalarProgram::run(SealedPlan& inout_Plan, const Needs& in_Needs,
                                    Index& out_uiFailed) const {
    if (!fetchInputs(inout_Plan)) {
        return false;
    }
    out_uiFailed = PassedOver;
    if (const Operation* const pFailed = compute(); pFailed != nullptr) {
        for (auto ite = in_Needs.m_vOrder.begin(); *ite != pFailed->m_uiNode; ++ite) {
            *inout_Plan.flagOf(*ite) = 1;
        }
        // The operator itself says what is wrong.
        out_uiFailed = inout_Plan.computeInOwnOrder(in_Needs);
        return true;
    }
    Flags* const pValid = inout_Plan.m_vValid.data() + in_Needs.m_uiFirstPlace;
    const Flags* const pFlags = in_Needs.m_vFlags.data();
    const std::size_t uiCount = in_Needs.m_vFlags.size();
    for (std::size_t ui = 0; ui != uiCount; ++ui) {
        pValid[ui] |= pFlags[ui];
    }
    return true;
}

bool SealedPlan::ScalarProgram::fetchInputs(SealedPlan& inout_Plan) const {
    for (const Fetch& fetch : m_vFetches) {
        Step& step = inout_Plan.m_vSteps[fetch.m_uiInput];
        if (!inout_Plan.isValid(fetch.m_uiInput)) {
            inout_Plan.step(fetch.m_uiInput);
        }
        const DoubleVector* const pVector = step.m_pVector;
        if (pVector == nullptr || pVector->size() != 1) {
            return false;
        }
        *fetch.m_pElement = *pVector->begin();
    }
    for (const Index uiForward : m_vForwards) {
        inout_Plan.step(uiForward);
    }
    return true;
}

/// The operation that can't be computed, as it divides by zero; null if there is none.
const SealedPlan::ScalarProgram::Operation* SealedPlan::ScalarProgram::compute() const {
    double dLast = 0.0;
    for (const Operation& operation : m_vOperations) {
        switch (operation.m_eCode) {
        case Code::Add:
            dLast = *operation.m_pFirst + *operation.m_pSecond;
            break;
        case Code::AddLast:
            dLast = *operation.m_pFirst + dLast;
            break;
        case Code::AddToLast:
            dLast = dLast + *operation.m_pSecond;
            break;
        case Code::Subtract:
            dLast = *operation.m_pFirst - *operation.m_pSecond;
            break;
        case Code::SubtractLast:
            dLast = *operation.m_pFirst - dLast;
            break;
        case Code::SubtractFromLast:
            dLast = dLast - *operation.m_pSecond;
            break;
        case Code::Multiply:
            dLast = *operation.m_pFirst * *operation.m_pSecond;
            break;
        case Code::MultiplyByLast:
            dLast = *operation.m_pFirst * dLast;
            break;
        case Code::MultiplyLast:
            dLast = dLast * *operation.m_pSecond;
            break;
        default:
            const double dDividend =
                operation.m_eCode == Code::DivideLast ? dLast : *operation.m_pFirst;
            const double dDivisor =
                operation.m_eCode == Code::DivideByLast ? dLast : *operation.m_pSecond;
            if (dDivisor == 0.0) {
                return &operation;
            }
            dLast = dDividend / dDivisor;
            break;
        }
        *operation.m_pResult = dLast;
    }
    return nullptr;
}

} // namespace Velmora::Math::Xpr
