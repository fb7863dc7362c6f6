// What do loading a big script, and its frames, cost?
//
//     velmora-load [--quick] [WORKLOAD...]

#include "Program.h"
#include "Workloads.h"

int main(int in_iArguments, char** in_pArguments) {
    using namespace Velmora::Benchmarks;
    return runProgram(in_iArguments, in_pArguments,
                      {{"W6", measureChain},
                       {"load", measureLoading},
                       {"refusal", measureRefusals},
                       {"memory", measureMemory}});
}
