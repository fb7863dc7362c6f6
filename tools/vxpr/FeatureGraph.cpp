#include "FeatureGraph.h"

#include <velmora/LimitedObjPtr.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include <algorithm>
#include <set>

namespace Vxpr {

using Velmora::Handle;
using Velmora::LimitedObjPtr;
using Velmora::Math::DoubleVector;
using Velmora::Math::Xpr::DomainVariableImpl;
using Velmora::Math::Xpr::FunctionBaseImpl;
using Velmora::Math::Xpr::OperatorIf;
using Velmora::Math::Xpr::ScriptFunctionImpl;
using Velmora::Math::Xpr::VariableImpl;

FeatureGraph::Source FeatureGraph::follow(const NodeHandle& in_pStart) {
    Source source;
    NodeHandle pNode = in_pStart;
    while (!pNode.isNull()) {
        const Handle<VariableImpl> pVariable = pNode;
        const Handle<ScriptFunctionImpl> pFunction = pNode;
        if (pVariable.isNull() && pFunction.isNull()) {
            break;
        }
        const bool bInput = !Handle<DomainVariableImpl>(pNode).isNull();
        if (bInput &&
            std::find(m_vInputs.begin(), m_vInputs.end(), pNode.get()) == m_vInputs.end()) {
            m_vInputs.push_back(pNode.get());
        }
        if (!pVariable.isNull() && pVariable->getValue().isNull()) {
            break;
        }
        source.m_vChain.push_back(pNode.get());
        pNode = pVariable.isNull() ? pFunction->getImplementation() : pVariable->getValue();
    }
    source.m_pNode = pNode.get();
    return source;
}

/// Goes down by a list instead of by calling itself: a script may chain any number of operators.
void FeatureGraph::addReaders(Node* in_pStart) {
    std::vector<Node*> vOpen(1, in_pStart);
    while (!vOpen.empty()) {
        Node* pNode = vOpen.back();
        vOpen.pop_back();
        auto* pFunction = dynamic_cast<FunctionBaseImpl*>(pNode);
        if (pFunction == nullptr || !m_mapReaders.emplace(pNode, m_vReaders.size()).second) {
            continue;
        }
        Reader reader;
        reader.m_pNode = pNode;
        reader.m_bChooses = dynamic_cast<OperatorIf*>(pNode) != nullptr;
        for (auto ite = pFunction->getArgumentBegin(); ite != pFunction->getArgumentEnd(); ++ite) {
            reader.m_vSources.push_back(follow(pFunction->getArgument(ite)));
            vOpen.push_back(reader.m_vSources.back().m_pNode);
        }
        m_vReaders.push_back(std::move(reader));
    }
}

std::size_t FeatureGraph::addFeature(const NodeHandle& in_pRoot) {
    m_vRoots.push_back(in_pRoot);
    m_vRootSources.push_back(follow(in_pRoot));
    addReaders(m_vRootSources.back().m_pNode);
    return m_vRoots.size() - 1;
}

bool FeatureGraph::isUnset(const Node* in_pNode) {
    const auto* pVariable = dynamic_cast<const VariableImpl*>(in_pNode);
    return pVariable != nullptr && pVariable->getValue().isNull() &&
           dynamic_cast<const DomainVariableImpl*>(in_pNode) == nullptr;
}

FeatureGraph::Uncalled FeatureGraph::findUncalled(const Node& in_Unset) {
    Uncalled uncalled;
    for (const auto* pParent = in_Unset.getParentBegin(); pParent != in_Unset.getParentEnd();
         ++pParent) {
        const auto* pFunction = dynamic_cast<const FunctionBaseImpl*>(pParent->get());
        // What is sealed counts what it reads through its arguments among its inputs as well.
        if (pFunction != nullptr && pFunction->isChild(in_Unset)) {
            uncalled.m_pFunction = pFunction;
            break;
        }
    }
    // A built-in function knows where it is used; one of a script, where it is defined.
    const Node* pUse = uncalled.m_pFunction;
    if (dynamic_cast<const ScriptFunctionImpl*>(pUse) != nullptr) {
        do {
            pUse = pUse->getParentBegin() != pUse->getParentEnd() ? pUse->getParentBegin()->get()
                                                                  : nullptr;
        } while (pUse != nullptr && *pUse->getSourceInfo() == '\0');
    }
    uncalled.m_pPosition = pUse;
    return uncalled;
}

std::vector<FeatureGraph::Uncalled> FeatureGraph::findUncalled() const {
    std::vector<Uncalled> vUncalled;
    std::set<const Node*> setSeen;
    const auto add = [&](const Source& in_Source) {
        if (isUnset(in_Source.m_pNode)) {
            const Uncalled uncalled = findUncalled(*in_Source.m_pNode);
            if (uncalled.m_pFunction != nullptr && setSeen.insert(uncalled.m_pFunction).second) {
                vUncalled.push_back(uncalled);
            }
        }
    };
    std::for_each(m_vRootSources.begin(), m_vRootSources.end(), add);
    for (const Reader& reader : m_vReaders) {
        std::for_each(reader.m_vSources.begin(), reader.m_vSources.end(), add);
    }
    return vUncalled;
}

const FeatureGraph::Reader* FeatureGraph::findReader(const Node* in_pNode) const {
    const auto ite = m_mapReaders.find(in_pNode);
    return ite == m_mapReaders.end() ? nullptr : &m_vReaders[ite->second];
}

bool FeatureGraph::isRead(const Reader& in_Reader, std::size_t in_uiSource) {
    if (!in_Reader.m_bChooses || in_uiSource == 0) {
        return true;
    }
    Node* pCondition = in_Reader.m_vSources[0].m_pNode;
    LimitedObjPtr<DoubleVector> pValue;
    if (pCondition == nullptr || !pCondition->isValid() || !pCondition->evaluate(pValue) ||
        pValue.isNull() || pValue->empty()) {
        return false;
    }
    return in_uiSource == ((*pValue)[0] == 0.0 ? 2U : 1U);
}

/// Whether the reader has read that source although it couldn't be computed.
bool FeatureGraph::isFailed(const Reader& in_Reader, std::size_t in_uiSource) {
    const Node* pNode = in_Reader.m_vSources[in_uiSource].m_pNode;
    return (pNode == nullptr || !pNode->isValid()) && isRead(in_Reader, in_uiSource);
}

const FeatureGraph::Source* FeatureGraph::findFailed(const Reader& in_Reader) {
    for (std::size_t uiSource = 0; uiSource < in_Reader.m_vSources.size(); ++uiSource) {
        if (isFailed(in_Reader, uiSource)) {
            return &in_Reader.m_vSources[uiSource];
        }
    }
    return nullptr;
}

bool FeatureGraph::hasFailure() const {
    for (const Source& source : m_vRootSources) {
        if (source.m_pNode == nullptr || !source.m_pNode->isValid()) {
            return true;
        }
    }
    for (const Reader& reader : m_vReaders) {
        if (reader.m_pNode->isValid() && findFailed(reader) != nullptr) {
            return true;
        }
    }
    return false;
}

/// From something that has no value down to what is to blame.
FeatureGraph::Failure FeatureGraph::descend(const Source& in_Failed) const {
    Failure failure;
    const Source* pFailed = &in_Failed;
    const Reader* pReader = nullptr;
    while (pFailed != nullptr) {
        for (const Node* pNode : pFailed->m_vChain) {
            failure.m_pPosition = *pNode->getSourceInfo() != '\0' ? pNode : failure.m_pPosition;
        }
        if (pFailed->m_pNode == nullptr) {
            return failure;
        }
        failure.m_pNode = pFailed->m_pNode;
        if (*failure.m_pNode->getSourceInfo() != '\0') {
            failure.m_pPosition = failure.m_pNode;
        }
        if (isUnset(failure.m_pNode)) {
            const Node* pUse = findUncalled(*failure.m_pNode).m_pPosition;
            failure.m_pPosition = pUse != nullptr ? pUse : failure.m_pPosition;
        }
        pReader = findReader(failure.m_pNode);
        pFailed = pReader != nullptr ? findFailed(*pReader) : nullptr;
    }
    for (std::size_t uiSource = 0; pReader != nullptr && uiSource < pReader->m_vSources.size();
         ++uiSource) {
        Node* pSource = pReader->m_vSources[uiSource].m_pNode;
        LimitedObjPtr<DoubleVector> pValue;
        if (pSource != nullptr && pSource->isValid()) {
            pSource->evaluate(pValue);
        }
        failure.m_vSizes.push_back(pValue.isNull() ? 0 : pValue->size());
    }
    return failure;
}

bool FeatureGraph::findFailure(std::size_t in_uiFeature, Failure& out_Failure) const {
    std::vector<const Source*> vOpen(1, &m_vRootSources[in_uiFeature]);
    std::set<const Node*> setSeen;
    while (!vOpen.empty()) {
        const Source* pSource = vOpen.back();
        vOpen.pop_back();
        if (pSource->m_pNode == nullptr || !pSource->m_pNode->isValid()) {
            out_Failure = descend(*pSource);
            return true;
        }
        const Reader* pReader = findReader(pSource->m_pNode);
        if (pReader == nullptr || !setSeen.insert(pSource->m_pNode).second) {
            continue;
        }
        for (std::size_t uiSource = 0; uiSource < pReader->m_vSources.size(); ++uiSource) {
            if (isRead(*pReader, uiSource)) {
                vOpen.push_back(&pReader->m_vSources[uiSource]);
            }
        }
    }
    return false;
}

void FeatureGraph::invalidate(const Source& in_Source) {
    for (auto ite = in_Source.m_vChain.rbegin(); ite != in_Source.m_vChain.rend(); ++ite) {
        (*ite)->invalidate();
    }
}

void FeatureGraph::repair() {
    for (const Reader& reader : m_vReaders) {
        bool bFailed = false;
        for (std::size_t uiSource = 0; uiSource < reader.m_vSources.size(); ++uiSource) {
            if (isFailed(reader, uiSource)) {
                invalidate(reader.m_vSources[uiSource]);
                bFailed = true;
            }
        }
        if (bFailed) {
            reader.m_pNode->invalidate();
        }
    }
    for (const Source& source : m_vRootSources) {
        if (source.m_pNode == nullptr || !source.m_pNode->isValid()) {
            invalidate(source);
        }
    }
}

} // namespace Vxpr
