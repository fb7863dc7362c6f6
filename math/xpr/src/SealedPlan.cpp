#include "SealedPlan.h"

#include <algorithm>
#include <iterator>
#include <typeinfo>

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "GraphWalk.h"

namespace Velmora::Math::Xpr {

namespace {

constexpr std::size_t FlagsPerWord = 8;

/// Words that the sets of readers of all inputs may take together: 8 MiB.
constexpr std::size_t MaxReaderWords = std::size_t(1) << 19;

} // namespace

/// Puts a plan together.
class SealedPlan::Builder {
public:
    explicit Builder(SealedPlan& out_Plan) : m_Plan(out_Plan) {}

    void build(const Nodes& in_vRoots) {
        for (ExpressionBaseImpl* pRoot : in_vRoots) {
            enter(*pRoot);
            while (!m_vPath.empty()) {
                advance();
            }
        }
        m_Plan.m_vInputsBegin.push_back(static_cast<Index>(m_Plan.m_vInputs.size()));
        m_Plan.m_vValid.resize((m_Plan.m_vSteps.size() + FlagsPerWord - 1) / FlagsPerWord);
        m_Plan.m_vReaders.resize(m_Plan.m_vSteps.size());
        m_Plan.m_vNeeds.resize(m_Plan.m_vSteps.size());
        m_Plan.m_uiNeedsRoom = 64 * m_Plan.m_vSteps.size() + 1024;
    }

    Index find(const ExpressionBaseImpl& in_Node) const {
        return m_Walk.hasEntered(in_Node) ? in_Node.m_uiWalkPlace : PassedOver;
    }

    /// For each input of the graph, what reads it. None at all if a node chooses what it reads:
    /// what its unused branch reads doesn't reach it.
    void buildReaders() {
        const auto isPlanned = [](const Step& in_Step) { return in_Step.m_bPlanned; };
        std::vector<Step>& vSteps = m_Plan.m_vSteps;
        if (!std::all_of(vSteps.begin(), vSteps.end(), isPlanned)) {
            return;
        }
        listReaders();
        std::size_t uiWords = 0;
        for (Index uiNode = 0; uiNode != vSteps.size(); ++uiNode) {
            const ExpressionBaseImpl& node = *vSteps[uiNode].m_pNode;
            if (typeid(node) != typeid(DomainValueNoCopyImpl)) {
                continue;
            }
            auto pSet = std::make_unique<NodeSet>(makeSet(listAllReaders(uiNode)));
            uiWords += pSet->m_vWords.size();
            if (uiWords > MaxReaderWords) {
                return;
            }
            m_Plan.m_vReaders[uiNode] = std::move(pSet);
        }
    }

    static NodeSet makeSet(std::vector<Index> in_vNodes) {
        std::sort(in_vNodes.begin(), in_vNodes.end());
        NodeSet set;
        for (const Index uiNode : in_vNodes) {
            const std::size_t uiPlace = uiNode / FlagsPerWord;
            if (set.m_vWords.empty() || set.m_vWords.back().m_uiPlace != uiPlace) {
                set.m_vWords.push_back({0, uiPlace});
            }
            set.m_vWords.back().m_Flags |= Flags(1) << (uiNode % FlagsPerWord * 8);
        }
        return set;
    }

private:
    struct Place {
        ExpressionBaseImpl* m_pNode;
        std::vector<ExpressionBaseImpl*> m_vInputs;
        std::size_t m_uiNext;
        bool m_bKnown;
    };

    void enter(ExpressionBaseImpl& in_Node) {
        if (m_Walk.enter(in_Node)) {
            Place place{&in_Node, {}, 0, false};
            place.m_bKnown = in_Node.getSealedInputs(place.m_vInputs);
            if (!place.m_bKnown) {
                // What it may read is still part of the graph.
                place.m_vInputs.clear();
                for (const auto& pChild : in_Node.m_Childs) {
                    place.m_vInputs.push_back(&*pChild);
                }
            }
            m_vPath.push_back(std::move(place));
        }
    }

