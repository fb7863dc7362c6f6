// What do the signal classes beneath the built-in functions cost, beside the loops that an engineer
// would write?
//
//     velmora-signals [--quick] [WORKLOAD...]

#include "Program.h"
#include "Workloads.h"

int main(int in_iArguments, char** in_pArguments) {
    using namespace Velmora::Benchmarks;
    return runProgram(in_iArguments, in_pArguments, {{"correlator", measureCorrelator}});
}
