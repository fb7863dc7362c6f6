#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace Vxpr {

/// A line on the terminal that tells how far a recording has been worked through.
///
/// It shows nothing unless the standard error is a terminal, for a recording of a few seconds, and
/// where the results themselves fill the terminal. It is wiped when it is done.
class Progress {
public:
    struct Options {
        bool m_bQuiet = false;
        bool m_bResultsOnTerminal = false;
    };

    /// in_Seconds is the recording's length if it is known.
    Progress(const Options& in_Options, std::optional<double> in_Seconds);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Tells that in_dSeconds of the recording are done; cheap enough for every frame.
    void update(double in_dSeconds) {
        if (m_bShown && ++m_uiUpdates % 64 == 1) {
            show(in_dSeconds);
        }
    }

    /// Takes the line away, so that a message can stand in its place.
    void wipe();

private:
    void show(double in_dSeconds);

    bool m_bShown = false;
    std::optional<double> m_Seconds;
    std::uint64_t m_uiUpdates = 0;
    std::chrono::steady_clock::time_point m_LastShown;
    bool m_bOnScreen = false;
};

} // namespace Vxpr
