#include "GraphOwners.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "robustness/ScriptFiles.h"
#include "support/LinkBench.h"

namespace Velmora::Testing {

using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

namespace {

/// Every kind of node. What is equal is written twice, so that the optimizer has what to share.
const char* const Script = "inputvar x\n"
                           "inputvar y\n"
                           "half(a) = a / 2\n"
                           "smooth<n>(a) = sum(slidingWindow<n>(a)) - y\n"
                           "f = {smooth<2>(x), (x + y) * (x + y), if(isGreater(x, y), half(x), "
                           "{x, y}[1])}\n";

/// For the computer with an evaluator of its own, which parses it for each case.
const char* const SmallScript = "inputvar x\n"
                                "f = (x + 1) * sum(delta(x + 1))\n";

const char* const Names[] = {"s.x", "s.y", "s.f"};

void require(bool in_bDone) {
    if (!in_bDone) {
        throw std::runtime_error("the graphs can't be made");
    }
}

TSHandle<VirtualFileSystem> newFiles() {
    static const std::map<std::string, std::string> s_mapTexts{{"./s.xpr", Script},
                                                               {"./t.xpr", SmallScript}};
    return TSHandle<VirtualFileSystem>(new ScriptFiles(s_mapTexts));
}

void collect(const Handle<ExpressionBaseImpl>& in_pNode,
             std::set<const ExpressionBaseImpl*>& inout_Seen,
             std::vector<Handle<ExpressionBaseImpl>>& inout_vNodes) {
    if (!inout_Seen.insert(in_pNode.get()).second) {
        return;
    }
    inout_vNodes.push_back(in_pNode);
    for (const auto* pp = in_pNode->getChildBegin(); pp != in_pNode->getChildEnd(); ++pp) {
        collect(*pp, inout_Seen, inout_vNodes);
    }
}

/// With the script, not yet linked. It is parsed once.
std::unique_ptr<Evaluator> newEvaluator() {
    static const std::unique_ptr<const Evaluator> s_pLoaded = [] {
        auto pEvaluator = std::make_unique<Evaluator>();
        require(pEvaluator->configure(scriptsIn("."), newFiles()) && pEvaluator->addScript("s"));
        return pEvaluator;
    }();
    return std::make_unique<Evaluator>(*s_pLoaded);
}

} // namespace

GraphOwners::GraphOwners(bool in_bOptimize, std::size_t in_uiKept, Destruction in_eDestruction)
    : m_eDestruction(in_eDestruction) {
    m_pEvaluator = newEvaluator();
    m_pSharingComputer = std::make_unique<Computer>("f");
    require(m_pSharingComputer->setEvaluator(m_pEvaluator.get()));
    require(m_pSharingComputer->setXprFilename("s", newFiles()));
    require(m_pEvaluator->link(in_bOptimize));
    require(m_pEvaluator->getExpression("s.f")->configure(newFiles()));
    m_pVariable = m_pEvaluator->getVariable("s.x");

    m_pDictionnary = std::make_unique<Dictionnary>("host");
    for (const char* szName : Names) {
        require(m_pDictionnary->add(m_pEvaluator->getExpression(szName), false));
    }
    Optimizer().sealExpressions(*m_pDictionnary);
    Optimizer().sealExpressions(*m_pDictionnary);

    m_pCopy = std::make_unique<Dictionnary>(*m_pDictionnary, "copy", false);
    m_pClone = std::make_unique<Evaluator>(*m_pEvaluator);
    m_pComputer = std::make_unique<Computer>("f");
    require(m_pComputer->setXprFilename("t", newFiles()));

    const Handle<Variable> pComputerInput = m_pComputer->getEvaluator()->getVariable("t.x");
    for (const auto& vNodes :
         {listNodes(
              {m_pVariable, m_pEvaluator->getVariable("s.y"), m_pEvaluator->getExpression("s.f")}),
          listNodes({m_pClone->getVariable("s.x"), m_pClone->getVariable("s.y"),
                     m_pClone->getExpression("s.f")}),
          listNodes({m_pCopy->findVariable("s.x"), m_pCopy->findVariable("s.y"),
                     m_pCopy->findExpression("s.f")}),
          listNodes({pComputerInput, m_pComputer->getEvaluator()->getExpression("t.f")})}) {
        m_vKept.push_back(vNodes[in_uiKept % vNodes.size()]);
    }
    // Valid everywhere, so that there is something to invalidate.
    require(m_pVariable->setValue(newVector()));
    require(m_pClone->getVariable("s.x")->setValue(newVector()));
    require(pComputerInput->setValue(newVector()));
    evaluate(*m_pEvaluator->getExpression("s.f"));
    evaluate(*m_pClone->getExpression("s.f"));
    evaluate(*m_pCopy->findExpression("s.f"));
    compute(*m_pComputer);
    compute(*m_pSharingComputer);
}

GraphOwners::~GraphOwners() = default;

std::vector<GraphOwners::Node>
GraphOwners::listNodes(const std::vector<Handle<Expression>>& in_vRoots) {
    std::vector<Node> vNodes;
    std::set<const ExpressionBaseImpl*> seen;
    for (const Handle<Expression>& pRoot : in_vRoots) {
        collect(Node(pRoot), seen, vNodes);
    }
    return vNodes;
}

std::size_t GraphOwners::countNodes(bool in_bOptimize) {
    const GraphOwners owners(in_bOptimize, 0, Destruction::Noted);
    return listNodes({owners.m_pEvaluator->getVariable("s.x"),
                      owners.m_pEvaluator->getVariable("s.y"),
                      owners.m_pEvaluator->getExpression("s.f")})
        .size();
}

template <class T>
void GraphOwners::destroy(Step in_eOwner, T& inout_pOwner) {
    m_bDestroyed[static_cast<std::size_t>(in_eOwner)] = true;
    if (m_eDestruction == Destruction::Real) {
        inout_pOwner = T();
    }
}

/// A vector that no other step has used.
const DoubleVector& GraphOwners::newVector() {
    m_vVectors.push_back(DoubleVector{static_cast<double>(m_vVectors.size() % 5) - 1.5});
    return m_vVectors.back();
}

void GraphOwners::evaluate(Expression& inout_Node) {
    DoubleVector vValue;
    const bool bSuccess = inout_Node.evaluate(vValue);
    record(bSuccess, vValue);
}

void GraphOwners::compute(Computer& inout_Computer) {
    DoubleVector vFeature;
    const bool bSuccess = inout_Computer.computeFeatures(vFeature);
    record(bSuccess, vFeature);
}

void GraphOwners::record(bool in_bSuccess, const DoubleVector& in_vValue) {
    if (!m_bStructureChanged) {
        m_vValues.push_back(in_bSuccess ? 1.0 : 0.0);
        m_vValues.insert(m_vValues.end(), in_vValue.begin(), in_vValue.end());
    }
}

void GraphOwners::setKept() {
    for (const Node& pNode : m_vKept) {
        const Handle<VariableImpl> pVariable(pNode);
        if (pVariable.isNull()) {
            continue;
        }
        m_bStructureChanged =
            m_bStructureChanged || Handle<DomainValueNoCopyImpl>(pVariable->getValue()).isNull();
        Variable& variable = *pVariable;
        require(variable.setValue(newVector()));
    }
}

void GraphOwners::run(Step in_eStep) {
    switch (in_eStep) {
    case Step::DestroyEvaluator:
        destroy(in_eStep, m_pEvaluator);
        break;
    case Step::DestroyClone:
        destroy(in_eStep, m_pClone);
        break;
    case Step::DestroyDictionnary:
        destroy(in_eStep, m_pDictionnary);
        break;
    case Step::DestroyCopy:
        destroy(in_eStep, m_pCopy);
        break;
    case Step::DestroyVariable:
        destroy(in_eStep, m_pVariable);
        break;
    case Step::DestroyComputer:
        destroy(in_eStep, m_pComputer);
        break;
    case Step::DestroySharingComputer:
        destroy(in_eStep, m_pSharingComputer);
        break;
    case Step::SetInput:
        if (isAlive(Step::DestroyVariable)) {
            require(m_pVariable->setValue(newVector()));
        }
        break;
    case Step::SetKept:
        setKept();
        break;
    case Step::Evaluate:
        for (const Node& pNode : m_vKept) {
            evaluate(*pNode);
        }
        if (isAlive(Step::DestroyComputer)) {
            compute(*m_pComputer);
        }
        // An evaluator outlives the computers that share it, as long as they are used.
        if (isAlive(Step::DestroyEvaluator) && isAlive(Step::DestroySharingComputer)) {
            compute(*m_pSharingComputer);
        }
        break;
    case Step::DumpAndInvalidate:
        for (const Node& pNode : m_vKept) {
            require(pNode->dump("/dev/null"));
            pNode->invalidate();
        }
        break;
    }
}

const char* GraphOwners::nameOf(Step in_eStep) {
    static const char* const s_vszNames[StepCount] = {
        "destroy evaluator", "destroy clone",    "destroy dictionary",       "destroy copy",
        "destroy variable",  "destroy computer", "destroy sharing computer", "set input",
        "set kept",          "evaluate",         "dump and invalidate"};
    return s_vszNames[static_cast<std::size_t>(in_eStep)];
}

} // namespace Velmora::Testing
