// How a node is sealed, invalidated and evaluated.

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <velmora/DeepCall.h>
#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

#include "GraphWalk.h"
#include "SealedPlanSteps.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

bool ExpressionBaseImpl::evaluate(DoubleVector& out) {
    LimitedObjPtr<DoubleVector> pValue;
    if (!evaluate(pValue) || !checkValue(pValue)) {
        return false;
    }
    out = *pValue;
    return true;
}

bool ExpressionBaseImpl::evaluate(LimitedObjPtr<DoubleVector>& out) {
    const bool bComputed = isValid() || (m_pPlan != nullptr && m_pPlan->computeOne(m_uiPlanIndex));
    if (!bComputed) {
        return doEvaluate(out);
    }
    out = m_pValue;
    return true;
}

// Not a part of the above, whose short way would have to save registers for it.
[[gnu::noinline]] bool ExpressionBaseImpl::doEvaluate(LimitedObjPtr<DoubleVector>& out) {
    if (m_pPlan != nullptr) {
        return evaluateSealed(out);
    }
    if (!DeepCall::run([this] { return evaluate_i(m_pValue); })) {
        return false;
    }
    m_bValid = 1;
    out = m_pValue;
    return true;
}

bool ExpressionBaseImpl::evaluateSealed(LimitedObjPtr<DoubleVector>& out) {
    if (m_uiPlanIndex != SealedPlan::PassedOver && !isValid()) {
        if (m_pPlan->takeFailure(m_uiPlanIndex)) {
            m_pPlan->failedTries().note(*this);
            return false;
        }
        bool bSuccess = false;
        if (m_pPlan->evaluate(m_uiPlanIndex, bSuccess)) {
            if (bSuccess) {
                out = m_pValue;
            }
            return bSuccess;
        }
    }
    return evaluateTheLongWay(out);
}

bool ExpressionBaseImpl::evaluateTheLongWay(LimitedObjPtr<DoubleVector>& out) {
    const auto evaluateNode = [this] {
        const SealedPlan::LongWay longWay(*m_pPlan);
        if (m_pPlan->failedTries().isUseless(*this)) {
            return false;
        }
        const bool bEvaluated = DeepCall::run([this] { return evaluate_i(m_pValue); });
        if (!bEvaluated) {
            m_pPlan->failedTries().note(*this);
        }
        return bEvaluated;
    };
    const bool bPassedOver = m_uiPlanIndex == SealedPlan::PassedOver;
    if (!evaluateNode()) {
        m_pPlan->noteFailure();
        return false;
    }
    *m_pValid = 1;
    if (bPassedOver) {
        m_pPlan->noteForeignValue();
    } else {
        m_pPlan->noteLongWay(m_uiPlanIndex);
    }
    out = m_pValue;
    return true;
}

bool ExpressionBaseImpl::evaluateTogether_i(ExpressionBaseImpl* const*, std::size_t,
                                            LimitedObjPtr<DoubleVector>*) {
    return false;
}

bool ExpressionBaseImpl::getReduction(Reductions::Kind&) const {
    return false;
}

bool ExpressionBaseImpl::quickEvaluate(LimitedObjPtr<DoubleVector>& out) {
    evaluate(out);
    return true;
}

bool ExpressionBaseImpl::reportNoValue() const {
    VELMORA_LOG_ERROR(fileLogger(), getSourceInfo() << ":no value to compute from: " << getName());
    return false;
}

void ExpressionBaseImpl::invalidate_i() {
    if (!isValid()) {
        return;
    }
    if (m_pPlan == nullptr || m_uiPlanIndex == SealedPlan::PassedOver ||
        !m_pPlan->invalidate(m_uiPlanIndex)) {
        invalidateTheLongWay();
    }
}

/// Climbs from parent to parent.
void ExpressionBaseImpl::invalidateTheLongWay() {
    *m_pValid = 0;
    m_pNextInvalid = nullptr;
    ExpressionBaseImpl* pPending = this;
    while (pPending != nullptr) {
        ExpressionBaseImpl& node = *pPending;
        pPending = node.m_pNextInvalid;
        const auto* const pEnd = node.m_bSealed ? node.m_Parents.sealedEnd() : node.m_Parents.end();
        for (const auto* ppParent = node.m_Parents.begin(); ppParent != pEnd; ++ppParent) {
            ExpressionBaseImpl& parent = **ppParent;
            if (parent.isValid()) {
                *parent.m_pValid = 0;
                parent.m_pNextInvalid = pPending;
                pPending = &parent;
            }
        }
    }
}

void ExpressionBaseImpl::seal() {
    GraphWalk::seal({this});
}

void ExpressionBaseImpl::sealAlongPaths() {
    m_Parents.seal();
    // A plan that doesn't know the new readers isn't used any more, even if this goes wrong.
    noteChange();
    m_bSealed = true;
    seal_i();
    for (const auto& pChild : m_Childs) {
        DeepCall::run([&] { pChild->sealAlongPaths(); });
    }
}

void ExpressionBaseImpl::joinPlan(const boost::intrusive_ptr<SealedPlan>& in_pPlan,
                                  std::uint32_t in_uiIndex) {
    const std::uint8_t uiValid = *m_pValid;
    noteChange();
    m_pPlan = in_pPlan;
    m_uiPlanIndex = in_uiIndex;
    m_pValid = in_uiIndex == SealedPlan::PassedOver ? &m_bValid : m_pPlan->flagOf(in_uiIndex);
    *m_pValid = uiValid;
}

void ExpressionBaseImpl::noteChange() const {
    if (m_pPlan != nullptr) {
        m_pPlan->noteChange();
    }
}

void ExpressionBaseImpl::seal_i() {}

bool ExpressionBaseImpl::getSealedInputs(std::vector<ExpressionBaseImpl*>&) const {
    return false;
}

} // namespace Velmora::Math::Xpr
