#pragma once

#include <boost/spirit/include/classic_core.hpp>

#include "ScriptIterator.h"

namespace Velmora::Math::Xpr {

/// What may stand between two tokens of a script: block comments, line comments with the end of
/// their line, line continuations and white space. The end of a line is a token.
///
/// Serves one text. It remembers what it skipped last, since every alternative of the grammar that
/// is tried at a place skips the same text again, and from where on no comment is closed any more.
/// As it is called ahead of every token, it also knows how much has been read.
class SkipGrammar : public boost::spirit::classic::parser<SkipGrammar> {
public:
    using embed_t = const SkipGrammar&;

    explicit SkipGrammar(const char* in_pText) : m_pReadUpTo(in_pText) {}

    template <class ScannerT>
    typename boost::spirit::classic::parser_result<SkipGrammar, ScannerT>::type
    parse(const ScannerT& in_Scanner) const {
        const ScriptIterator first(in_Scanner.first);
        skip(in_Scanner.first);
        const auto uiLength =
            static_cast<std::size_t>(in_Scanner.first.getText() - first.getText());
        if (uiLength == 0) {
            return in_Scanner.no_match();
        }
        return in_Scanner.create_match(uiLength, boost::spirit::classic::nil_t(), first,
                                       in_Scanner.first);
    }

    /// Goes over all that can be skipped.
    void skip(ScriptIterator& inout_Position) const {
        countRead(inout_Position.getText());
        if (!inout_Position.isAtEnd() && mayBeginItem(*inout_Position)) {
            skipItems(inout_Position);
        }
    }

    /// What is remembered of the text ahead of this place isn't read.
    void jumpTo(const ScriptIterator& in_Position) const { m_pReadUpTo = in_Position.getText(); }

    /// The characters read so far: as often as they were read, remembered text excepted.
    std::size_t getTextRead() const { return m_uiTextRead; }

private:
    static bool mayBeginItem(char in_c) {
        return in_c == ' ' || in_c == '/' || in_c == '\t' || in_c == '#' || in_c == '\\' ||
               in_c == '\v' || in_c == '\f';
    }

    void countRead(const char* in_pPlace) const {
        if (in_pPlace > m_pReadUpTo) {
            m_uiTextRead += static_cast<std::size_t>(in_pPlace - m_pReadUpTo);
        }
        m_pReadUpTo = in_pPlace;
    }

    void skipItems(ScriptIterator& inout_Position) const;
    bool skipItem(ScriptIterator& inout_Position) const;
    bool skipBlockComment(ScriptIterator& inout_Position) const;

    mutable const char* m_pSkippedFrom = nullptr;
    mutable ScriptIterator m_SkippedTo;
    mutable const char* m_pUnclosedFrom = nullptr;
    mutable const char* m_pReadUpTo;
    mutable std::size_t m_uiTextRead = 0;
};

/// Skips ahead of each token and never behind one, so that a place behind a token is the place
/// ahead of the white space.
class SkipAheadPolicy : public boost::spirit::classic::skip_parser_iteration_policy<SkipGrammar> {
    using Base = boost::spirit::classic::skip_parser_iteration_policy<SkipGrammar>;

public:
    explicit SkipAheadPolicy(const SkipGrammar& in_Skip) : Base(in_Skip) {}

    template <class PolicyT>
    SkipAheadPolicy(const PolicyT& in_Other) : Base(in_Other) {}

    /// All at once: the grammar asks ahead of every token that it tries, mostly where nothing is.
    template <class ScannerT>
    void skip(const ScannerT& in_Scanner) const {
        this->skipper().skip(in_Scanner.first);
    }

    template <class ScannerT>
    bool at_end(const ScannerT& in_Scanner) const {
        in_Scanner.skip(in_Scanner);
        return in_Scanner.first.isAtEnd();
    }

    template <class ScannerT>
    void advance(const ScannerT& in_Scanner) const {
        boost::spirit::classic::iteration_policy::advance(in_Scanner);
    }
};

using ScriptScanner =
    boost::spirit::classic::scanner<ScriptIterator,
                                    boost::spirit::classic::scanner_policies<SkipAheadPolicy>>;

} // namespace Velmora::Math::Xpr
