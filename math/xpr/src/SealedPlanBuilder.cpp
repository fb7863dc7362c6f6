#include "SealedPlanBuilder.h"

#include <algorithm>
#include <typeinfo>

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "FlagBlock.h"
#include "RootsAhead.h"
#include "SealedPlanNeeds.h"

namespace Velmora::Math::Xpr {

namespace {

/// Words that the sets of readers of all inputs may take together: 8 MiB.
constexpr std::size_t MaxReaderWords = std::size_t(1) << 19;

/// How many words a range may have for each that is wanted, or for each flag.
constexpr std::size_t MaxGap = 4;

} // namespace

void SealedPlan::Builder::build(const Nodes& in_vRoots) {
    RootsAhead<2> ahead(in_vRoots);
    for (std::size_t uiRoot = 0; uiRoot != in_vRoots.size(); ++uiRoot) {
        ahead.begin(uiRoot);
        enter(*in_vRoots[uiRoot]);
        while (!m_vPath.empty()) {
            advance();
        }
    }
    m_Plan.m_vInputsBegin.push_back(static_cast<Index>(m_Plan.m_vInputs.size()));
    m_Plan.m_vHandedBegin.push_back(static_cast<Index>(m_Plan.m_vHanded.size()));
    // A block may begin at any word.
    const std::size_t uiWords = (m_Plan.m_vSteps.size() + FlagsPerWord - 1) / FlagsPerWord;
    m_Plan.m_vValid.resize(uiWords + FlagBlock::WordCount - 1);
    m_Plan.m_vReaders.resize(m_Plan.m_vSteps.size());
    m_Plan.m_vNeeds.resize(m_Plan.m_vSteps.size());
    m_Plan.m_uiNeedsRoom = 64 * m_Plan.m_vSteps.size() + 1024;
    m_Plan.m_uiProgramRoom = 4 * m_Plan.m_vSteps.size() + 1024;
}

SealedPlan::Index SealedPlan::Builder::find(const ExpressionBaseImpl& in_Node) const {
    return m_Walk.hasEntered(in_Node) ? in_Node.m_uiWalkPlace : PassedOver;
}

void SealedPlan::Builder::buildReaders() {
    const auto isPlanned = [](const Step& in_Step) { return in_Step.m_bPlanned; };
    std::vector<Step>& vSteps = m_Plan.m_vSteps;
    if (!std::all_of(vSteps.begin(), vSteps.end(), isPlanned)) {
        return;
    }
    listReaders();
    std::size_t uiWords = 0;
    for (Index uiNode = 0; uiNode != vSteps.size(); ++uiNode) {
        if (vSteps[uiNode].m_eKind != Kind::Input) {
            continue;
        }
        auto pSet = std::make_unique<NodeSet>(makeSet(listAllReaders(uiNode)));
        spread(*pSet);
        uiWords += pSet->m_vWords.size() + pSet->m_vOthers.size();
        if (uiWords > MaxReaderWords) {
            return;
        }
        m_Plan.m_vReaders[uiNode] = std::move(pSet);
    }
}

SealedPlan::NodeSet SealedPlan::Builder::makeSet(std::vector<Index> in_vNodes) {
    const auto range = std::minmax_element(in_vNodes.begin(), in_vNodes.end());
    const std::size_t uiFirst = *range.first / FlagsPerWord;
    const std::size_t uiCount = *range.second / FlagsPerWord - uiFirst + 1;
    // A set with gaps is small, for what a look at all words of its range would take.
    return uiCount > MaxGap * in_vNodes.size() ? makeSparseSet(std::move(in_vNodes))
                                               : makeDenseSet(in_vNodes, uiFirst, uiCount);
}

SealedPlan::NodeSet SealedPlan::Builder::makeSparseSet(std::vector<Index> in_vNodes) {
    std::sort(in_vNodes.begin(), in_vNodes.end());
    NodeSet set;
    for (const Index uiNode : in_vNodes) {
        const std::size_t uiPlace = uiNode / FlagsPerWord;
        if (set.m_vWords.empty() || set.m_vWords.back().m_uiPlace != uiPlace) {
            set.m_vWords.push_back({0, uiPlace});
        }
        set.m_vWords.back().m_Flags |= flagOf(uiNode);
    }
    return set;
}

SealedPlan::NodeSet SealedPlan::Builder::makeDenseSet(const std::vector<Index>& in_vNodes,
                                                      std::size_t in_uiFirst,
                                                      std::size_t in_uiCount) {
    std::vector<Flags> vFlags(in_uiCount);
    for (const Index uiNode : in_vNodes) {
        vFlags[uiNode / FlagsPerWord - in_uiFirst] |= flagOf(uiNode);
    }
    NodeSet set;
    set.m_vWords.reserve(in_uiCount);
    for (std::size_t ui = 0; ui != in_uiCount; ++ui) {
        if (vFlags[ui] != 0) {
            set.m_vWords.push_back({vFlags[ui], in_uiFirst + ui});
        }
    }
    return set;
}

void SealedPlan::Builder::spread(NodeSet& inout_Set) {
    const std::size_t uiFirst = inout_Set.m_vWords.front().m_uiPlace;
    const std::size_t uiCount = inout_Set.m_vWords.back().m_uiPlace - uiFirst + 1;
    if (uiCount > MaxGap * inout_Set.m_vWords.size()) {
        return;
    }
    inout_Set.m_uiFirstPlace = uiFirst;
    inout_Set.m_vOthers.assign(FlagBlock::roundUp(uiCount), ~Flags(0));
    for (const Word& word : inout_Set.m_vWords) {
        inout_Set.m_vOthers[word.m_uiPlace - uiFirst] = ~word.m_Flags;
    }
    inout_Set.m_vWords = {};
}

void SealedPlan::Builder::enter(ExpressionBaseImpl& in_Node) {
    if (m_Walk.enter(in_Node)) {
        in_Node.m_uiWalkPlace = PassedOver;
        const std::size_t uiInputs = m_vInputs.size();
        m_vInputsOfNode.clear();
        const Kind eKind = kindOf(in_Node);
        const bool bKnown = in_Node.getSealedInputs(m_vInputsOfNode) &&
                            (eKind != Kind::Other || !isDerived(in_Node));
        if (bKnown) {
            m_vInputs.insert(m_vInputs.end(), m_vInputsOfNode.begin(), m_vInputsOfNode.end());
        } else {
            // What it may read is still part of the graph.
            for (const auto& pChild : in_Node.m_Childs) {
                m_vInputs.push_back(&*pChild);
            }
        }
        m_vPath.push_back({&in_Node, uiInputs, m_vInputs.size(), uiInputs, eKind, bKnown});
    }
}

void SealedPlan::Builder::advance() {
    Place& place = m_vPath.back();
    if (place.m_uiNext != place.m_uiInputsEnd) {
        enter(*m_vInputs[place.m_uiNext++]);
        return;
    }
    append(place);
    m_vInputs.resize(place.m_uiInputs);
    m_vPath.pop_back();
}

void SealedPlan::Builder::append(const Place& in_Place) {
    ExpressionBaseImpl& node = *in_Place.m_pNode;
    Step step;
    step.m_bPlanned = in_Place.m_bKnown;
    m_Plan.m_vInputsBegin.push_back(static_cast<Index>(m_Plan.m_vInputs.size()));
    m_Plan.m_vHandedBegin.push_back(static_cast<Index>(m_Plan.m_vHanded.size()));
    const auto uiOwn = static_cast<Index>(m_Plan.m_vSteps.size());
    const auto placeOf = [&](std::size_t in_uiInput) {
        const Index uiPlace = m_vInputs[in_uiInput]->m_uiWalkPlace;
        // An input that isn't listed yet stands in a circle, which only a host can make.
        return uiPlace == PassedOver ? uiOwn : uiPlace;
    };
    for (std::size_t ui = in_Place.m_uiInputs; ui != in_Place.m_uiInputsEnd; ++ui) {
        const Index uiInput = placeOf(ui);
        m_Plan.m_vInputs.push_back(uiInput);
        step.m_bPlanned =
            step.m_bPlanned && uiInput != uiOwn && m_Plan.m_vSteps[uiInput].m_bPlanned;
    }
    const bool bReads = in_Place.m_uiInputs != in_Place.m_uiInputsEnd;
    const bool bLeaf = in_Place.m_eKind == Kind::Constant || in_Place.m_eKind == Kind::Input;
    if (in_Place.m_bKnown && bReads != bLeaf) {
        step.m_eKind = in_Place.m_eKind;
    }
    if (in_Place.m_bKnown && bReads) {
        step.m_uiFirst = placeOf(in_Place.m_uiInputs);
        step.m_uiSecond = placeOf(in_Place.m_uiInputsEnd - 1);
        step.m_bOneOperation = step.m_bPlanned && step.m_eKind == Kind::Forward &&
                               step.m_uiFirst + 1 == uiOwn &&
                               m_Plan.m_vSteps[step.m_uiFirst].m_eKind <= Kind::Multiply;
    }
    if (step.m_eKind == Kind::Other && step.m_bPlanned &&
        in_Place.m_uiInputsEnd - in_Place.m_uiInputs == 1 && node.getReduction(step.m_eReduction)) {
        step.m_eKind = Kind::Reduce;
    }
    const bool bComputesItself = step.m_eKind == Kind::Other || step.m_eKind == Kind::Reduce;
    if (bComputesItself && step.m_bPlanned && seesVectors(node)) {
        for (std::size_t ui = in_Place.m_uiInputs; ui != in_Place.m_uiInputsEnd; ++ui) {
            appendHanded(placeOf(ui));
        }
    }
    node.m_uiWalkPlace = uiOwn;
    m_Plan.m_vSteps.push_back(step);
    m_Plan.m_vNodes.push_back(&node);
}

/// The library's own leave them as they are.
bool SealedPlan::Builder::seesVectors(const ExpressionBaseImpl& in_Node) {
    const std::type_info& type = typeid(in_Node);
    return type != typeid(OperatorConcatenate) && type != typeid(OperatorIf) &&
           type != typeid(OperatorSlice);
}

/// A planned node reads planned ones only, all of which are listed.
void SealedPlan::Builder::appendHanded(Index in_uiInput) {
    const Step& source = m_Plan.sourceOf(in_uiInput);
    if (isOperator(source.m_eKind) || source.m_eKind == Kind::Constant) {
        m_Plan.m_vHanded.push_back(m_Plan.placeOf(source));
    }
}

/// Is the node of a class of the host's that inherits what it reads, but may compute otherwise?
bool SealedPlan::Builder::isDerived(ExpressionBaseImpl& in_Node) {
    return in_Node.asVariable() != nullptr || in_Node.asScriptFunction() != nullptr ||
           dynamic_cast<const OperatorConcatenate*>(&in_Node) != nullptr;
}

SealedPlan::Kind SealedPlan::Builder::kindOf(const ExpressionBaseImpl& in_Node) {
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
    if (type == typeid(OperatorConcatenate)) {
        return Kind::Concatenate;
    }
    if (type == typeid(ConstantImpl)) {
        return Kind::Constant;
    }
    if (type == typeid(DomainValueNoCopyImpl)) {
        return Kind::Input;
    }
    const bool bForward = type == typeid(VariableImpl) || type == typeid(Argument) ||
                          type == typeid(DomainVariableImpl) || type == typeid(ScriptFunctionImpl);
    return bForward ? Kind::Forward : Kind::Other;
}

void SealedPlan::Builder::listReaders() {
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

std::vector<SealedPlan::Index> SealedPlan::Builder::listAllReaders(Index in_uiNode) const {
    std::vector<bool> vSeen(m_Plan.m_vSteps.size());
    std::vector<Index> vNodes{in_uiNode};
    vSeen[in_uiNode] = true;
    for (std::size_t uiNode = 0; uiNode != vNodes.size(); ++uiNode) {
        for (Index ui = m_vReadersBegin[vNodes[uiNode]]; ui != m_vReadersBegin[vNodes[uiNode] + 1];
             ++ui) {
            if (!vSeen[m_vReaders[ui]]) {
                vSeen[m_vReaders[ui]] = true;
                vNodes.push_back(m_vReaders[ui]);
            }
        }
    }
    return vNodes;
}

} // namespace Velmora::Math::Xpr
