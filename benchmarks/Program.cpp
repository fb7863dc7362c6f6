#include "Program.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>

#include "Host.h"

namespace Velmora::Benchmarks {

namespace {

const Workload* find(const std::vector<Workload>& in_vWorkloads, const std::string& in_strName) {
    for (const Workload& workload : in_vWorkloads) {
        if (workload.m_szName == in_strName) {
            return &workload;
        }
    }
    throw std::invalid_argument("no workload " + in_strName);
}

void measure(const std::vector<Workload>& in_vWorkloads, Effort in_eEffort) {
    Report report;
    for (const Workload& workload : in_vWorkloads) {
        workload.m_pMeasure(report, in_eEffort);
        if (in_eEffort == Effort::Quick) {
            std::cout << workload.m_szName << ": the results agree\n";
        }
    }
    if (in_eEffort == Effort::Full) {
        report.write(std::cout);
    }
}

} // namespace

int runProgram(int in_iArguments, char** in_pArguments,
               const std::vector<Workload>& in_vWorkloads) {
    Effort eEffort = Effort::Full;
    std::vector<Workload> vChosen;
    showErrors();
    try {
        for (int iArgument = 1; iArgument < in_iArguments; ++iArgument) {
            const std::string strArgument = in_pArguments[iArgument];
            if (strArgument == "--quick") {
                eEffort = Effort::Quick;
            } else {
                vChosen.push_back(*find(in_vWorkloads, strArgument));
            }
        }
        prepareRaces(eEffort);
        measure(vChosen.empty() ? in_vWorkloads : vChosen, eEffort);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace Velmora::Benchmarks
