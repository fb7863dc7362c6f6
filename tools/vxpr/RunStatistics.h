#pragma once

#include "FeatureGraph.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Vxpr {

/// What a run evaluates, and how long it takes, by definitions.
///
/// The engine isn't asked to count anything: evaluateFrame() goes through the graph ahead of the
/// evaluation proper, in the order in which that would, and has each definition computed on its
/// own, between two looks at its validity and at the clock. What a condition doesn't choose isn't
/// touched, so that functions with memory move as they would otherwise, and the evaluation that
/// follows finds every value in place: the same values.
class RunStatistics {
public:
    /// The graph has all its features and outlives this. in_strScript is the script's name.
    RunStatistics(const FeatureGraph& in_Graph, const std::string& in_strScript);

    /// Computes what the features read on this frame. Its inputs have been set.
    void evaluateFrame();

    /// A table, and the time of the frames, with their line ends.
    std::string format() const;

private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::size_t NONE = SIZE_MAX;

    /// A definition.
    struct Row {
        std::string m_strScript; ///< empty for the script that is run
        std::string m_strName;   ///< as the script that is run would write it
        std::size_t m_uiLine = 0;
        std::uint64_t m_uiAsked = 0;
        std::uint64_t m_uiEvaluated = 0;
        Clock::duration m_Time{};
    };

    /// A way from a reader to what it reads.
    struct Link {
        std::size_t m_uiStep = NONE;
        std::vector<std::size_t> m_vRows; ///< the definitions on the way, the nearest one last
    };

    /// A node that has a value.
    struct Step {
        FeatureGraph::Node* m_pNode = nullptr;
        const FeatureGraph::Reader* m_pReader = nullptr; ///< null if it reads nothing
        std::vector<Link> m_vLinks;
        std::uint64_t m_uiFrame = 0; ///< on which it was looked at last; frames count from 1
    };

    /// A node whose sources are being looked at.
    struct Open {
        std::size_t m_uiStep = NONE;
        std::size_t m_uiNext = 0;
        std::size_t m_uiRow = NONE; ///< the definition that it is a part of
        bool m_bWhole = false;      ///< it is all of the definition
    };

    class Builder;

    void enter(const Link& in_Link, std::size_t in_uiRow);
    void advance();
    void measure(const Step& in_Step, std::size_t in_uiRow);

    std::vector<Row> m_vRows;
    std::vector<Step> m_vSteps;
    std::vector<Link> m_vFeatures;
    std::vector<Open> m_vOpen;
    std::uint64_t m_uiFrames = 0;
    Clock::duration m_FrameTime{};
    Clock::duration m_WorstTime{};
    Clock::duration m_TotalTime{};
};

} // namespace Vxpr
