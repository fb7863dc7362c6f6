#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Vxpr {

/// The text of a script, with its lines and columns as the engine counts them: from 1, a tab to the
/// next stop of 4, a pair of "\r" and "\n" in either order as one line end.
class ScriptText {
public:
    /// in_strPath is the name to show, in_strName the name of the script in qualified names.
    ScriptText(const std::string& in_strPath, const std::string& in_strName,
               const std::string& in_strText);

    /// Reads the script, "-" from the standard input, where it is called `stdin`. Throws a Failure
    /// if it can't be read.
    static ScriptText read(const std::string& in_strPath);

    const std::string& getPath() const { return m_strPath; }
    const std::string& getName() const { return m_strName; }
    const std::string& getText() const { return m_strText; }

    /// The line without its end; empty if there is no such line.
    std::string_view getLine(std::size_t in_uiLine) const;

    struct Position {
        std::size_t m_uiLine = 1;
        std::size_t m_uiColumn = 1;
    };

    Position getPosition(std::size_t in_uiOffset) const;
    std::size_t getOffset(const Position& in_Position) const;

    /// The same script with the characters of a range replaced by blanks; line ends stay, so that
    /// every position stays.
    ScriptText blankOut(std::size_t in_uiBegin, std::size_t in_uiEnd) const;

private:
    void findLines();

    std::string m_strPath;
    std::string m_strName;
    std::string m_strText;
    std::vector<std::size_t> m_vLineStarts;
};

} // namespace Vxpr
