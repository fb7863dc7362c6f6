#include "VectorProgram.h"

#include <algorithm>
#include <iterator>
#include <typeinfo>

#include "SealedPlanNeeds.h"
#include "SealedPlanSteps.h"

namespace Velmora::Math::Xpr {

namespace {

/// Joints that a program has room for. What is beyond is computed node by node.
constexpr std::size_t MaxJoints = 64;

} // namespace

void SealedPlan::VectorProgram::reserve(const SealedPlan& in_Plan, const Needs& in_Needs) {
    const auto uiOperators = static_cast<std::size_t>(
        std::count_if(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), [&](Index in_uiNode) {
            return isOperator(in_Plan.m_vSteps[in_uiNode].m_eKind);
        }));
    const std::size_t uiOthers = in_Needs.m_vOrder.size() - uiOperators;
    const auto uiReductions = static_cast<std::size_t>(
        std::count_if(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), [&](Index in_uiNode) {
            return in_Plan.m_vSteps[in_uiNode].m_eKind == Kind::Reduce;
        }));
    m_vAhead.reserve(uiOthers);
    m_vItems.reserve(in_Needs.m_vOrder.size());
    m_vPending.reserve(uiOperators);
    m_vBehind.reserve(uiOthers);
    m_vJoints.reserve(std::min(uiOperators / 2, MaxJoints));
    m_vGroups.reserve(uiReductions);
}

void SealedPlan::VectorProgram::make(SealedPlan& inout_Plan, const Needs& in_Needs) {
    m_vAhead.clear();
    m_vItems.clear();
    m_vJoints.clear();
    m_vGroups.clear();
    m_vPending.clear();
    m_vBehind.clear();
    m_bOthers = false;
    for (const Index uiNode : in_Needs.m_vOrder) {
        const Step& step = inout_Plan.m_vSteps[uiNode];
        if (inout_Plan.wasValid(uiNode)) {
            continue;
        }
        if (isOperator(step.m_eKind)) {
            m_vPending.push_back(uiNode);
            continue;
        }
        // Inputs and variables may come out of their turn: all has been computed before. But a
        // variable isn't valid ahead of the node whose value it has.
        if (isKnownAhead(inout_Plan, uiNode)) {
            appendAhead(inout_Plan, uiNode);
            continue;
        }
        if (!inout_Plan.isSilent(uiNode)) {
            flush(inout_Plan);
            m_bOthers = m_bOthers || step.m_eKind == Kind::Other;
        }
        if (step.m_eKind == Kind::Reduce) {
            appendReduction(inout_Plan, uiNode);
            continue;
        }
        const bool bBehind = step.m_eKind == Kind::Forward &&
                             isOperator(inout_Plan.sourceOf(step.m_uiFirst).m_eKind);
        if (bBehind) {
            m_vBehind.push_back(uiNode);
        } else {
            appendNode(inout_Plan, uiNode);
        }
    }
    flush(inout_Plan);
    findTogether(inout_Plan);
}

/// Marks the nodes of one class, one behind the other, that cost less together.
void SealedPlan::VectorProgram::findTogether(const SealedPlan& in_Plan) {
    const auto nodeOf = [&](const Item& in_Item) {
        const bool bOther = in_Item.m_pStep != nullptr && in_Item.m_pStep->m_eKind == Kind::Other;
        return bOther ? in_Plan.m_vNodes[in_Item.m_uiNode] : nullptr;
    };
    const auto areAlike = [](const ExpressionBaseImpl& in_First,
                             const ExpressionBaseImpl* in_pOther) {
        return in_pOther != nullptr && typeid(*in_pOther) == typeid(in_First);
    };
    for (auto ite = m_vItems.begin(); ite != m_vItems.end();) {
        const ExpressionBaseImpl* const pFirst = nodeOf(*ite);
        auto iteEnd = ite + 1;
        if (pFirst != nullptr && pFirst->isBetterTogether()) {
            const auto iteLimit = ite + std::min<std::ptrdiff_t>(ExpressionBaseImpl::MaxTogether,
                                                                 m_vItems.end() - ite);
            iteEnd = std::find_if_not(iteEnd, iteLimit, [&](const Item& in_Item) {
                return areAlike(*pFirst, nodeOf(in_Item));
            });
        }
        ite->m_uiTogether = static_cast<std::size_t>(iteEnd - ite);
        ite = iteEnd;
    }
}

