// How nodes are linked to their children and parents.

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <unordered_map>
#include <vector>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "AncestorWalk.h"
#include "DeadParent.h"
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
    if (UncheckedLinks::areOnFor(*in_pChild)) {
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
    {
        const CheckedLinks checked;
        replaceChild_i(*pOldChild, pNewChild);
    }
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

void ExpressionBaseImpl::keepFormer(const Handle<ExpressionBaseImpl>& in_pOld,
                                    FormerNodes& inout_vFormer) const {
    const auto isOwner = [this](const auto& in_pNode) { return isValueOf(*in_pNode, m_pValue); };
    // What only passes a value on may let go of the node that has it.
    Handle<ExpressionBaseImpl> pHolder(in_pOld);
    Handle<ExpressionBaseImpl> pPassedOn;
    while (const FormerNodes* const pFormer = pHolder->getFormer(pPassedOn)) {
        const auto iteOwner = std::find_if(pFormer->begin(), pFormer->end(), isOwner);
        pHolder = iteOwner == pFormer->end() ? pPassedOn : *iteOwner;
    }
    if (isOwner(pHolder)) {
        inout_vFormer.clear();
    }
    if (std::none_of(inout_vFormer.begin(), inout_vFormer.end(), isOwner)) {
        inout_vFormer.push_back(pHolder);
    }
}

const ExpressionBaseImpl::FormerNodes*
ExpressionBaseImpl::getFormer(Handle<ExpressionBaseImpl>&) const {
    return nullptr;
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

void ExpressionBaseImpl::replaceChild_i(ExpressionBaseImpl&, const Handle<ExpressionBaseImpl>&) {}

} // namespace Velmora::Math::Xpr
