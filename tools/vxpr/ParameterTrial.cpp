#include "ParameterTrial.h"

#include "Builtins.h"

#include <velmora/Handle.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>

#include <algorithm>
#include <unordered_set>

namespace Vxpr {

namespace {

using Velmora::Handle;
using Velmora::Math::Xpr::Expression;
using Velmora::Math::Xpr::FunctionBaseImpl;
using Velmora::Math::Xpr::Parameter;
using Velmora::Math::Xpr::Registry;
using Velmora::Math::Xpr::ScriptFunctionImpl;

using Node = FeatureGraph::Node;

/// All nodes below, each once, a node ahead of what it reads. By a list instead of by calls: a
/// script may chain any number of operators.
std::vector<const Node*> collectNodes(const std::vector<FeatureGraph::NodeHandle>& in_vNodes) {
    std::vector<const Node*> vNodes;
    std::vector<const Node*> vOpen;
    std::unordered_set<const Node*> setSeen;
    for (auto ite = in_vNodes.rbegin(); ite != in_vNodes.rend(); ++ite) {
        vOpen.push_back(ite->get());
    }
    while (!vOpen.empty()) {
        const Node* pNode = vOpen.back();
        vOpen.pop_back();
        if (pNode == nullptr || !setSeen.insert(pNode).second) {
            continue;
        }
        vNodes.push_back(pNode);
        for (const auto* pChild = pNode->getChildEnd(); pChild != pNode->getChildBegin();) {
            vOpen.push_back((--pChild)->get());
        }
    }
    return vNodes;
}

} // namespace

std::vector<ParameterTrial>
tryParameters(const std::vector<FeatureGraph::NodeHandle>& in_vNodes,
              const Velmora::TSHandle<Velmora::VirtualFileSystem>& in_pFiles) {
    const std::vector<std::string> vBuiltins = Builtins::getNames();
    std::vector<ParameterTrial> vTrials;
    for (const Node* pNode : collectNodes(in_vNodes)) {
        const auto* pFunction = dynamic_cast<const FunctionBaseImpl*>(pNode);
        if (pFunction == nullptr || pFunction->getParameterCount() == 0 ||
            dynamic_cast<const ScriptFunctionImpl*>(pNode) != nullptr ||
            std::find(vBuiltins.begin(), vBuiltins.end(), pNode->getName()) == vBuiltins.end()) {
            continue;
        }
        const Handle<Expression> pSample(Registry::getInstance().newExpression(pNode->getName()));
        const Handle<FunctionBaseImpl> pTried = pSample;
        for (auto ite = pFunction->getParameterBegin(); ite != pFunction->getParameterEnd();
             ++ite) {
            const Handle<Parameter> pParameter = pTried->getParameter(ite->first.c_str());
            if (!pParameter.isNull()) {
                pParameter->setValue(ite->second->getValue());
            }
        }
        EngineLog::take();
        const bool bAccepted = pTried->configure(in_pFiles);
        vTrials.push_back({pNode, bAccepted, EngineLog::take()});
    }
    return vTrials;
}

} // namespace Vxpr
