#include "ScriptGraph.h"

#include "Builtins.h"
#include "Diagnostic.h"
#include "NameAdvice.h"
#include "NodeText.h"

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/ConstantBase.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include <algorithm>
#include <limits>
#include <tuple>
#include <unordered_map>

namespace Vxpr {

using Velmora::Math::Xpr::Argument;
using Velmora::Math::Xpr::ConstantBase;
using Velmora::Math::Xpr::DomainVariableImpl;
using Velmora::Math::Xpr::FunctionBaseImpl;
using Velmora::Math::Xpr::ScriptFunctionImpl;
using Velmora::Math::Xpr::VariableImpl;
using EngineNode = Velmora::Math::Xpr::ExpressionBaseImpl;

namespace {

constexpr std::size_t NOT_YET = std::numeric_limits<std::size_t>::max();

/// What a node hands on, null if it is itself what a reader reads.
EngineNode* getPassedOn(EngineNode& in_Node) {
    if (auto* pVariable = dynamic_cast<VariableImpl*>(&in_Node)) {
        const bool bInput = dynamic_cast<DomainVariableImpl*>(&in_Node) != nullptr;
        return bInput || pVariable->getValue().isNull() ? nullptr : pVariable->getValue().get();
    }
    if (auto* pFunction = dynamic_cast<ScriptFunctionImpl*>(&in_Node)) {
        return pFunction->getImplementation().get();
    }
    return nullptr;
}

ScriptGraph::Kind getKind(const EngineNode& in_Node) {
    if (dynamic_cast<const DomainVariableImpl*>(&in_Node) != nullptr) {
        return ScriptGraph::Kind::Input;
    }
    if (dynamic_cast<const Argument*>(&in_Node) != nullptr) {
        return ScriptGraph::Kind::Argument;
    }
    if (dynamic_cast<const VariableImpl*>(&in_Node) != nullptr) {
        return ScriptGraph::Kind::Name;
    }
    return dynamic_cast<const FunctionBaseImpl*>(&in_Node) != nullptr ? ScriptGraph::Kind::Operation
                                                                      : ScriptGraph::Kind::Literal;
}

std::string describePlace(const EngineNode& in_Node) {
    const auto position = findPosition(in_Node.getSourceInfo());
    if (!position) {
        return {};
    }
    const SourcePosition& place = position->m_Position;
    return place.m_strScript + ".xpr:" + std::to_string(place.m_Position.m_uiLine) + ":" +
           std::to_string(place.m_Position.m_uiColumn);
}

bool isBefore(const ScriptGraph::Name& in_Left, const ScriptGraph::Name& in_Right) {
    return std::tie(in_Left.m_strScript, in_Left.m_uiLine, in_Left.m_strName) <
           std::tie(in_Right.m_strScript, in_Right.m_uiLine, in_Right.m_strName);
}

/// Walks the engine's graph.
class Builder {
public:
    using Node = ScriptGraph::Node;
    using Definition = ScriptGraph::Definition;

    Builder(const std::string& in_strScript, const std::vector<Definition>& in_vDefinitions)
        : m_strScript(in_strScript), m_vDefinitions(in_vDefinitions) {}

    std::vector<Node> build();

private:
    /// A node some of whose sources aren't in the graph yet.
    struct Open {
        EngineNode* m_pNode = nullptr;
        std::vector<EngineNode*> m_vSources;
        std::size_t m_uiNext = 0;
    };

    /// What was found of a node ahead of the node itself.
    struct Names {
        std::vector<ScriptGraph::Name> m_vNames;
        std::vector<std::string> m_vCalls;
    };

    EngineNode* resolve(EngineNode& in_Start);
    void addNames(const EngineNode& in_Bearer, Names& inout_Names);
    void addNodes(EngineNode& in_Start);
    Open open(EngineNode& in_Node);
    void append(const Open& in_Open);
    void describe(const EngineNode& in_Node, Node& out_Node) const;
    void markReached();

