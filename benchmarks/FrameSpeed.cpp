// What does a frame cost, beside the same frame written by hand and beside other engines?
//
//     velmora-frames [--quick] [WORKLOAD...]

#include "Program.h"
#include "Workloads.h"

int main(int in_iArguments, char** in_pArguments) {
    using namespace Velmora::Benchmarks;
    return runProgram(in_iArguments, in_pArguments,
                      {{"W1", measureElements},
                       {"W2", measureSummary},
                       {"W3", measureSharing},
                       {"W4", measureTrees},
                       {"W5", measureDetector}});
}