    void advance() {
        Place& place = m_vPath.back();
        if (place.m_uiNext != place.m_vInputs.size()) {
            enter(*place.m_vInputs[place.m_uiNext++]);
            return;
        }
        append(place);
        m_vPath.pop_back();
    }

    void append(const Place& in_Place) {
        ExpressionBaseImpl& node = *in_Place.m_pNode;
        Step step;
        step.m_pNode = &node;
        step.m_bPlanned = in_Place.m_bKnown;
        m_Plan.m_vInputsBegin.push_back(static_cast<Index>(m_Plan.m_vInputs.size()));
        for (const ExpressionBaseImpl* pInput : in_Place.m_vInputs) {
            const Index uiInput = pInput->m_uiWalkPlace;
            m_Plan.m_vInputs.push_back(uiInput);
            step.m_bPlanned = step.m_bPlanned && m_Plan.m_vSteps[uiInput].m_bPlanned;
        }
        if (in_Place.m_bKnown && in_Place.m_vInputs.empty()) {
            const std::type_info& type = typeid(node);
            if (type == typeid(ConstantImpl)) {
                step.m_eKind = Kind::Constant;
            } else if (type == typeid(DomainValueNoCopyImpl)) {
                step.m_eKind = Kind::Input;
            }
        } else if (in_Place.m_bKnown) {
            step.m_uiFirst = in_Place.m_vInputs.front()->m_uiWalkPlace;
            step.m_uiSecond = in_Place.m_vInputs.back()->m_uiWalkPlace;
            step.m_eKind = kindOf(node);
        }
        node.m_uiWalkPlace = static_cast<Index>(m_Plan.m_vSteps.size());
        m_Plan.m_vSteps.push_back(step);
    }

    static Kind kindOf(const ExpressionBaseImpl& in_Node) {
        const std::type_info& type = typeid(in_Node);
        if (type == typeid(OperatorPlus)) {
            return Kind::Plus;
        }
        if (type == typeid(OperatorMinus)) {
            return Kind::Minus;
        }
        if (type == typeid(OperatorMultiply)) {
            return Kind::Multiply;
        }
        if (type == typeid(OperatorDivide)) {
            return Kind::Divide;
        }
        const bool bForward = type == typeid(VariableImpl) || type == typeid(Argument) ||
                              type == typeid(DomainVariableImpl) ||
                              type == typeid(ScriptFunctionImpl);
        return bForward ? Kind::Forward : Kind::Other;
    }

    void listReaders() {
        const std::size_t uiNodes = m_Plan.m_vSteps.size();
        m_vReadersBegin.assign(uiNodes + 1, 0);
        for (const Index uiInput : m_Plan.m_vInputs) {
            ++m_vReadersBegin[uiInput + 1];
        }
        for (std::size_t uiNode = 0; uiNode != uiNodes; ++uiNode) {
            m_vReadersBegin[uiNode + 1] += m_vReadersBegin[uiNode];
        }
        m_vReaders.resize(m_Plan.m_vInputs.size());
        std::vector<Index> vNext(m_vReadersBegin);
        for (Index uiNode = 0; uiNode != uiNodes; ++uiNode) {
            for (Index ui = m_Plan.m_vInputsBegin[uiNode]; ui != m_Plan.m_vInputsBegin[uiNode + 1];
                 ++ui) {
                m_vReaders[vNext[m_Plan.m_vInputs[ui]]++] = uiNode;
            }
        }
    }

    std::vector<Index> listAllReaders(Index in_uiNode) const {
        std::vector<bool> vSeen(m_Plan.m_vSteps.size());
        std::vector<Index> vNodes{in_uiNode};
        vSeen[in_uiNode] = true;
        for (std::size_t uiNode = 0; uiNode != vNodes.size(); ++uiNode) {
            for (Index ui = m_vReadersBegin[vNodes[uiNode]];
                 ui != m_vReadersBegin[vNodes[uiNode] + 1]; ++ui) {
                if (!vSeen[m_vReaders[ui]]) {
                    vSeen[m_vReaders[ui]] = true;
                    vNodes.push_back(m_vReaders[ui]);
                }
            }
        }
        return vNodes;
    }

