#include "PlanTwins.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <unordered_set>

#include "support/LogCapture.h"

using namespace Velmora;
using namespace Velmora::Math;
using namespace Velmora::Math::Xpr;

namespace {

using Node = PlanTwins::Node;
using Nodes = PlanTwins::Nodes;

/// Every node below the features, in an order that is the same for graphs of the same shape.
Nodes listNodes(ScriptRun& inout_Run, const std::vector<std::string>& in_vFeatures) {
    Nodes vNodes;
    for (const std::string& strName : in_vFeatures) {
        vNodes.push_back(Node(inout_Run.getEvaluator().getExpression(("s." + strName).c_str())));
    }
    std::unordered_set<const ExpressionBaseImpl*> seen;
    Nodes vAll;
    for (std::size_t ui = 0; ui != vNodes.size(); ++ui) {
        const Node pNode = vNodes[ui];
        if (seen.insert(pNode.get()).second) {
            vAll.push_back(pNode);
            vNodes.insert(vNodes.end(), pNode->getChildBegin(), pNode->getChildEnd());
        }
    }
    return vAll;
}

/// Makes the plans of graphs unusable, as a change of their links would.
class LinkChange : public ExpressionBaseImpl {
public:
    static void tell(const ExpressionBaseImpl& in_Node) { (in_Node.*(&LinkChange::noteChange))(); }
};

std::string describe(const Nodes& in_vNodes) {
    std::string strFlags;
    for (const Node& pNode : in_vNodes) {
        strFlags += pNode->isValid() ? '1' : '0';
    }
    return strFlags;
}

std::string doTo(ScriptRun& inout_Run, const Nodes& in_vNodes, const PlanTwins::Action& in_Action) {
    const LogCapture log("", log4cplus::ERROR_LOG_LEVEL);
    const std::string strResult = in_Action(inout_Run, in_vNodes);
    std::string strErrors;
    for (const std::string& strError : log.messages(log4cplus::ERROR_LOG_LEVEL)) {
        strErrors += strError + '\n';
    }
    return strResult + '\n' + strErrors + "flags " + describe(in_vNodes);
}

} // namespace

PlanTwins::PlanTwins(const std::string& in_strText, const std::vector<std::string>& in_vFeatures)
    : m_Planned(in_strText, in_vFeatures, true),
      m_pWalked(m_Planned.clone()),
      m_vPlanned(listNodes(m_Planned, in_vFeatures)),
      m_vWalked(listNodes(*m_pWalked, in_vFeatures)) {
    for (const Node& pNode : m_vWalked) {
        LinkChange::tell(*pNode);
    }
}

std::string PlanTwins::doToBoth(const Action& in_Action) {
    const std::string strPlanned = doTo(m_Planned, m_vPlanned, in_Action);
    const std::string strWalked = doTo(*m_pWalked, m_vWalked, in_Action);
    return strPlanned == strWalked ? std::string()
                                   : "\nplanned: " + strPlanned + "\nwalked:  " + strWalked;
}

std::string PlanTwins::evaluate(ExpressionBaseImpl& inout_Node,
                                const std::vector<const DoubleVector*>& in_vHostVectors) {
    LimitedObjPtr<DoubleVector> pValue;
    std::ostringstream stream;
    stream << inout_Node.evaluate(pValue) << ' ';
    if (!pValue.isNull()) {
        stream << *pValue;
    }
    if (std::count(in_vHostVectors.begin(), in_vHostVectors.end(), pValue.get()) != 0) {
        stream << " at " << pValue.get();
    }
    return stream.str();
}
