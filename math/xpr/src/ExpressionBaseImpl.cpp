#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <algorithm>
#include <fstream>
#include <new>
#include <unordered_map>

#include <velmora/DeepCall.h>
#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "AncestorWalk.h"
#include "DeadParent.h"
#include "DeferredRelease.h"
#include "GraphWalk.h"
#include "GraphvizFrame.h"
#include "GraphvizNodes.h"
#include "IdGenerators.h"
#include "SealedPlan.h"
#include "UncheckedLinks.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ExpressionImpl");

namespace {

/// Goes upward as long as there is one parent only, calls the function at each node, the first
/// included, and stops with true when it does. `inout_pNode` is where the way parts, or ends.
///
/// Most walks upward are such a chain, and a short one, of which nothing need be remembered; what
/// is longer may go round in a circle, which a host can make.
template <class Function>
bool climbChain(const ExpressionBaseImpl*& inout_pNode, Function in_Function) {
    constexpr std::size_t Longest = 16;
    for (std::size_t uiStep = 1; !in_Function(*inout_pNode); ++uiStep) {
        const auto* const pParents = inout_pNode->getParentBegin();
        if (uiStep == Longest || inout_pNode->getParentEnd() - pParents != 1) {
            return false;
        }
        inout_pNode = pParents->get();
    }
    return true;
}

} // namespace

ExpressionBaseImpl::ExpressionBaseImpl() : m_id(expressionIdGenerator().generateId()) {}

ExpressionBaseImpl::~ExpressionBaseImpl() {
    for (std::size_t uiChild = 0; uiChild != m_Childs.size(); ++uiChild) {
        const Handle<ExpressionBaseImpl> pChild(m_Childs[uiChild]);
        pChild->eraseParent(this);
    }
    if (m_pPlan != nullptr && m_uiPlanIndex != SealedPlan::PassedOver) {
        m_pPlan->noteDeath(m_uiPlanIndex);
    }
    releaseDeferred(m_Childs);
}

std::ostream& ExpressionBaseImpl::write(std::ostream& out_Stream) const {
    return out_Stream;
}

bool ExpressionBaseImpl::configure(const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    const GraphWalk::Outermost outermost;
    if (outermost && !GraphWalk::isShort(*this)) {
        return GraphWalk().configureRest(*this, in_pFileSystem);
    }
    if (!configure_i(in_pFileSystem)) {
        return false;
    }
    return std::all_of(m_Childs.begin(), m_Childs.end(), [&](const auto& in_pChild) {
        return DeepCall::run([&] { return in_pChild->configure(in_pFileSystem); });
    });
}

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

bool ExpressionBaseImpl::quickEvaluate(LimitedObjPtr<DoubleVector>& out) {
    evaluate(out);
    return true;
}

bool ExpressionBaseImpl::reportNoValue() const {
    VELMORA_LOG_ERROR(fileLogger(), getSourceInfo() << ":no value to compute from: " << getName());
    return false;
}

bool ExpressionBaseImpl::dump(const char* in_szFileName) const {
    VELMORA_TRACE_SCOPE(fileLogger(), "ExpressionBaseImpl::dump");
    if (in_szFileName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szFileName");
        return true;
    }
    std::ofstream file(in_szFileName, std::ios::out | std::ios::trunc);
    if (file.is_open()) {
        writeGraphvizHead(file);
        GraphvizNodes nodes(GraphWalk::isShort(*this));
        file << *this;
        nodes.writePending(file);
        writeGraphvizLegend(file, GraphvizLegend::WithParameter);
    }
    return true;
}

bool ExpressionBaseImpl::reset() {
    const GraphWalk::Outermost outermost;
    if (outermost && !GraphWalk::isShort(*this)) {
        for (ExpressionBaseImpl* pNode : GraphWalk().collect(*this)) {
            pNode->invalidate();
            if (!pNode->reset_i()) {
                return false;
            }
        }
        return true;
    }
    invalidate();
    if (!reset_i()) {
        return false;
    }
    return std::all_of(m_Childs.begin(), m_Childs.end(), [](const auto& in_pChild) {
        Expression& child = *in_pChild;
        return DeepCall::run([&] { return child.reset(); });
    });
}

void ExpressionBaseImpl::setType(const char* in_szType) {
    if (in_szType == nullptr) {
        VELMORA_ASSERT_FAIL("in_szType");
        return;
    }
    labels().m_strType = in_szType;
}

ExpressionBaseImpl::Labels& ExpressionBaseImpl::labels() const {
    if (m_pLabels == nullptr) {
        m_pLabels = std::make_unique<Labels>();
    }
    return *m_pLabels;
}

