#pragma once

#include <csignal>
#include <string>

namespace Vxpr {

/// Remembers the one unfinished file of the process, so that it is removed when a signal such as
/// that of Ctrl-C ends the process. The signal then takes its usual course.
class TemporaryFile {
public:
    /// While one lives, those signals wait: a file that has just been made isn't watched yet.
    class Pause {
    public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        sigset_t m_Former;
    };

    /// Paths longer than the system's longest are left to their fate.
    static void watch(const std::string& in_strPath);
    static void forget();
};

} // namespace Vxpr
