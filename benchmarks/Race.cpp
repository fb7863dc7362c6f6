#include "Race.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <vector>

namespace Velmora::Benchmarks {

namespace {

/// Keeps the time of each repetition and prints nothing.
class Collector : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& in_vRuns) override {
        for (const Run& run : in_vRuns) {
            if (run.run_type == Run::RT_Iteration) {
                m_mapTimes[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    double getMedian(const std::string& in_strRunner) {
        std::vector<double>& vTimes = m_mapTimes.at(in_strRunner);
        const auto middle = vTimes.begin() + static_cast<std::ptrdiff_t>(vTimes.size() / 2);
        std::nth_element(vTimes.begin(), middle, vTimes.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> m_mapTimes;
};

} // namespace

void prepareRaces(Effort in_eEffort) {
    std::vector<std::string> vArguments = {"race", "--benchmark_enable_random_interleaving=true"};
    if (in_eEffort == Effort::Full) {
        vArguments.insert(vArguments.end(),
                          {"--benchmark_repetitions=15", "--benchmark_min_time=0.005"});
    } else {
        vArguments.insert(vArguments.end(),
                          {"--benchmark_repetitions=1", "--benchmark_min_time=0.000001"});
    }
    std::vector<char*> vPointers;
    vPointers.reserve(vArguments.size() + 1);
    for (std::string& strArgument : vArguments) {
        vPointers.push_back(strArgument.data());
    }
    auto iCount = static_cast<int>(vPointers.size());
    vPointers.push_back(nullptr);
    benchmark::Initialize(&iCount, vPointers.data());
}

double Race::Times::at(const std::string& in_strRunner) const {
    for (const Entry& entry : m_vEntries) {
        if (entry.m_strRunner == in_strRunner) {
            return entry.m_dTime;
        }
    }
    throw std::out_of_range("no runner " + in_strRunner);
}

Race::Times Race::run() {
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector, ".*");
    benchmark::ClearRegisteredBenchmarks();
    Times times;
    for (const Runner& runner : m_vRunners) {
        times.add(runner.m_strName, collector.getMedian(runner.m_strName), runner.m_eRole);
    }
    m_vRunners.clear();
    return times;
}

} // namespace Velmora::Benchmarks
