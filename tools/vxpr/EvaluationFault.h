#pragma once

#include "EngineLog.h"
#include "FeatureGraph.h"

#include <string>
#include <vector>

namespace Vxpr {

/// Why a node couldn't be computed, in the terms of the language. in_vOwn is what the engine
/// reported while it evaluated the feature that needed the node; what isn't found there is looked
/// for in in_vOfFrame: the node may have failed before.
std::string explainEvaluation(const FeatureGraph::Failure& in_Failure,
                              const std::vector<EngineMessage>& in_vOwn,
                              const std::vector<EngineMessage>& in_vOfFrame);

/// What is wrong with the use of a function without its arguments.
std::string explainUncalled(const FeatureGraph::Uncalled& in_Uncalled);

/// Why a function can't work with its parameters. in_vMessages is what the engine said of it alone.
std::string explainConfiguration(const FeatureGraph::Node* in_pFunction,
                                 const std::vector<EngineMessage>& in_vMessages);

} // namespace Vxpr
