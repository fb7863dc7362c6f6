#pragma once

#include <string>

namespace Vxpr {

/// Remembers the one unfinished file of the process, so that it is removed when a signal such as
/// that of Ctrl-C ends the process. The signal then takes its usual course.
class TemporaryFile {
public:
    /// Paths longer than the system's longest are left to their fate.
    static void watch(const std::string& in_strPath);
    static void forget();
};

} // namespace Vxpr
