#pragma once

#include "Diagnostic.h"

#include <optional>
#include <string>
#include <vector>

namespace Vxpr {

/// Reads a script as its author does, word by word, where the engine says no more than that a
/// statement can't be read.
class StatementScanner {
public:
    /// in_Script must outlive the scanner.
    explicit StatementScanner(const ScriptText& in_Script) : m_Script(in_Script) {}

    /// Where the statement that holds the offset begins.
    std::size_t findBegin(std::size_t in_uiOffset) const;

    /// Where the statement that begins there ends: behind its ";" or at its line end.
    std::size_t findEnd(std::size_t in_uiBegin) const;

    /// The name that the statement at that offset would define; empty if it defines none.
    std::string findDefinedName(std::size_t in_uiBegin) const;

    /// The first thing in the statement that the language doesn't have, and what to write instead.
    std::optional<Diagnostic> findMistake(std::size_t in_uiBegin) const;

    /// Where the input variable is declared, behind so many other declarations of it.
    std::optional<SourcePosition> findInput(const std::string& in_strName,
                                            std::size_t in_uiSkipped) const;

    /// Where the character stands for the first time, outside of comments and strings.
    std::optional<SourcePosition> findCharacter(char in_cCharacter) const;

    /// Where the name is handed to a call between < and >. An empty name stands for any name that
    /// is handed on outside of a function.
    std::optional<SourcePosition> findParameterUse(const std::string& in_strName) const;

private:
    struct Token {
        enum class Kind { Word, Number, String, Mark, LineEnd };

        Kind m_Kind = Kind::Mark;
        std::size_t m_uiBegin = 0;
        std::size_t m_uiEnd = 0;
        bool m_bBehindLineComment = false; ///< the first of a line whose line end was commented out
    };

    enum class Range { Statement, WholeScript };

    /// Hands out one token after the other, as long as the function returns true.
    template <class Function>
    void visit(std::size_t in_uiBegin, Range in_eRange, Function in_Function) const;
    std::vector<Token> scan(std::size_t in_uiBegin, Range in_eRange) const;
    Token readToken(std::size_t in_uiBegin) const;
    std::size_t skipBlanks(std::size_t in_uiBegin, bool& out_bLineComment) const;
    std::string getText(const Token& in_Token) const;
    std::string describeMistake(const Token& in_Token, const Token* in_pBefore,
                                const Token* in_pNext) const;
    SourcePosition toPosition(std::size_t in_uiOffset) const;

    const ScriptText& m_Script;
};

} // namespace Vxpr