const char* ExpressionBaseImpl::getSourceInfo() const {
    if (m_Position.isSet() && labels().m_strSourceInfo.empty()) {
        labels().m_strSourceInfo = m_Position.getText();
    }
    return m_pLabels == nullptr ? "" : m_pLabels->m_strSourceInfo.c_str();
}

bool ExpressionBaseImpl::hasSourceInfo() const {
    return m_Position.isSet() || (m_pLabels != nullptr && !m_pLabels->m_strSourceInfo.empty());
}

void ExpressionBaseImpl::setSourceInfo(const char* in_szSourceInfo) {
    // It may be this node's own.
    std::string strSourceInfo(in_szSourceInfo == nullptr ? "" : in_szSourceInfo);
    if (!strSourceInfo.empty()) {
        labels();
    }
    setSourceInfo(SourcePosition());
    if (!strSourceInfo.empty()) {
        m_pLabels->m_strSourceInfo.swap(strSourceInfo);
    }
}

void ExpressionBaseImpl::setSourceInfo(const SourcePosition& in_Position) {
    m_Position = in_Position;
    if (m_pLabels != nullptr) {
        m_pLabels->m_strSourceInfo.clear();
    }
}

void ExpressionBaseImpl::copySourceInfo(const ExpressionBaseImpl& in_Source) {
    if (in_Source.m_Position.isSet()) {
        setSourceInfo(in_Source.m_Position);
    } else {
        setSourceInfo(in_Source.getSourceInfo());
    }
}

const char* ExpressionBaseImpl::getDotName() const {
    std::string& strDotName = labels().m_strDotName;
    makeDotName(getName(), m_id, strDotName);
    return strDotName.c_str();
}

Handle<ExpressionBaseImpl> ExpressionBaseImpl::getChildAt(long in_lIndex) const {
    if (in_lIndex < 0 || static_cast<std::size_t>(in_lIndex) >= m_Childs.size()) {
        return Handle<ExpressionBaseImpl>();
    }
    return m_Childs[static_cast<std::size_t>(in_lIndex)];
}

bool ExpressionBaseImpl::isChild(const ExpressionBaseImpl& in_Expression) const {
    return std::any_of(m_Childs.begin(), m_Childs.end(), [&](const auto& in_pChild) {
        return in_pChild->getId() == in_Expression.getId();
    });
}

bool ExpressionBaseImpl::isParent(const ExpressionBaseImpl& in_Expression) const {
    if (m_Parents.empty() || isConstant()) {
        return false;
    }
    const ExpressionBaseImpl* pFirst = this;
    const auto isIt = [&](const ExpressionBaseImpl& in_Node) {
        return &in_Node != this && in_Node.getId() == in_Expression.getId();
    };
    if (climbChain(pFirst, isIt)) {
        return true;
    }
    if (pFirst->m_Parents.empty()) {
        return false;
    }
    AncestorWalk walk(*pFirst);
    while (const ExpressionBaseImpl* pNode = walk.next()) {
        for (const auto& pParent : pNode->m_Parents) {
            if (pParent->getId() == in_Expression.getId()) {
                return true;
            }
            walk.add(*pParent);
        }
    }
    return false;
}

bool ExpressionBaseImpl::isDependantOf(const Handle<ExpressionBaseImpl>& in_pExpression) const {
    if (in_pExpression.isNull() || in_pExpression->isConstant()) {
        return false;
    }
    const ExpressionBaseImpl* pFirst = this;
    if (climbChain(pFirst, [&](const ExpressionBaseImpl& in_Node) {
            return in_Node.isDependantOf_i(in_pExpression);
        })) {
        return true;
    }
    if (pFirst->m_Parents.empty()) {
        return false;
    }
    AncestorWalk walk(*pFirst);
    while (const ExpressionBaseImpl* pNode = walk.next()) {
        if (pNode->isDependantOf_i(in_pExpression)) {
            return true;
        }
        for (const auto& pParent : pNode->m_Parents) {
            walk.add(*pParent);
        }
    }
    return false;
}

Handle<ExpressionBaseImpl>
ExpressionBaseImpl::getYoungerChild(const Handle<ExpressionBaseImpl>& in_pExpression) {
    if (in_pExpression.isNull()) {
        VELMORA_ASSERT_FAIL("!pExpr.isNull()");
        return Handle<ExpressionBaseImpl>();
    }
    // Those in between are held by what stands above them.
    const Handle<ExpressionBaseImpl>* ppExpression = &in_pExpression;
    while (!ppExpression->isNull()) {
        if (const VariableImpl* const pVariable = (*ppExpression)->asVariable()) {
            if (pVariable->getValue().isNull()) {
                break;
            }
            ppExpression = &pVariable->getValue();
        } else if (const ScriptFunctionImpl* const pFunction =
                       (*ppExpression)->asScriptFunction()) {
            ppExpression = &pFunction->getImplementation();
        } else {
            break;
        }
    }
    return *ppExpression;
}

