// What does a frame cost, beside the same frame written by hand and beside other engines?
//
//     velmora-frames [--quick] [WORKLOAD...]
//
// Prints tables in Markdown. Fails if a result is wrong. With --quick everything is computed and
// checked, but hardly measured.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "Host.h"
#include "Workloads.h"

namespace {

using namespace Velmora::Benchmarks;

struct Workload {
    const char* m_szName;
    void (*m_pMeasure)(Report&);
};

constexpr Workload WORKLOADS[] = {
    {"W1", measureElements}, {"W2", measureSummary}, {"W3", measureSharing}, {"W4", measureTrees}};

int measure(const std::vector<std::string>& in_vNames) {
    Report report;
    for (const Workload& workload : WORKLOADS) {
        if (in_vNames.empty() ||
            std::find(in_vNames.begin(), in_vNames.end(), workload.m_szName) != in_vNames.end()) {
            workload.m_pMeasure(report);
        }
    }
    report.write(std::cout);
    return EXIT_SUCCESS;
}

} // namespace

int main(int in_iArguments, char** in_pArguments) {
    std::vector<std::string> vNames(in_pArguments + 1, in_pArguments + in_iArguments);
    const auto quick = std::find(vNames.begin(), vNames.end(), "--quick");
    const bool bQuick = quick != vNames.end();
    if (bQuick) {
        vNames.erase(quick);
    }
    showErrors();
    prepareRaces(bQuick ? Effort::Quick : Effort::Full);
    try {
        return measure(vNames);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
