#include <string>

#include "Frames.h"
#include "Host.h"
#include "TreeRunners.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr double OPERATORS = RandomTree::OPERATORS;

/// The share of the tree that is to be computed again when only the first input is new.
constexpr std::size_t SMALL_REACH = 34;

/// One tree in the library, once with all inputs new and once with one, and beside its peers.
class Trees {
public:
    explicit Trees(const RandomTree& in_Tree)
        : m_Tree(in_Tree),
          m_AllNew(in_Tree),
          m_OneNew(in_Tree),
          m_Idle(in_Tree),
          m_MuParser(in_Tree),
          m_Lua(in_Tree) {
        m_OneNew.setInputs(m_Frames, 0);
        m_OneNew.compute();
    }

    void check() {
        for (std::size_t uiFrame = 0; uiFrame != 2 * TreeFrames::COUNT; ++uiFrame) {
            const RandomTree::Inputs& inputs = m_Frames.get(uiFrame);
            m_AllNew.setInputs(m_Frames, uiFrame);
            const double dExpected = m_Tree.compute(inputs);
            checkNumber("tree", m_AllNew.compute(), dExpected);

            RandomTree::Inputs oneNew = m_Frames.get(0);
            oneNew[0] = inputs[0];
            m_OneNew.setInput(m_Frames, uiFrame, 0);
            checkNumber("tree, one input", m_OneNew.compute(), m_Tree.compute(oneNew));

            const double dMuParser = m_MuParser.compute(inputs);
            checkClose("tree, muParser", &dMuParser, &dExpected, 1, 1e-9);
            const double dLua = m_Lua.compute(inputs);
            checkSame("tree, Lua", &dLua, &dExpected, 1);
        }
    }

    Race::Times race() {
        Race race;
        race.add("library", [this](std::size_t in_uiFrame) {
            m_AllNew.setInputs(m_Frames, in_uiFrame);
            benchmark::DoNotOptimize(m_AllNew.compute());
        });
        race.add("library, one input new", [this](std::size_t in_uiFrame) {
            m_OneNew.setInput(m_Frames, in_uiFrame, 0);
            benchmark::DoNotOptimize(m_OneNew.compute());
        });
        race.add("setValue",
                 [this](std::size_t in_uiFrame) { m_Idle.setInput(m_Frames, in_uiFrame, 0); });
        race.addReference("muParser", [this](std::size_t in_uiFrame) {
            benchmark::DoNotOptimize(m_MuParser.compute(m_Frames.get(in_uiFrame)));
        });
        race.addReference("Lua", [this](std::size_t in_uiFrame) {
            benchmark::DoNotOptimize(m_Lua.compute(m_Frames.get(in_uiFrame)));
        });
        return race.run();
    }

private:
    static void checkNumber(const std::string& in_strWhat, const Math::DoubleVector* in_pMeasured,
                            double in_dExpected) {
        if (in_pMeasured == nullptr || in_pMeasured->size() != 1) {
            throw WrongResult(in_strWhat + ": not a number");
        }
        checkSame(in_strWhat, in_pMeasured->begin(), &in_dExpected, 1);
    }

    TreeFrames m_Frames;
    const RandomTree& m_Tree;
    TreeHost m_AllNew;
    TreeHost m_OneNew;
    /// Is never computed, so that its inputs have nothing to invalidate.
    TreeHost m_Idle;
    TreeInMuParser m_MuParser;
    TreeInLua m_Lua;
};

Race::Times measure(const RandomTree& in_Tree) {
    Trees trees(in_Tree);
    trees.check();
    return trees.race();
}

std::string toReach(const RandomTree& in_Tree) {
    return "the input reaches " + std::to_string(in_Tree.countReached()) + " of " +
           std::to_string(RandomTree::OPERATORS);
}

} // namespace

void measureTrees(Report& inout_Report, Effort /*in_eEffort*/) {
    const RandomTree tree(1, 1.0 / RandomTree::INPUTS);
    const Race::Times times = measure(tree);
    inout_Report.addTimes("W4, W4b", times);
    const double dFrame = times.at("library");
    inout_Report.addTarget("W4, a node", "ns", dFrame / OPERATORS, {3.0, 1.7}, "");
    inout_Report.addTarget("W4, over muParser", "", dFrame / times.at("muParser"), {0.9, 0.9}, "");
    inout_Report.addTarget("W4b over W4", "", times.at("library, one input new") / dFrame,
                           {1.0 / 2.0, 1.0 / 3.0}, toReach(tree));

    const RandomTree small = RandomTree::findWithReach(SMALL_REACH);
    const Race::Times smallTimes = measure(small);
    inout_Report.addTimes("W4c", smallTimes);
    inout_Report.addTarget("W4c over W4", "",
                           smallTimes.at("library, one input new") / smallTimes.at("library"),
                           {1.0 / 5.0, 1.0 / 10.0}, toReach(small));
}

} // namespace Velmora::Benchmarks
