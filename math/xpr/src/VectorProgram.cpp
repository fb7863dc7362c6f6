#include "VectorProgram.h"

#include <algorithm>
#include <iterator>
#include <typeinfo>

#include <velmora/math/xpr/BinaryOperatorImpl.h>

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
                             isOperator(sourceOf(inout_Plan, step.m_uiFirst).m_eKind);
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
    const Step& source = sourceOf(inout_Plan, in_uiNode);
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
            inout_Plan.passOn(*ahead.m_pStep, *ahead.m_pSource);
        } else {
            inout_Plan.readInput(*ahead.m_pStep);
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
    const Step& source = sourceOf(inout_Plan, inout_Plan.m_vSteps[in_uiNode].m_uiFirst);
    const auto isPassedOn = [&](const Item& in_Item) {
        return in_Item.m_pStep != nullptr && in_Item.m_pStep->m_eKind == Kind::Forward &&
               &sourceOf(inout_Plan, in_Item.m_uiNode) == &source;
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

/// Where the value of a node comes from, which may be a variable that passes it on.
SealedPlan::Step& SealedPlan::VectorProgram::sourceOf(SealedPlan& inout_Plan, Index in_uiNode) {
    while (inout_Plan.m_vSteps[in_uiNode].m_eKind == Kind::Forward) {
        in_uiNode = inout_Plan.m_vSteps[in_uiNode].m_uiFirst;
    }
    return inout_Plan.m_vSteps[in_uiNode];
}

/// Lists the operators that wait, joined where they can be, and the variables that have their
/// values.
void SealedPlan::VectorProgram::flush(SealedPlan& inout_Plan) {
    for (std::size_t ui = 0; ui != m_vPending.size();) {
        Joint joint;
        const std::size_t uiJoined = findJoint(inout_Plan, ui, joint);
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

/// Finds out which of the operators from that place on can be joined. Returns their number, 0 for
/// none.
std::size_t SealedPlan::VectorProgram::findJoint(SealedPlan& inout_Plan, std::size_t in_uiFirst,
                                                 Joint& out_Joint) const {
    std::size_t uiScaled = 3;
    do {
        if (uiScaled-- == 0) {
            return 0;
        }
    } while (!findSum(inout_Plan, in_uiFirst, uiScaled, out_Joint));
    std::size_t uiJoined = uiScaled + 1;
    const Scaling behind = findScaling(inout_Plan, in_uiFirst + uiJoined);
    ScaledSum::Form form;
    if (behind.m_Part && behind.m_pSource == out_Joint.m_Sum.m_pStep) {
        out_Joint.m_Behind = behind.m_Part;
        form.m_eBehind = behind.m_Part.m_pStep->m_eKind == Kind::Divide
                             ? ScaledSum::Scale::Divide
                             : ScaledSum::Scale::Multiply;
        ++uiJoined;
    }
    form.m_bSubtract = out_Joint.m_Sum.m_pStep->m_eKind == Kind::Minus;
    form.m_bScaleLeft = static_cast<bool>(out_Joint.m_ScaledLeft);
    form.m_bScaleRight = static_cast<bool>(out_Joint.m_ScaledRight);
    out_Joint.m_Operation = ScaledSum(form);
    return uiJoined > 1 ? uiJoined : 0;
}

/// Is there a sum, or a difference, behind so many operators that scale its sides?
bool SealedPlan::VectorProgram::findSum(SealedPlan& inout_Plan, std::size_t in_uiFirst,
                                        std::size_t in_uiScaled, Joint& out_Joint) const {
    out_Joint = Joint();
    if (in_uiFirst + in_uiScaled >= m_vPending.size()) {
        return false;
    }
    const Index uiSum = m_vPending[in_uiFirst + in_uiScaled];
    const Step& sum = inout_Plan.m_vSteps[uiSum];
    const Kind eKind = sum.m_eKind;
    if ((eKind != Kind::Plus && eKind != Kind::Minus) || sum.m_pScalar != nullptr) {
        return false;
    }
    out_Joint.m_Sum = makePart(inout_Plan, uiSum, nullptr);
    out_Joint.m_pLeft = &inout_Plan.m_vSteps[sum.m_uiFirst];
    out_Joint.m_pRight = &inout_Plan.m_vSteps[sum.m_uiSecond];
    const Step* const pLeft = &sourceOf(inout_Plan, sum.m_uiFirst);
    const Step* const pRight = &sourceOf(inout_Plan, sum.m_uiSecond);
    for (std::size_t ui = in_uiFirst; ui != in_uiFirst + in_uiScaled; ++ui) {
        const Scaling scaling = findScaling(inout_Plan, ui);
        const bool bLeft = scaling.m_Part.m_pStep == pLeft;
        const bool bRight = scaling.m_Part.m_pStep == pRight;
        const bool bInOrder = in_uiScaled == 1 || bLeft == (ui == in_uiFirst);
        if (!scaling.m_Part || scaling.m_Part.m_pStep->m_eKind != Kind::Multiply ||
            bLeft == bRight || !bInOrder) {
            return false;
        }
        (bLeft ? out_Joint.m_ScaledLeft : out_Joint.m_ScaledRight) = scaling.m_Part;
        (bLeft ? out_Joint.m_pLeft : out_Joint.m_pRight) = scaling.m_pVector;
    }
    return true;
}

/// The operator at that place if it multiplies a vector by a scalar, or divides it; else none.
SealedPlan::VectorProgram::Scaling
SealedPlan::VectorProgram::findScaling(SealedPlan& inout_Plan, std::size_t in_uiPlace) const {
    if (in_uiPlace >= m_vPending.size()) {
        return {};
    }
    const Step& step = inout_Plan.m_vSteps[m_vPending[in_uiPlace]];
    const Step& first = inout_Plan.m_vSteps[step.m_uiFirst];
    const Step& second = inout_Plan.m_vSteps[step.m_uiSecond];
    const bool bByFirst = step.m_eKind == Kind::Multiply && findScalar(first) != nullptr;
    const bool bBySecond = (step.m_eKind == Kind::Multiply || step.m_eKind == Kind::Divide) &&
                           findScalar(second) != nullptr;
    if (step.m_pScalar != nullptr || bByFirst == bBySecond) {
        return {};
    }
    const Index uiVector = bByFirst ? step.m_uiSecond : step.m_uiFirst;
    return {makePart(inout_Plan, m_vPending[in_uiPlace], bByFirst ? &first : &second),
            &inout_Plan.m_vSteps[uiVector], &sourceOf(inout_Plan, uiVector)};
}

SealedPlan::VectorProgram::Part SealedPlan::VectorProgram::makePart(SealedPlan& inout_Plan,
                                                                    Index in_uiNode,
                                                                    const Step* in_pFactor) {
    Step& step = inout_Plan.m_vSteps[in_uiNode];
    return {in_uiNode, &step,
            &static_cast<BinaryOperatorImplNoT&>(*inout_Plan.m_vNodes[in_uiNode]).m_Result,
            in_pFactor};
}

/// Where the operator's result goes; null for one that the joint hasn't got. False if it isn't the
/// value of a former frame, of that size.
inline bool SealedPlan::VectorProgram::take(const Part& in_Part, std::size_t in_uiCount,
                                            double*& out_pResult) {
    if (!in_Part) {
        return true;
    }
    out_pResult = in_Part.m_pResult->begin();
    return in_Part.m_pStep->m_pVector == in_Part.m_pResult &&
           in_Part.m_pResult->size() == in_uiCount;
}

inline bool SealedPlan::VectorProgram::takeFactor(const Part& in_Part, double& out_dFactor) {
    if (!in_Part) {
        return true;
    }
    const double* const pFactor = findScalar(*in_Part.m_pFactor);
    if (pFactor != nullptr) {
        out_dFactor = *pFactor;
    }
    return pFactor != nullptr;
}

inline void SealedPlan::VectorProgram::note(SealedPlan& inout_Plan, const Part& in_Part) {
    if (in_Part) {
        in_Part.m_pStep->m_bAhead = true;
        *inout_Plan.flagOf(in_Part.m_uiNode) = 1;
    }
}

/// False, and nothing has happened, if the operands or the results haven't the shapes for it.
bool SealedPlan::VectorProgram::computeJoint(SealedPlan& inout_Plan, const Joint& in_Joint) {
    const DoubleVector* const pLeft = in_Joint.m_pLeft->m_pVector;
    const DoubleVector* const pRight = in_Joint.m_pRight->m_pVector;
    if (pLeft == nullptr || pRight == nullptr || pLeft->size() != pRight->size() ||
        pLeft->size() < 2) {
        return false;
    }
    ScaledSum::Operands operands;
    operands.m_uiCount = pLeft->size();
    operands.m_pLeft = pLeft->begin();
    operands.m_pRight = pRight->begin();
    const std::size_t uiCount = operands.m_uiCount;
    if (!take(in_Joint.m_ScaledLeft, uiCount, operands.m_pScaledLeft) ||
        !takeFactor(in_Joint.m_ScaledLeft, operands.m_dLeftFactor) ||
        !take(in_Joint.m_ScaledRight, uiCount, operands.m_pScaledRight) ||
        !takeFactor(in_Joint.m_ScaledRight, operands.m_dRightFactor) ||
        !take(in_Joint.m_Sum, uiCount, operands.m_pSum) ||
        !take(in_Joint.m_Behind, uiCount, operands.m_pScaledSum) ||
        !takeFactor(in_Joint.m_Behind, operands.m_dBehind)) {
        return false;
    }
    // A host may set a result as an input. One by one, the operators would read what was just made.
    if (operands.m_pLeft == operands.m_pScaledRight ||
        operands.m_pRight == operands.m_pScaledLeft) {
        return false;
    }
    if (operands.m_dBehind == 0.0 && in_Joint.m_Behind.m_pStep->m_eKind == Kind::Divide) {
        return false;
    }
    in_Joint.m_Operation.compute(operands);
    note(inout_Plan, in_Joint.m_ScaledLeft);
    note(inout_Plan, in_Joint.m_ScaledRight);
    note(inout_Plan, in_Joint.m_Sum);
    note(inout_Plan, in_Joint.m_Behind);
    return true;
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
        inout_Plan.passOn(step, *in_Item.m_pFirst);
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

/// Has a node of the host's evaluated some of it on the way?
bool SealedPlan::VectorProgram::isBegun(const SealedPlan& in_Plan, const Joint& in_Joint) {
    const Part* const pParts[] = {&in_Joint.m_ScaledLeft, &in_Joint.m_ScaledRight, &in_Joint.m_Sum,
                                  &in_Joint.m_Behind};
    return std::any_of(std::begin(pParts), std::end(pParts), [&](const Part* in_pPart) {
        return *in_pPart && in_Plan.isValid(in_pPart->m_uiNode);
    });
}

SealedPlan::Index SealedPlan::VectorProgram::computeOneByOne(SealedPlan& inout_Plan,
                                                             const Joint& in_Joint) {
    for (const Part* pPart :
         {&in_Joint.m_ScaledLeft, &in_Joint.m_ScaledRight, &in_Joint.m_Sum, &in_Joint.m_Behind}) {
        if (*pPart && !inout_Plan.isValid(pPart->m_uiNode) && !inout_Plan.step(pPart->m_uiNode)) {
            return pPart->m_uiNode;
        }
    }
    return PassedOver;
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
    const Joint& joint = m_vJoints[in_Item.m_uiJoint];
    return computeJoint(inout_Plan, joint) ? PassedOver : computeOneByOne(inout_Plan, joint);
}

/// The same where a node of the host's may have evaluated some of it on the way.
SealedPlan::Index SealedPlan::VectorProgram::computeSeveralAmongOthers(SealedPlan& inout_Plan,
                                                                       const Item& in_Item) const {
    if (in_Item.m_uiGroup != PassedOver) {
        const ReductionGroup& group = m_vGroups[in_Item.m_uiGroup];
        return group.isBegun(inout_Plan) ? group.computeOneByOne(inout_Plan)
                                         : computeSeveral(inout_Plan, in_Item);
    }
    const Joint& joint = m_vJoints[in_Item.m_uiJoint];
    return isBegun(inout_Plan, joint) ? computeOneByOne(inout_Plan, joint)
                                      : computeSeveral(inout_Plan, in_Item);
}

/// A node of the host's may have evaluated others on the way, or have changed something.
SealedPlan::Index SealedPlan::VectorProgram::computeAmongOthers(SealedPlan& inout_Plan) const {
    const Item* const pEnd = m_vItems.data() + m_vItems.size();
    for (const Item* pItem = m_vItems.data(); pItem != pEnd;) {
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