    const std::string& m_strScript;
    const std::vector<Definition>& m_vDefinitions;
    std::unordered_map<const EngineNode*, const Definition*> m_mapDefinitions;
    std::unordered_map<const EngineNode*, EngineNode*> m_mapTargets;
    std::unordered_map<const EngineNode*, Names> m_mapNames;
    std::unordered_map<const EngineNode*, std::size_t> m_mapNodes; ///< places in m_vNodes
    std::vector<Node> m_vNodes;
};

std::vector<ScriptGraph::Node> Builder::build() {
    for (const Definition& definition : m_vDefinitions) {
        m_mapDefinitions.emplace(definition.m_pExpression.get(), &definition);
    }
    for (const Definition& definition : m_vDefinitions) {
        if (EngineNode* pNode = resolve(*definition.m_pExpression)) {
            addNodes(*pNode);
            Node& node = m_vNodes[m_mapNodes.at(pNode)];
            node.m_bReached = node.m_bReached || definition.m_bAsked;
        }
    }
    for (auto& [pNode, names] : m_mapNames) {
        Node& node = m_vNodes[m_mapNodes.at(pNode)];
        node.m_vNames = std::move(names.m_vNames);
        node.m_vCalls = std::move(names.m_vCalls);
        std::sort(node.m_vNames.begin(), node.m_vNames.end(), &isBefore);
        const auto iteEnd = std::unique(
            node.m_vNames.begin(), node.m_vNames.end(),
            [](const auto& in_Left, const auto& in_Right) { return !isBefore(in_Left, in_Right); });
        node.m_vNames.erase(iteEnd, node.m_vNames.end());
    }
    markReached();
    return std::move(m_vNodes);
}

/// The node that a reader of in_Start reads; null for a function without a body.
EngineNode* Builder::resolve(EngineNode& in_Start) {
    std::vector<EngineNode*> vPassedOver;
    EngineNode* pNode = &in_Start;
    for (;;) {
        const auto iteTarget = m_mapTargets.find(pNode);
        if (iteTarget != m_mapTargets.end()) {
            pNode = iteTarget->second;
            break;
        }
        EngineNode* pNext = getPassedOn(*pNode);
        const bool bEmpty = pNext == nullptr && dynamic_cast<ScriptFunctionImpl*>(pNode) != nullptr;
        if (pNext == nullptr && !bEmpty) {
            break;
        }
        vPassedOver.push_back(pNode);
        pNode = pNext;
        if (bEmpty) {
            break;
        }
    }
    for (EngineNode* pPassedOver : vPassedOver) {
        m_mapTargets.emplace(pPassedOver, pNode);
        if (pNode != nullptr) {
            addNames(*pPassedOver, m_mapNames[pNode]);
        }
    }
    return pNode;
}

void Builder::addNames(const EngineNode& in_Bearer, Names& inout_Names) {
    const auto iteDefinition = m_mapDefinitions.find(&in_Bearer);
    if (iteDefinition != m_mapDefinitions.end()) {
        const Definition& definition = *iteDefinition->second;
        inout_Names.m_vNames.push_back(
            {"", definition.m_strName + definition.m_strArguments, definition.m_uiLine});
        return;
    }
    const std::string strName = in_Bearer.getName();
    if (const auto* pFunction = dynamic_cast<const ScriptFunctionImpl*>(&in_Bearer)) {
        const std::string strCall = unqualify(strName, m_strScript) + describeArguments(*pFunction);
        std::vector<std::string>& vCalls = inout_Names.m_vCalls;
        if (std::find(vCalls.begin(), vCalls.end(), strCall) == vCalls.end()) {
            vCalls.push_back(strCall);
        }
        return;
    }
    const std::size_t uiPoint = strName.find('.');
    if (uiPoint == std::string::npos || dynamic_cast<const Argument*>(&in_Bearer) != nullptr) {
        return;
    }
    const auto position = findPosition(in_Bearer.getSourceInfo());
    const std::size_t uiLine = position ? position->m_Position.m_Position.m_uiLine : 0;
    const std::string strOwn = unqualify(strName, m_strScript);
    // The linker copies a definition that is used ahead of its place.
    if (strOwn != strName) {
        inout_Names.m_vNames.push_back({"", strOwn, uiLine});
    } else {
        inout_Names.m_vNames.push_back(
            {strName.substr(0, uiPoint), strName.substr(uiPoint + 1), uiLine});
    }
}

Builder::Open Builder::open(EngineNode& in_Node) {
    m_mapNodes.emplace(&in_Node, NOT_YET);
    Open opened;
    opened.m_pNode = &in_Node;
    if (auto* pFunction = dynamic_cast<FunctionBaseImpl*>(&in_Node)) {
        for (auto ite = pFunction->getArgumentBegin(); ite != pFunction->getArgumentEnd(); ++ite) {
            EngineNode* pArgument = pFunction->getArgument(ite).get();
            EngineNode* pSource = pArgument != nullptr ? resolve(*pArgument) : nullptr;
            if (pSource != nullptr) {
                opened.m_vSources.push_back(pSource);
            }
        }
    }
    return opened;
}

void Builder::addNodes(EngineNode& in_Start) {
    if (m_mapNodes.count(&in_Start) != 0) {
        return;
    }
    std::vector<Open> vOpen(1, open(in_Start));
    while (!vOpen.empty()) {
        Open& last = vOpen.back();
        if (last.m_uiNext == last.m_vSources.size()) {
            append(last);
            vOpen.pop_back();
            continue;
        }
        EngineNode& source = *last.m_vSources[last.m_uiNext++];
        if (m_mapNodes.count(&source) == 0) {
            vOpen.push_back(open(source));
        }
    }
}

void Builder::describe(const EngineNode& in_Node, Node& out_Node) const {
    out_Node.m_Kind = getKind(in_Node);
    out_Node.m_strPlace = describePlace(in_Node);
    const std::string strName = in_Node.getName();
    if (const auto* pConstant = dynamic_cast<const ConstantBase*>(&in_Node)) {
        out_Node.m_strText = describeValue(pConstant->getValue());
    } else if (const auto* pFunction = dynamic_cast<const FunctionBaseImpl*>(&in_Node)) {
        // Only a name that is still to be looked up has that of its script in front.
        if (strName.find('.') != std::string::npos) {
            out_Node.m_Kind = ScriptGraph::Kind::FunctionName;
        }
        out_Node.m_strText = describeOperation(*pFunction, unqualify(strName, m_strScript));
        out_Node.m_bMemory =
            out_Node.m_Kind == ScriptGraph::Kind::Operation && Builtins::hasMemory(strName);
    } else if (out_Node.m_Kind == ScriptGraph::Kind::Argument) {
        out_Node.m_strText = strName.substr(0, strName.find('&'));
    } else if (out_Node.m_Kind == ScriptGraph::Kind::Name) {
        out_Node.m_strText = unqualify(strName, m_strScript);
    }
}

void Builder::append(const Open& in_Open) {
    Node node;
    describe(*in_Open.m_pNode, node);
    if (node.m_Kind == ScriptGraph::Kind::Input) {
        addNames(*in_Open.m_pNode, m_mapNames[in_Open.m_pNode]);
    }
    const std::size_t uiSources = in_Open.m_vSources.size();
    for (std::size_t uiSource = 0; uiSource < uiSources; ++uiSource) {
        node.m_vSources.push_back({m_mapNodes.at(in_Open.m_vSources[uiSource]),
                                   describeRole(*in_Open.m_pNode, uiSource, uiSources)});
    }
    m_mapNodes[in_Open.m_pNode] = m_vNodes.size();
    m_vNodes.push_back(std::move(node));
}

/// Sources stand ahead of their readers, so one look from the end is enough.
void Builder::markReached() {
    for (auto ite = m_vNodes.rbegin(); ite != m_vNodes.rend(); ++ite) {
        if (ite->m_bReached) {
            for (const ScriptGraph::Source& source : ite->m_vSources) {
                m_vNodes[source.m_uiNode].m_bReached = true;
            }
        }
    }
}

} // namespace

ScriptGraph::ScriptGraph(const std::string& in_strScript,
                         const std::vector<Definition>& in_vDefinitions)
    : m_vNodes(Builder(in_strScript, in_vDefinitions).build()) {}

} // namespace Vxpr