void ExpressionBaseImpl::addParent(const LimitedObjPtr<ExpressionBaseImpl>& in_pParent) {
    if (in_pParent.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pParent.isNull()");
        return;
    }
    m_Parents.add(in_pParent);
}

bool ExpressionBaseImpl::removeParent(const LimitedObjPtr<ExpressionBaseImpl>& in_pParent) {
    if (in_pParent.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pParent.isNull()");
        return false;
    }
    // A parent that came after sealing isn't in the plan, such as the copy of an input, which
    // shares its value for a moment.
    if (m_pPlan != nullptr && in_pParent->m_pPlan == m_pPlan) {
        noteChange();
    }
    return eraseParent(in_pParent);
}

bool ExpressionBaseImpl::eraseParent(const LimitedObjPtr<ExpressionBaseImpl>& in_pParent) {
    if (m_Parents.removeFirst(*in_pParent)) {
        return true;
    }
    VELMORA_LOG_ERROR(fileLogger(), "Failed to remove parent (expr: "
                                        << m_id << ", pexpr: " << in_pParent->getId() << ")");
    VELMORA_ASSERT_FAIL("false");
    return false;
}

unsigned long ExpressionBaseImpl::addChild(const Handle<ExpressionBaseImpl>& in_pChild,
                                           bool in_bCheck) {
    if (in_pChild.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pChild.isNull()");
        return NoChild;
    }
    if (in_bCheck) {
        if (in_pChild->getId() == getId()) {
            VELMORA_ASSERT_FAIL("in_pChild->getId() != this->getId() && \"Can't loop on self!\"");
            return NoChild;
        }
        const Loop loop = findLoop(in_pChild);
        if (loop == Loop::OnParent) {
            VELMORA_ASSERT_FAIL("!isParent( *in_pChild ) && \"Can't loop on a parent!\"");
            return NoChild;
        }
        if (loop == Loop::OnDependant) {
            VELMORA_ASSERT_FAIL("!isDependantOf( in_pChild )");
            return NoChild;
        }
    }
    noteChange();
    in_pChild->addParent(this);
    m_Childs.push_back(in_pChild);
    return m_Childs.size() - 1;
}

bool ExpressionBaseImpl::checkNewChild(const Handle<ExpressionBaseImpl>& in_pNewChild) const {
    if (in_pNewChild.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pNewChild.isNull()");
        return false;
    }
    if (in_pNewChild->getId() == getId()) {
        VELMORA_ASSERT_FAIL("in_pNewChild->getId() != this->getId() && \"Can't loop on self!\"");
        return false;
    }
    const Loop loop = findLoop(in_pNewChild);
    if (loop == Loop::OnParent) {
        VELMORA_ASSERT_FAIL("!isParent( *in_pNewChild ) && \"Can't loop on a parent!\"");
    } else if (loop == Loop::OnDependant) {
        VELMORA_ASSERT_FAIL("!isDependantOf( in_pNewChild )");
    }
    return loop == Loop::None;
}

ExpressionBaseImpl::Loop
ExpressionBaseImpl::findLoop(const Handle<ExpressionBaseImpl>& in_pChild) const {
    if (UncheckedLinks::areOn()) {
        return Loop::None;
    }
    if (isParent(*in_pChild)) {
        return Loop::OnParent;
    }
    return isDependantOf(in_pChild) ? Loop::OnDependant : Loop::None;
}

unsigned long ExpressionBaseImpl::replaceChild(ExpressionBaseImpl& in_OldChild,
                                               const Handle<ExpressionBaseImpl>& in_pNewChild,
                                               bool /*in_bCheck*/) {
    if (!checkNewChild(in_pNewChild)) {
        return NoChild;
    }
    const auto iteFound =
        std::find_if(m_Childs.rbegin(), m_Childs.rend(), [&](const auto& in_pChild) {
            return in_pChild->getId() == in_OldChild.getId();
        });
    if (iteFound == m_Childs.rend()) {
        VELMORA_ASSERT_FAIL("iteFound != m_Childs.end()");
        return NoChild;
    }
    // The entry may hold the last handle, and the caller's reference is used to the end.
    const Handle<ExpressionBaseImpl> pOldChild(*iteFound);
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const Handle<ExpressionBaseImpl> pNewChild(in_pNewChild);
    noteChange();
    pOldChild->removeParent(this);
    pNewChild->addParent(this);
    *iteFound = pNewChild;
    replaceChild_i(*pOldChild, pNewChild);
    return static_cast<unsigned long>(std::distance(iteFound, m_Childs.rend()) - 1);
}

