#pragma once

#include <vector>

#include "Report.h"

namespace Velmora::Benchmarks {

/// Something to measure, by the name that it has on the command line and in the tables.
struct Workload {
    const char* m_szName;
    void (*m_pMeasure)(Report&, Effort);
};

/// The main function of a program that measures the workloads that its arguments name, or all, and
/// prints tables in Markdown. Fails if a result is wrong, however fast.
///
/// With `--quick` among the arguments everything is computed and checked, and there are no tables.
int runProgram(int in_iArguments, char** in_pArguments, const std::vector<Workload>& in_vWorkloads);

} // namespace Velmora::Benchmarks
