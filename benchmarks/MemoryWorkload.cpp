#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Host.h"
#include "Scripts.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t DEFINITIONS = 10000;

/// What the process has in memory, apart from what the heap can do without.
double getResidentBytes() {
    malloc_trim(0);
    std::ifstream file("/proc/self/statm");
    double dPages = 0.0;
    double dResident = 0.0;
    file >> dPages >> dResident;
    return dResident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

/// In a process of its own: what one graph leaves behind would serve the next.
double measureGraph(const std::string& in_strScript) {
    int pipe[2];
    if (::pipe(pipe) != 0) {
        throw std::runtime_error("no pipe for the measurement of memory");
    }
    const pid_t child = fork();
    if (child == 0) {
        const double dBefore = getResidentBytes();
        const Host host(in_strScript);
        const double dBytes = getResidentBytes() - dBefore;
        const bool bWritten = write(pipe[1], &dBytes, sizeof(dBytes)) == sizeof(dBytes);
        _exit(bWritten ? 0 : 1);
    }
    double dBytes = 0.0;
    close(pipe[1]);
    const bool bRead = read(pipe[0], &dBytes, sizeof(dBytes)) == sizeof(dBytes);
    close(pipe[0]);
    waitpid(child, nullptr, 0);
    if (!bRead) {
        throw std::runtime_error("the measurement of memory has failed");
    }
    return dBytes;
}

} // namespace

void measureMemory(Report& inout_Report, Effort /*in_eEffort*/) {
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
