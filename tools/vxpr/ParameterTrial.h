#pragma once

#include "EngineLog.h"
#include "FeatureGraph.h"

#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>

#include <vector>

namespace Vxpr {

/// What became of the parameters of one function.
struct ParameterTrial {
    const FeatureGraph::Node* m_pFunction = nullptr;
    bool m_bAccepted = false;
    std::vector<EngineMessage> m_vMessages; ///< what the engine said of this function alone
};

/// Tries the parameters of every function below the nodes that has some, those included whose
/// values nobody reads. A node hands its parameters on to all that it reads before it returns, and
/// the engine's messages don't tell whose they are; so each is tried on a function of the same kind
/// that reads nothing. The nodes stay as they are.
std::vector<ParameterTrial>
tryParameters(const std::vector<FeatureGraph::NodeHandle>& in_vNodes,
              const Velmora::TSHandle<Velmora::VirtualFileSystem>& in_pFiles);

} // namespace Vxpr