    SealedPlan& m_Plan;
    const GraphWalk m_Walk;
    std::vector<Place> m_vPath;
    std::vector<Index> m_vReaders;
    std::vector<Index> m_vReadersBegin;
};

void SealedPlan::make(const Nodes& in_vRoots, const Nodes& in_vNodes) {
    const auto pPlan = std::make_shared<SealedPlan>();
    Builder builder(*pPlan);
    builder.build(in_vRoots);
    builder.buildReaders();

    for (ExpressionBaseImpl* pNode : in_vNodes) {
        pNode->joinPlan(pPlan, builder.find(*pNode));
    }
    // A change must reach every parent: those outside of these graphs can't be told by a plan.
    for (const ExpressionBaseImpl* pNode : in_vNodes) {
        const bool bAllPlanned =
            std::all_of(pNode->m_Parents.begin(), pNode->m_Parents.sealedEnd(),
                        [&](const auto& in_pParent) { return in_pParent->m_pPlan == pPlan; });
        if (!bAllPlanned) {
            pPlan->m_bUsable = false;
        }
        if (pNode->isValid() && pNode->m_uiPlanIndex == PassedOver) {
            pPlan->m_bUsable = false;
        }
    }
    pPlan->m_bIntact = pPlan->isIntact();
    std::for_each(pPlan->m_vSteps.begin(), pPlan->m_vSteps.end(), look);
}

bool SealedPlan::areInputsValid(Index in_uiNode) const {
    return std::all_of(m_vInputs.begin() + m_vInputsBegin[in_uiNode],
                       m_vInputs.begin() + m_vInputsBegin[in_uiNode + 1],
                       [this](Index in_uiInput) { return isValid(in_uiInput); });
}

bool SealedPlan::isIntact() const {
    for (Index uiNode = 0; uiNode != m_vSteps.size(); ++uiNode) {
        if (m_vSteps[uiNode].m_bPlanned && isValid(uiNode) && !areInputsValid(uiNode)) {
            return false;
        }
    }
    return true;
}

void SealedPlan::noteLongWay(Index in_uiNode) {
    look(m_vSteps[in_uiNode]);
    // The look at all takes as long as the list; it is spread over as many frames.
    constexpr std::size_t NodesPerFrame = 16;
    if (!m_bIntact && m_bUsable && ++m_uiLongWays % (1 + m_vSteps.size() / NodesPerFrame) == 0 &&
        isIntact()) {
        m_bIntact = true;
        std::for_each(m_vSteps.begin(), m_vSteps.end(), look);
    }
}

void SealedPlan::look(Step& inout_Step) {
    if (inout_Step.m_pNode != nullptr) {
        inout_Step.m_pVector = inout_Step.m_pNode->m_pValue.get();
        inout_Step.m_pScalar = nullptr;
        inout_Step.m_bAhead = false;
        noteConstant(inout_Step);
    }
}

/// A constant never changes, so that its element can be read without asking for the size.
void SealedPlan::noteConstant(Step& inout_Step) {
    if (inout_Step.m_eKind == Kind::Constant && inout_Step.m_pVector != nullptr &&
        inout_Step.m_pVector->size() == 1) {
        inout_Step.m_pScalar = const_cast<double*>(inout_Step.m_pVector->begin());
    }
}

/// Leaves the operators as the long way would have: with the pointers that they read last.
void SealedPlan::leave() {
    if (!m_bUsable || !m_bIntact) {
        return;
    }
    for (Step& step : m_vSteps) {
        if (step.m_bAhead && step.m_pNode != nullptr) {
            auto& op = static_cast<BinaryOperatorImplNoT&>(*step.m_pNode);
            op.m_pLeftValue = const_cast<DoubleVector*>(m_vSteps[step.m_uiFirst].m_pVector);
            op.m_pRightValue = const_cast<DoubleVector*>(m_vSteps[step.m_uiSecond].m_pVector);
            step.m_bAhead = false;
        }
    }
}

bool SealedPlan::computeVectors(Step& inout_Step) {
    const Step& first = m_vSteps[inout_Step.m_uiFirst];
    const Step& second = m_vSteps[inout_Step.m_uiSecond];
    auto& op = static_cast<BinaryOperatorImplNoT&>(*inout_Step.m_pNode);
    inout_Step.m_pScalar = nullptr;
    if (first.m_pVector == nullptr || second.m_pVector == nullptr) {
        return op.reportNoValue();
    }
    inout_Step.m_bAhead = true;
    inout_Step.m_pNode->m_pValue = &op.m_Result;
    inout_Step.m_pVector = &op.m_Result;
    if (!computeKnown(inout_Step.m_eKind, *first.m_pVector, *second.m_pVector, op.m_Result) &&
        !op.calculate(*first.m_pVector, *second.m_pVector, op.m_Result)) {
        return false;
    }
    if (op.m_Result.size() == 1) {
        inout_Step.m_pScalar = op.m_Result.begin();
    }
    return true;
}

/// What the operator would do with sides that it doesn't complain of. False for others.
bool SealedPlan::computeKnown(Kind in_eKind, const DoubleVector& in_Left,
                              const DoubleVector& in_Right, DoubleVector& out) {
    const std::size_t uiLeft = in_Left.size();
    const std::size_t uiRight = in_Right.size();
    if (uiLeft == 0 || uiRight == 0) {
        return false;
    }
    switch (in_eKind) {
    case Kind::Plus:
        if (uiLeft == uiRight) {
            out.setSum(in_Left, in_Right);
        }
        return uiLeft == uiRight;
    case Kind::Minus:
        if (uiLeft == uiRight) {
            out.setDifference(in_Left, in_Right);
        }
        return uiLeft == uiRight;
    case Kind::Multiply:
        if (uiLeft == 1) {
            out.setProduct(in_Right, *in_Left.begin());
        } else if (uiRight == 1) {
            out.setProduct(in_Left, *in_Right.begin());
        }
        return uiLeft == 1 || uiRight == 1;
    default:
        const bool bKnown = in_eKind == Kind::Divide && uiRight == 1 && *in_Right.begin() != 0.0;
        if (bKnown) {
            out.setQuotient(in_Left, *in_Right.begin());
        }
        return bKnown;
    }
}

bool SealedPlan::computeOperator(Step& inout_Step) {
    const auto isScalar = [](const Step& in_Input) {
        return in_Input.m_pScalar != nullptr ||
               (in_Input.m_pVector != nullptr && in_Input.m_pVector->size() == 1);
    };
    const auto scalar = [](const Step& in_Input) {
        return in_Input.m_pScalar != nullptr ? *in_Input.m_pScalar : *in_Input.m_pVector->begin();
    };
    const Step& first = m_vSteps[inout_Step.m_uiFirst];
    const Step& second = m_vSteps[inout_Step.m_uiSecond];
    // A scalar that stays one is written in its place. All else goes through the operator.
    if (inout_Step.m_pScalar == nullptr || !isScalar(first) || !isScalar(second)) {
        return computeVectors(inout_Step);
    }
    const double dFirst = scalar(first);
    const double dSecond = scalar(second);
    switch (inout_Step.m_eKind) {
    case Kind::Plus:
        *inout_Step.m_pScalar = dFirst + dSecond;
        return true;
    case Kind::Minus:
        *inout_Step.m_pScalar = dFirst - dSecond;
        return true;
    case Kind::Multiply:
        *inout_Step.m_pScalar = dFirst * dSecond;
        return true;
    default:
        if (dSecond == 0.0) {
            return computeVectors(inout_Step);
        }
        *inout_Step.m_pScalar = dFirst / dSecond;
        return true;
    }
}

bool SealedPlan::compute(Step& inout_Step) {
    switch (inout_Step.m_eKind) {
    case Kind::Constant:
    case Kind::Input:
    case Kind::Other:
        if (!inout_Step.m_pNode->evaluate_i(inout_Step.m_pNode->m_pValue)) {
            return false;
        }
        inout_Step.m_pVector = inout_Step.m_pNode->m_pValue.get();
        noteConstant(inout_Step);
        return true;
    case Kind::Forward: {
        const DoubleVector* const pVector = m_vSteps[inout_Step.m_uiFirst].m_pVector;
        if (inout_Step.m_pVector != pVector) {
            inout_Step.m_pVector = pVector;
            inout_Step.m_pNode->m_pValue = const_cast<DoubleVector*>(pVector);
        }
        return true;
    }
    default:
        return computeOperator(inout_Step);
    }
}

bool SealedPlan::step(Index in_uiNode) {
    if (!compute(m_vSteps[in_uiNode])) {
        noteFailure();
        return false;
    }
    *flagOf(in_uiNode) = 1;
    return true;
}

bool SealedPlan::evaluate(Index in_uiNode, bool& out_bSuccess) {
    if (!m_bUsable || !m_bIntact || !m_vSteps[in_uiNode].m_bPlanned) {
        return false;
    }
    bool bIsNear = false;
    Index uiFailed = computeNear(in_uiNode, bIsNear);
    if (!bIsNear) {
        const NodeSet* const pNeeds = findNeeds(in_uiNode);
        if (pNeeds == nullptr) {
            return false;
        }
        uiFailed = pNeeds->m_bInOrder ? computeInListOrder(*pNeeds) : computeInOwnOrder(*pNeeds);
        if (uiFailed != PassedOver && pNeeds->m_bInOrder) {
            takeBack(*pNeeds, uiFailed);
        }
    }
    out_bSuccess = uiFailed == PassedOver;
    if (!out_bSuccess) {
        // The long way goes on from here: the reader that needs this node is the first that the
        // recursion comes to.
        m_uiFailed = uiFailed == in_uiNode ? PassedOver : uiFailed;
    }
    return out_bSuccess || uiFailed == in_uiNode;
}

/// Computes a node below which one node after the other is all that isn't valid, as in a feature
/// that shares most of its work with one that was asked for before. `out_bIsNear` tells whether it
/// is so. Returns the node that failed, or `PassedOver`.
SealedPlan::Index SealedPlan::computeNear(Index in_uiNode, bool& out_bIsNear) {
    constexpr std::size_t MaxNear = 4;
    Index uiPath[MaxNear];
    std::size_t uiDepth = 0;
    Index uiNode = in_uiNode;
    std::size_t uiInvalid = 1;
    while (uiInvalid == 1 && uiDepth != MaxNear) {
        uiPath[uiDepth++] = uiNode;
        uiInvalid = countInvalidInputs(uiPath[uiDepth - 1], uiNode);
    }
    out_bIsNear = uiInvalid == 0;
    while (out_bIsNear && uiDepth != 0) {
        if (!step(uiPath[--uiDepth])) {
            return uiPath[uiDepth];
        }
    }
    return PassedOver;
}

std::size_t SealedPlan::countInvalidInputs(Index in_uiNode, Index& out_uiInvalid) const {
    std::size_t uiInvalid = 0;
    for (Index ui = m_vInputsBegin[in_uiNode]; ui != m_vInputsBegin[in_uiNode + 1]; ++ui) {
        if (!isValid(m_vInputs[ui])) {
            out_uiInvalid = m_vInputs[ui];
            ++uiInvalid;
        }
    }
    return uiInvalid;
}

/// Computes what isn't valid; returns the same.
SealedPlan::Index SealedPlan::computeInListOrder(const NodeSet& in_Needs) {
    Flags* pBefore = m_vBefore.data();
    for (const Word& word : in_Needs.m_vWords) {
        *pBefore = m_vValid[word.m_uiPlace];
        for (Flags flags = word.m_Flags & ~*pBefore; flags != 0; flags &= flags - 1) {
            const auto uiNode =
                static_cast<Index>(word.m_uiPlace * FlagsPerWord +
                                   static_cast<std::size_t>(__builtin_ctzll(flags)) / 8);
            if (!step(uiNode)) {
                return uiNode;
            }
        }
        ++pBefore;
    }
    return PassedOver;
}

/// The same for a node to which the list, made from other roots, isn't in the recursion's order.
SealedPlan::Index SealedPlan::computeInOwnOrder(const NodeSet& in_Needs) {
    const auto ite =
        std::find_if(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(),
                     [this](Index in_uiNode) { return !isValid(in_uiNode) && !step(in_uiNode); });
    return ite == in_Needs.m_vOrder.end() ? PassedOver : *ite;
}

/// Inputs and variables were computed ahead of their turn, where nobody sees it. The recursion
/// stops where a node fails, and wouldn't have come to some of them.
void SealedPlan::takeBack(const NodeSet& in_Needs, Index in_uiFailed) {
    // Behind the word of the node that failed nothing was computed.
    const std::size_t uiLastPlace = in_uiFailed / FlagsPerWord;
    auto ite = std::find(in_Needs.m_vOrder.begin(), in_Needs.m_vOrder.end(), in_uiFailed);
    for (; ite != in_Needs.m_vOrder.end(); ++ite) {
        const std::size_t uiPlace = *ite / FlagsPerWord;
        if (uiPlace > uiLastPlace) {
            continue;
        }
        const auto iteWord =
            std::lower_bound(in_Needs.m_vWords.begin(), in_Needs.m_vWords.end(), uiPlace,
                             [](const Word& in_Word, std::size_t in_uiPlace) {
                                 return in_Word.m_uiPlace < in_uiPlace;
                             });
        const Flags before =
            m_vBefore[static_cast<std::size_t>(iteWord - in_Needs.m_vWords.begin())];
        if ((before >> (*ite % FlagsPerWord * 8) & 1) == 0) {
            *flagOf(*ite) = 0;
        }
    }
}

bool SealedPlan::invalidate(Index in_uiNode) {
    const NodeSet* const pReaders = m_vReaders[in_uiNode].get();
    if (!m_bUsable || !m_bIntact || pReaders == nullptr) {
        return false;
    }
    for (const Word& word : pReaders->m_vWords) {
        m_vValid[word.m_uiPlace] &= ~word.m_Flags;
    }
    return true;
}

std::vector<SealedPlan::Index> SealedPlan::listNeeds(Index in_uiNode) const {
    std::vector<bool> vSeen(m_vSteps.size());
    std::vector<Index> vNeeds;
    std::vector<std::pair<Index, Index>> vPath;
    const auto enter = [&](Index in_uiNeeded) {
        if (!vSeen[in_uiNeeded]) {
            vSeen[in_uiNeeded] = true;
            vPath.emplace_back(in_uiNeeded, m_vInputsBegin[in_uiNeeded]);
        }
    };
    enter(in_uiNode);
    while (!vPath.empty()) {
        auto& place = vPath.back();
        if (place.second != m_vInputsBegin[place.first + 1]) {
            enter(m_vInputs[place.second++]);
        } else {
            vNeeds.push_back(place.first);
            vPath.pop_back();
        }
    }
    return vNeeds;
}

bool SealedPlan::isSilent(Index in_uiNode) const {
    const Kind eKind = m_vSteps[in_uiNode].m_eKind;
    return eKind == Kind::Constant || eKind == Kind::Input || eKind == Kind::Forward;
}

const SealedPlan::NodeSet* SealedPlan::findNeeds(Index in_uiNode) {
    std::unique_ptr<NodeSet>& pNeeds = m_vNeeds[in_uiNode];
    // Listing costs as much time as memory: it ends when the room does.
    if (pNeeds == nullptr && m_uiNeedsRoom != 0) {
        std::vector<Index> vNeeds = listNeeds(in_uiNode);
        pNeeds = std::make_unique<NodeSet>(Builder::makeSet(vNeeds));
        // The recursion from here may come to the nodes in another order than the list has. It
        // shows in those that log or fail.
        std::vector<Index> vShown;
        std::copy_if(vNeeds.begin(), vNeeds.end(), std::back_inserter(vShown),
                     [this](Index in_uiNeeded) { return !isSilent(in_uiNeeded); });
        pNeeds->m_bInOrder = std::is_sorted(vShown.begin(), vShown.end());
        m_uiNeedsRoom -= std::min(m_uiNeedsRoom, vNeeds.size());
        pNeeds->m_vOrder = std::move(vNeeds);
        m_vBefore.resize(m_vValid.size());
    }
    return pNeeds.get();
}

} // namespace Velmora::Math::Xpr