/// False, and nothing has happened, if they have to be computed one by one.
bool SealedPlan::VectorProgram::computeTogether(SealedPlan& inout_Plan, const Item* in_pFirst) {
    const std::size_t uiCount = in_pFirst->m_uiTogether;
    ExpressionBaseImpl* nodes[ExpressionBaseImpl::MaxTogether] = {};
    LimitedObjPtr<DoubleVector> values[ExpressionBaseImpl::MaxTogether];
    for (std::size_t ui = 0; ui != uiCount; ++ui) {
        if (inout_Plan.isValid(in_pFirst[ui].m_uiNode)) {
            return false;
        }
        nodes[ui] = inout_Plan.m_vNodes[in_pFirst[ui].m_uiNode];
    }
    if (!nodes[0]->evaluateTogether_i(nodes, uiCount, values)) {
        return false;
    }
    for (std::size_t ui = 0; ui != uiCount; ++ui) {
        nodes[ui]->m_pValue = values[ui];
        in_pFirst[ui].m_pStep->m_pVector = values[ui].get();
        inout_Plan.lookAtHanded(in_pFirst[ui].m_uiNode);
        *inout_Plan.flagOf(in_pFirst[ui].m_uiNode) = 1;
    }
    return true;
}

/// Is the node's value one of an input, or of what is valid as the frame begins?
bool SealedPlan::VectorProgram::isKnownAhead(SealedPlan& inout_Plan, Index in_uiNode) {
    const Step& source = inout_Plan.sourceOf(in_uiNode);
    return source.m_eKind == Kind::Input || inout_Plan.wasValid(inout_Plan.placeOf(source));
}

void SealedPlan::VectorProgram::appendAhead(SealedPlan& inout_Plan, Index in_uiNode) {
    Step& step = inout_Plan.m_vSteps[in_uiNode];
    const bool bForward = step.m_eKind == Kind::Forward;
    m_vAhead.push_back(
        {in_uiNode, &step, bForward ? &inout_Plan.m_vSteps[step.m_uiFirst] : nullptr});
}

/// As the frame has just begun, nobody has come before.
inline void SealedPlan::VectorProgram::computeAhead(SealedPlan& inout_Plan) const {
    std::uint8_t* const pValid = inout_Plan.flagOf(0);
    for (const Ahead& ahead : m_vAhead) {
        if (ahead.m_pSource != nullptr) {
            inout_Plan.passOn(*ahead.m_pStep, ahead.m_uiNode, *ahead.m_pSource);
        } else {
            inout_Plan.readInput(*ahead.m_pStep, ahead.m_uiNode);
        }
        pValid[ahead.m_uiNode] = 1;
    }
}

void SealedPlan::VectorProgram::appendNode(SealedPlan& inout_Plan, Index in_uiNode) {
    Item item;
    item.m_uiNode = in_uiNode;
    item.m_pStep = &inout_Plan.m_vSteps[in_uiNode];
    if (item.m_pStep->m_eKind <= Kind::Forward) {
        item.m_pFirst = &inout_Plan.m_vSteps[item.m_pStep->m_uiFirst];
        item.m_pSecond = &inout_Plan.m_vSteps[item.m_pStep->m_uiSecond];
    }
    m_vItems.push_back(item);
}

/// Into the group ahead of it where only variables stand between them that pass on what the group
/// reads. The group moves behind these.
void SealedPlan::VectorProgram::appendReduction(SealedPlan& inout_Plan, Index in_uiNode) {
    const Step& source = inout_Plan.sourceOf(inout_Plan.m_vSteps[in_uiNode].m_uiFirst);
    const auto isPassedOn = [&](const Item& in_Item) {
        return in_Item.m_pStep != nullptr && in_Item.m_pStep->m_eKind == Kind::Forward &&
               &inout_Plan.sourceOf(in_Item.m_uiNode) == &source;
    };
    const auto riteLast = std::find_if_not(m_vItems.rbegin(), m_vItems.rend(), isPassedOn);
    if (riteLast != m_vItems.rend() && riteLast->m_uiGroup != PassedOver) {
        ReductionGroup& group = m_vGroups[riteLast->m_uiGroup];
        if (group.getInput() == &source && group.add(inout_Plan, in_uiNode)) {
            std::rotate(riteLast.base() - 1, riteLast.base(), m_vItems.end());
            return;
        }
    }
    Item item;
    item.m_uiGroup = static_cast<Index>(m_vGroups.size());
    m_vGroups.emplace_back(source);
    m_vGroups.back().add(inout_Plan, in_uiNode);
    m_vItems.push_back(item);
}

/// Lists the operators that wait, joined where they can be, and the variables that have their
/// values.
void SealedPlan::VectorProgram::flush(SealedPlan& inout_Plan) {
    for (std::size_t ui = 0; ui != m_vPending.size();) {
        SumJoint joint;
        const std::size_t uiJoined = joint.find(inout_Plan, m_vPending, ui);
        if (uiJoined != 0 && m_vJoints.size() != m_vJoints.capacity()) {
            Item item;
            item.m_uiJoint = static_cast<Index>(m_vJoints.size());
            m_vItems.push_back(item);
            m_vJoints.push_back(joint);
            ui += uiJoined;
        } else {
            appendNode(inout_Plan, m_vPending[ui++]);
        }
    }
    m_vPending.clear();
    for (const Index uiNode : m_vBehind) {
        appendNode(inout_Plan, uiNode);
    }
    m_vBehind.clear();
}

