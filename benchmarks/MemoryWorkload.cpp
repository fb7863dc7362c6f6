#include <string>

#include <malloc.h>

#include "Host.h"
#include "Scripts.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t DEFINITIONS = 10000;

double getBytesInUse() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

double measureGraph(const std::string& in_strScript) {
    const double dBefore = getBytesInUse();
    const Host host(in_strScript);
    return getBytesInUse() - dBefore;
}

} // namespace

void measureMemory(Report& inout_Report, Effort /*in_eEffort*/) {
    // Once ahead of all, for what the library makes only once.
    measureGraph(makeChain(DEFINITIONS, Order::Forward));
    const double dChain = measureGraph(makeChain(DEFINITIONS, Order::Forward));
    const double dThinChain = measureGraph(makeThinChain(DEFINITIONS));
    const auto dDefinitions = static_cast<double>(DEFINITIONS);
    const Target target{2500.0, 1500.0};
    inout_Report.addTarget("memory, an operator and its arguments", "bytes",
                           (dChain - dThinChain) / (dDefinitions - 1.0), target,
                           "one operator more in each definition of W6");
    inout_Report.addTarget("memory, W6 whole, an operator", "bytes",
                           dChain / static_cast<double>(countOperators(DEFINITIONS)), target,
                           "names and definitions included");
}

} // namespace Velmora::Benchmarks
