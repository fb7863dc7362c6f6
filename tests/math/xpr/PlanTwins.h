#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <velmora/math/xpr/ExpressionBaseImpl.h>

#include "math/xpr/ScriptRun.h"

/// Two optimised graphs of one script, of which one has lost its plan and is computed by the
/// recursion that the plan replaces.
class PlanTwins {
public:
    using Node = Velmora::Handle<Velmora::Math::Xpr::ExpressionBaseImpl>;
    using Nodes = std::vector<Node>;
    /// What came of it, as a text.
    using Action = std::function<std::string(ScriptRun&, const Nodes&)>;

    PlanTwins(const std::string& in_strText, const std::vector<std::string>& in_vFeatures);

    bool haveSameShape() const { return m_vPlanned.size() == m_vWalked.size(); }

    /// The nodes of each graph: the features, in their order, and then all below them.
    std::size_t getNodeCount() const { return m_vPlanned.size(); }

    /// Does the same to both. An empty text if the same came of it, with the same errors in the
    /// log, and the same nodes are valid; otherwise what differs.
    std::string doToBoth(const Action& in_Action);

    /// The result of an evaluation as a text. It tells which of the host's vectors was handed out.
    static std::string
    evaluate(Velmora::Math::Xpr::ExpressionBaseImpl& inout_Node,
             const std::vector<const Velmora::Math::DoubleVector*>& in_vHostVectors = {});

private:
    ScriptRun m_Planned;
    std::unique_ptr<ScriptRun> m_pWalked;
    Nodes m_vPlanned;
    Nodes m_vWalked;
};
