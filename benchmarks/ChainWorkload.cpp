#include <string>

#include "BareGrammar.h"
#include "Frames.h"
#include "Host.h"
#include "Loading.h"
#include "LuaProgram.h"
#include "Scripts.h"
#include "StackUse.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t DEFINITIONS = 10000;
constexpr std::size_t FEWER_DEFINITIONS = 1000;
constexpr double OPERATORS = countOperators(DEFINITIONS);
constexpr double KIBIBYTE = 1024.0;

const Math::DoubleVector INPUTS[] = {Math::DoubleVector{0.75}, Math::DoubleVector{-1.25}};

const Math::DoubleVector& getInput(std::size_t in_uiFrame) {
    return INPUTS[in_uiFrame % 2];
}

const Math::DoubleVector* computeFrame(LoadedScript& inout_Script, std::size_t in_uiFrame) {
    inout_Script.setInput(getInput(in_uiFrame));
    return evaluate(inout_Script.getLast());
}

void checkFrames(LoadedScript& inout_Script, LuaProgram& inout_Lua, const std::string& in_strLast) {
    for (std::size_t uiFrame = 0; uiFrame != 4; ++uiFrame) {
        const double dInput = getInput(uiFrame)[0];
        const double dExpected = getSignOfChain(DEFINITIONS) * dInput;
        const Math::DoubleVector* const pValue = computeFrame(inout_Script, uiFrame);
        if (pValue == nullptr || pValue->size() != 1) {
            throw WrongResult("chain: not a number");
        }
        checkSame("chain", pValue->begin(), &dExpected, 1);
        const double dLua = inout_Lua.run("v0", dInput, in_strLast.c_str());
        checkSame("chain, Lua", &dLua, &dExpected, 1);
    }
}

/// From the text to the first value, beside a parser that builds nothing and beside Lua.
void measureLoad(Report& inout_Report, Effort in_eEffort) {
    const std::string strScript = makeChain(DEFINITIONS, Order::Forward);
    const std::string strFewer = makeChain(FEWER_DEFINITIONS, Order::Forward);
    const std::string strLua = makeLuaChain(DEFINITIONS);
    StageSamples samples;
    StageSamples fewerSamples;
    Samples grammar;
    Samples lua;
    const int iRepetitions = in_eEffort == Effort::Full ? LOAD_REPETITIONS : 1;
    for (int iRepetition = 0; iRepetition != iRepetitions; ++iRepetition) {
        { const LoadedScript script(strScript, DEFINITIONS, samples); }
        std::size_t uiStatements = 0;
        grammar.time([&] { uiStatements = countStatements(strScript); });
        if (uiStatements != DEFINITIONS + 1) {
            throw WrongResult("the bare grammar stops at statement " +
                              std::to_string(uiStatements));
        }
        lua.time([&] { const LuaProgram program(strLua); });
        { const LoadedScript script(strFewer, FEWER_DEFINITIONS, fewerSamples); }
    }
    const double dParse = samples.m_Parse.getMedian();
    const double dSeal = samples.m_Link.getMedian() + samples.m_Optimize.getMedian();
    const double dFewerSeal = fewerSamples.m_Link.getMedian() + fewerSamples.m_Optimize.getMedian();
    const Target growth{12.0, 12.0};
    inout_Report.addTarget("W6, parse, over the grammar alone", "", dParse / grammar.getMedian(),
                           {3.0, 1.5}, "");
    inout_Report.addTarget("W6, parse, 10,000 definitions over 1,000", "",
                           dParse / fewerSamples.m_Parse.getMedian(), growth, "");
    inout_Report.addTarget("W6, link to sealed, over Lua's load", "", dSeal / lua.getMedian(),
                           {1.5, 0.6}, "");
    inout_Report.addTarget("W6, link to sealed, 10,000 definitions over 1,000", "",
                           dSeal / dFewerSeal, growth, "");
    Race::Times times;
    times.add("parse", dParse);
    times.add("grammar alone", grammar.getMedian());
    times.add("link to sealed", dSeal);
    times.add("Lua's load", lua.getMedian());
    times.add("first frame", samples.m_FirstFrame.getMedian());
    inout_Report.addTimes("W6", times, "ms a script");
}

void measureLaterFrames(Report& inout_Report) {
    StageSamples samples;
    LoadedScript script(makeChain(DEFINITIONS, Order::Forward), DEFINITIONS, samples);
    LuaProgram lua(makeLuaChain(DEFINITIONS));
    const std::string strLast = "v" + std::to_string(DEFINITIONS);
    checkFrames(script, lua, strLast);

    const std::size_t uiStack = measureStackUse([&script] {
        computeFrame(script, 0);
        computeFrame(script, 1);
    });
    Race race;
    race.add("library", [&script](std::size_t in_uiFrame) {
        benchmark::DoNotOptimize(computeFrame(script, in_uiFrame));
    });
    race.addReference("Lua", [&lua, &strLast](std::size_t in_uiFrame) {
        benchmark::DoNotOptimize(lua.run("v0", getInput(in_uiFrame)[0], strLast.c_str()));
    });
    const Race::Times times = race.run();
    inout_Report.addTimes("W6, later frames", times);
    inout_Report.addTarget("W6, later frames, an operator", "ns", times.at("library") / OPERATORS,
                           {10.0, 3.0}, "");
    inout_Report.addTarget("W6, later frames, stack", "KiB",
                           static_cast<double>(uiStack) / KIBIBYTE, {64.0, 16.0},
                           "no recursion; with one for each definition a MiB isn't enough");
}

} // namespace

void measureChain(Report& inout_Report, Effort in_eEffort) {
    measureLoad(inout_Report, in_eEffort);
    measureLaterFrames(inout_Report);
}

} // namespace Velmora::Benchmarks
