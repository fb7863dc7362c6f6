#include <string>
#include <vector>

#include "Host.h"
#include "Loading.h"
#include "Scripts.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t CHAIN_SIZES[] = {100, 1000, 10000};
constexpr std::size_t DOUBLING_SIZES[] = {10, 20, 40};

/// A script and what its loads took.
struct Case {
    std::string m_strWhat;
    std::string m_strScript;
    std::size_t m_uiDefinitions;
    double m_dExpected;
    StageSamples m_Samples;
};

std::vector<Case> makeCases() {
    std::vector<Case> vCases;
    for (const Order eOrder : {Order::Forward, Order::Backward}) {
        for (const std::size_t uiSize : CHAIN_SIZES) {
            vCases.push_back(
                {std::to_string(uiSize) +
                     (eOrder == Order::Forward ? " definitions" : " definitions, last one first"),
                 makeChain(uiSize, eOrder),
                 uiSize,
                 getSignOfChain(uiSize),
                 {}});
        }
    }
    for (const std::size_t uiSize : DOUBLING_SIZES) {
        vCases.push_back({"doubling, " + std::to_string(uiSize) + " lines",
                          makeDoubling(uiSize),
                          uiSize,
                          static_cast<double>(std::size_t{1} << uiSize),
                          {}});
    }
    return vCases;
}

void load(Case& inout_Case) {
    LoadedScript script(inout_Case.m_strScript, inout_Case.m_uiDefinitions, inout_Case.m_Samples);
    const Math::DoubleVector& vValue = evaluateOrThrow(script.getLast());
    if (vValue.size() != 1 || vValue[0] != inout_Case.m_dExpected) {
        throw WrongResult(inout_Case.m_strWhat + ": wrong value");
    }
}

Race::Times getStages(const StageSamples& in_Samples) {
    Race::Times times;
    times.add("parse", in_Samples.m_Parse.getMedian());
    times.add("link", in_Samples.m_Link.getMedian());
    times.add("optimise", in_Samples.m_Optimize.getMedian());
    times.add("first frame", in_Samples.m_FirstFrame.getMedian());
    return times;
}

/// Ten times the definitions take about ten times as long, in each stage.
void addGrowth(const Case& in_Small, const Case& in_Large, Report& inout_Report) {
    const Race::Times small = getStages(in_Small.m_Samples);
    for (const Race::Times::Entry& stage : getStages(in_Large.m_Samples)) {
        inout_Report.addTarget("load, " + stage.m_strRunner + ", " + in_Large.m_strWhat +
                                   " over 1000",
                               "", stage.m_dTime / small.at(stage.m_strRunner), {12.0, 12.0}, "");
    }
}

} // namespace

void measureLoading(Report& inout_Report, Effort in_eEffort) {
    std::vector<Case> vCases = makeCases();
    const int iRepetitions = in_eEffort == Effort::Full ? LOAD_REPETITIONS : 1;
    for (int iRepetition = 0; iRepetition != iRepetitions; ++iRepetition) {
        for (Case& testCase : vCases) {
            load(testCase);
        }
    }
    for (const Case& testCase : vCases) {
        inout_Report.addTimes(testCase.m_strWhat, getStages(testCase.m_Samples), "ms a stage");
    }
    for (std::size_t i = 1; i != vCases.size(); ++i) {
        if (vCases[i].m_uiDefinitions == 10000) {
            addGrowth(vCases[i - 1], vCases[i], inout_Report);
        }
    }
}

} // namespace Velmora::Benchmarks
