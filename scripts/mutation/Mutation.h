#pragma once

namespace Mutation {

constexpr int MaxMutants = 10000;

/// Is this the mutant at work?
__attribute__((visibility("default"))) bool active(int in_iMutant);

/// Was `active` asked for this mutant since the last call?
__attribute__((visibility("default"))) bool takeReached(int in_iMutant);

} // namespace Mutation
