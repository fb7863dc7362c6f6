#pragma once

#include <string>
#include <vector>

namespace Vxpr {

/// Something that the engine had to report.
struct EngineMessage {
    enum class Kind {
        Error,    ///< a line of the engine's log, at ERROR level unless Details are asked for
        Assertion ///< the text of a condition that didn't hold
    };

    Kind m_Kind = Kind::Error;
    std::string m_strText;
    std::string m_strLogger = {}; ///< which part of the engine wrote the line; empty otherwise
};

/// Collects what the engine reports, in its order, instead of letting it reach the terminal.
///
/// One exists from before the engine is used until the end of the process.
class EngineLog {
public:
    /// Takes over the engine's log and its assertions. in_strLevel, if it isn't empty, is the level
    /// from which on the log is written to the standard error as well: trace, debug, info or error.
    static void install(const std::string& in_strLevel);

    /// Whether anything has been collected; cheap enough for every frame.
    static bool isEmpty();

    /// Takes out what has been collected since the last call. Of more than a thousand the first
    /// ones and the last are kept.
    static std::vector<EngineMessage> take();

    /// Collects the lines at INFO level as well, as long as it exists. One at a time.
    class Details {
    public:
        Details();
        ~Details();
        Details(const Details&) = delete;
        Details& operator=(const Details&) = delete;

    private:
        int m_iFormerLevel;
    };
};

} // namespace Vxpr
