#pragma once

#include <cstddef>
#include <iosfwd>
#include <iterator>
#include <string>

namespace Velmora::Math::Xpr {

/// A place in a script: a forward iterator over its text that knows file, line and column.
///
/// A line end is one step, whether it is written "\n", "\r", "\r\n" or "\n\r". Lines and columns
/// count from 1; a tab stop is every four columns. The default iterator is the end of every script.
/// The text and the file's name outlive the iterator.
class ScriptIterator {
public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    static constexpr std::size_t TabWidth = 4;

    ScriptIterator() = default;
    ScriptIterator(const char* in_pFirst, const char* in_pLast, const char* in_szFile)
        : m_pText(in_pFirst), m_pEnd(in_pLast), m_szFile(in_szFile) {}

    reference operator*() const { return *m_pText; }
    ScriptIterator& operator++();
    ScriptIterator operator++(int) {
        ScriptIterator before(*this);
        ++*this;
        return before;
    }

    bool isAtEnd() const { return m_pText == m_pEnd; }

    friend bool operator==(const ScriptIterator& in_A, const ScriptIterator& in_B) {
        return in_A.isAtEnd() || in_B.isAtEnd() ? in_A.isAtEnd() == in_B.isAtEnd()
                                                : in_A.m_pText == in_B.m_pText;
    }
    friend bool operator!=(const ScriptIterator& in_A, const ScriptIterator& in_B) {
        return !(in_A == in_B);
    }

    /// The place in the text, and the end of the text.
    const char* getText() const { return m_pText; }
    const char* getTextEnd() const { return m_pEnd; }

    const char* getFile() const { return m_szFile; }
    std::size_t getLine() const { return m_uiLine; }
    std::size_t getColumn() const { return m_uiColumn; }

private:
    const char* m_pText = nullptr;
    const char* m_pEnd = nullptr;
    const char* m_szFile = "";
    std::size_t m_uiLine = 1;
    std::size_t m_uiColumn = 1;
};

inline ScriptIterator& ScriptIterator::operator++() {
    const char c = *m_pText++;
    if (c == '\n' || c == '\r') {
        const char cOther = c == '\n' ? '\r' : '\n';
        if (m_pText != m_pEnd && *m_pText == cOther) {
            ++m_pText;
        }
        ++m_uiLine;
        m_uiColumn = 1;
    } else if (c == '\t') {
        m_uiColumn += TabWidth - (m_uiColumn - 1) % TabWidth;
    } else {
        ++m_uiColumn;
    }
    return *this;
}

/// The form in which a position is written wherever one is.
std::string positionText(const ScriptIterator& in_Position);
std::ostream& operator<<(std::ostream& out_Stream, const ScriptIterator& in_Position);

/// The text between two places as it stands in the script.
inline std::string rawText(const ScriptIterator& in_First, const ScriptIterator& in_Last) {
    return std::string(in_First.getText(), in_Last.getText());
}

} // namespace Velmora::Math::Xpr