bool ExpressionBaseImpl::replace(const Handle<ExpressionBaseImpl>& in_pNewExpression) {
    if (!in_pNewExpression.isNull() && &*in_pNewExpression == this) {
        VELMORA_ASSERT_FAIL("in_pNewExpression != this");
        return false;
    }
    const Handle<ExpressionBaseImpl> pThis = holdByParent();
    // What the storage of the list holds while it shrinks beneath the walk: the live entries, and
    // behind them what stood there before.
    std::vector<LimitedObjPtr<ExpressionBaseImpl>> vStorage(m_Parents.begin(), m_Parents.end());
    for (std::size_t uiPosition = 0; uiPosition != vStorage.size(); ++uiPosition) {
        const LimitedObjPtr<ExpressionBaseImpl> pParent(vStorage[uiPosition]);
        pParent->replaceChild(*this, in_pNewExpression, true);
        std::copy_n(m_Parents.begin(), std::min(m_Parents.size(), vStorage.size()),
                    vStorage.begin());
    }
    return true;
}

Handle<ExpressionBaseImpl> ExpressionBaseImpl::holdByParent() const {
    for (const auto& pParent : m_Parents) {
        for (const auto& pChild : pParent->m_Childs) {
            if (&*pChild == this) {
                return pChild;
            }
        }
    }
    return Handle<ExpressionBaseImpl>();
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

void ExpressionBaseImpl::unregisterFrom(ExpressionBaseImpl& inout_Other) {
    inout_Other.eraseParent(this);
}

void ExpressionBaseImpl::retireFrom(ExpressionBaseImpl& inout_Child) {
    const auto iLinks = std::count_if(m_Childs.begin(), m_Childs.end(), [&](const auto& in_pChild) {
        return &*in_pChild == &inout_Child;
    });
    inout_Child.m_Parents.replaceBehind(static_cast<std::size_t>(iLinks), *this, deadParent());
}

void ExpressionBaseImpl::retireFrom(const std::vector<Handle<ExpressionBaseImpl>>& in_vChilds) {
    constexpr std::size_t FewChilds = 8;
    std::unordered_map<const ExpressionBaseImpl*, std::size_t> mapLinks;
    try {
        if (in_vChilds.size() > FewChilds) {
            for (const auto& pChild : m_Childs) {
                ++mapLinks[&*pChild];
            }
        }
    } catch (const std::bad_alloc&) {
        // A destructor can do without a table.
        mapLinks.clear();
    }
    for (const auto& pChild : in_vChilds) {
        if (pChild.isNull()) {
            continue;
        }
        if (mapLinks.empty()) {
            retireFrom(*pChild);
            continue;
        }
        const auto iteLinks = mapLinks.find(&*pChild);
        pChild->m_Parents.replaceBehind(iteLinks == mapLinks.end() ? 0 : iteLinks->second, *this,
                                        deadParent());
    }
}

Handle<ExpressionBaseImpl> ExpressionBaseImpl::copy() const {
    ExpressionImplCopier copier;
    return copy(copier);
}

Handle<ExpressionBaseImpl> ExpressionBaseImpl::copy(ExpressionImplCopier& inout_Copier) const {
    Handle<ExpressionBaseImpl> pCopy = inout_Copier.getCopy(*this);
    if (!pCopy.isNull()) {
        return pCopy;
    }
    pCopy = DeepCall::run([&] { return copy_i(inout_Copier); });
    if (pCopy.isNull()) {
        VELMORA_LOG_ERROR(fileLogger(), "Failed to copy the expression: " << *this);
        return pCopy;
    }
    if (!inout_Copier.registerCopy(*this, pCopy)) {
        VELMORA_ASSERT_FAIL("in_Copier.registerCopy( *this, pCopy )");
    }
    pCopy->fill(*this, inout_Copier);
    return pCopy;
}

void ExpressionBaseImpl::fill(const ExpressionBaseImpl& in_Source, ExpressionImplCopier&) {
    if (*in_Source.getType() != '\0' || *getType() != '\0') {
        labels().m_strType = in_Source.getType();
    }
    copySourceInfo(in_Source);
    *m_pValid = 0;
}

void ExpressionBaseImpl::seal_i() {}

bool ExpressionBaseImpl::getSealedInputs(std::vector<ExpressionBaseImpl*>&) const {
    return false;
}

void ExpressionBaseImpl::replaceChild_i(ExpressionBaseImpl&, const Handle<ExpressionBaseImpl>&) {}

} // namespace Velmora::Math::Xpr
