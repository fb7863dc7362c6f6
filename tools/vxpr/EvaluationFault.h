#pragma once

#include "EngineLog.h"
#include "FeatureGraph.h"

#include <string>
#include <vector>

namespace Vxpr {

/// Why a node couldn't be computed, in the terms of the language. in_vMessages is what the engine
/// reported meanwhile.
std::string explainEvaluation(const FeatureGraph::Failure& in_Failure,
                              const std::vector<EngineMessage>& in_vMessages);

/// Why a function refuses its parameters.
std::string explainConfiguration(const FeatureGraph::Node* in_pFunction,
                                 const std::vector<EngineMessage>& in_vMessages);

} // namespace Vxpr