/// The short way to what isn't an operator on vectors.
inline bool SealedPlan::VectorProgram::computeNode(SealedPlan& inout_Plan, const Item& in_Item) {
    Step& step = *in_Item.m_pStep;
    switch (step.m_eKind) {
    case Kind::Plus:
    case Kind::Minus:
    case Kind::Multiply:
        if (!computeScalar(step, *in_Item.m_pFirst, *in_Item.m_pSecond)) {
            return inout_Plan.step(in_Item.m_uiNode);
        }
        break;
    case Kind::Forward:
        inout_Plan.passOn(step, in_Item.m_uiNode, *in_Item.m_pFirst);
        break;
    case Kind::Concatenate:
        if (!inout_Plan.concatenate(in_Item.m_uiNode)) {
            return inout_Plan.step(in_Item.m_uiNode);
        }
        break;
    case Kind::Other:
        if (!inout_Plan.computeByNode(step, in_Item.m_uiNode)) {
            inout_Plan.noteFailure(1);
            return false;
        }
        break;
    default:
        return inout_Plan.step(in_Item.m_uiNode);
    }
    *inout_Plan.flagOf(in_Item.m_uiNode) = 1;
    return true;
}

SealedPlan::Index SealedPlan::VectorProgram::run(SealedPlan& inout_Plan) const {
    computeAhead(inout_Plan);
    return m_bOthers ? computeAmongOthers(inout_Plan) : computeAlone(inout_Plan);
}

SealedPlan::Index SealedPlan::VectorProgram::computeAlone(SealedPlan& inout_Plan) const {
    for (const Item& item : m_vItems) {
        if (item.m_pStep != nullptr) {
            if (!computeNode(inout_Plan, item)) {
                return item.m_uiNode;
            }
            continue;
        }
        const Index uiFailed = computeSeveral(inout_Plan, item);
        if (uiFailed != PassedOver) {
            return uiFailed;
        }
    }
    return PassedOver;
}

/// What one pass computes, if it can, of which nothing has been computed.
inline SealedPlan::Index SealedPlan::VectorProgram::computeSeveral(SealedPlan& inout_Plan,
                                                                   const Item& in_Item) const {
    if (in_Item.m_uiGroup != PassedOver) {
        const ReductionGroup& group = m_vGroups[in_Item.m_uiGroup];
        return group.compute(inout_Plan) ? PassedOver : group.computeOneByOne(inout_Plan);
    }
    const SumJoint& joint = m_vJoints[in_Item.m_uiJoint];
    return joint.compute(inout_Plan) ? PassedOver : joint.computeOneByOne(inout_Plan);
}

/// The same where a node of the host's may have evaluated some of it on the way.
SealedPlan::Index SealedPlan::VectorProgram::computeSeveralAmongOthers(SealedPlan& inout_Plan,
                                                                       const Item& in_Item) const {
    if (in_Item.m_uiGroup != PassedOver) {
        const ReductionGroup& group = m_vGroups[in_Item.m_uiGroup];
        return group.isBegun(inout_Plan) ? group.computeOneByOne(inout_Plan)
                                         : computeSeveral(inout_Plan, in_Item);
    }
    const SumJoint& joint = m_vJoints[in_Item.m_uiJoint];
    return joint.isBegun(inout_Plan) ? joint.computeOneByOne(inout_Plan)
                                     : computeSeveral(inout_Plan, in_Item);
}

/// A node of the host's may have evaluated others on the way, or have changed something.
SealedPlan::Index SealedPlan::VectorProgram::computeAmongOthers(SealedPlan& inout_Plan) const {
    const Item* const pEnd = m_vItems.data() + m_vItems.size();
    for (const Item* pItem = m_vItems.data(); pItem != pEnd;) {
        const bool bForward = pItem->m_pStep != nullptr && pItem->m_pStep->m_eKind == Kind::Forward;
        if (bForward) {
            // Nobody hears of it: nothing can be disturbed.
            if (!inout_Plan.isValid(pItem->m_uiNode)) {
                inout_Plan.passOn(*pItem->m_pStep, pItem->m_uiNode, *pItem->m_pFirst);
                *inout_Plan.flagOf(pItem->m_uiNode) = 1;
            }
            ++pItem;
            continue;
        }
        std::size_t uiComputed = 1;
        if (pItem->m_uiTogether != 1 && computeTogether(inout_Plan, pItem)) {
            uiComputed = pItem->m_uiTogether;
        } else if (pItem->m_pStep != nullptr) {
            if (!inout_Plan.isValid(pItem->m_uiNode) && !computeNode(inout_Plan, *pItem)) {
                return pItem->m_uiNode;
            }
        } else {
            const Index uiFailed = computeSeveralAmongOthers(inout_Plan, *pItem);
            if (uiFailed != PassedOver) {
                return uiFailed;
            }
        }
        if (inout_Plan.m_bDisturbed) {
            return Disturbed;
        }
        pItem += uiComputed;
    }
    return PassedOver;
}

} // namespace Velmora::Math::Xpr
