#pragma once

#include <string>

#include <boost/spirit/include/classic_core.hpp>

#include <velmora/DeepCall.h>

#include "RealNumber.h"
#include "ScriptIterator.h"
#include "ScriptNames.h"
#include "StatementGuard.h"

namespace Velmora::Math::Xpr {

/// A real number of a script; with `bStrict` only one with a point or an exponent.
template <bool bStrict>
class RealNumberToken : public boost::spirit::classic::parser<RealNumberToken<bStrict>> {
public:
    template <class ScannerT>
    struct result { // NOLINT(readability-identifier-naming): the parser library's name
        using type = typename boost::spirit::classic::match_result<ScannerT, double>::type;
    };

    template <class ScannerT>
    typename result<ScannerT>::type parse(const ScannerT& in_Scanner) const {
        in_Scanner.skip(in_Scanner);
        const ScriptIterator first(in_Scanner.first);
        const RealNumber number = RealNumber::match(first.getText(), first.getTextEnd());
        if (number.m_uiLength == 0 || (bStrict && !number.m_bPointOrExponent)) {
            return in_Scanner.no_match();
        }
        for (std::size_t ui = 0; ui < number.m_uiLength; ++ui) {
            ++in_Scanner.first;
        }
        const double dValue = RealNumber::value(first.getText(), in_Scanner.first.getText());
        return in_Scanner.create_match(number.m_uiLength, dValue, first, in_Scanner.first);
    }
};

/// A name; with `bQualified` one of parts with points between them, whose text may hold what can
/// be skipped. `NamerT` makes the value, of each part and then of the whole.
template <class NamerT, bool bQualified>
class NameToken : public boost::spirit::classic::parser<NameToken<NamerT, bQualified>> {
public:
    template <class ScannerT>
    struct result { // NOLINT(readability-identifier-naming): the parser library's name
        using type = typename boost::spirit::classic::match_result<ScannerT, std::string>::type;
    };

    explicit NameToken(NamerT& inout_Namer) : m_Namer(inout_Namer) {}

    template <class ScannerT>
    typename result<ScannerT>::type parse(const ScannerT& in_Scanner) const {
        in_Scanner.skip(in_Scanner);
        const ScriptIterator first(in_Scanner.first);
        std::string strName;
        if (!readPart(in_Scanner.first, strName)) {
            return in_Scanner.no_match();
        }
        if (bQualified) {
            while (readFurtherPart(in_Scanner)) {
            }
            strName = m_Namer.makeName(first, in_Scanner.first);
        }
        return in_Scanner.create_match(strName.size(), strName, first, in_Scanner.first);
    }

private:
    bool readPart(ScriptIterator& inout_Position, std::string& out_strPart) const {
        const ScriptIterator first(inout_Position);
        for (const char* pEnd = nameEnd(first.getText(), first.getTextEnd());
             inout_Position.getText() != pEnd;) {
            ++inout_Position;
        }
        if (inout_Position.getText() == first.getText()) {
            return false;
        }
        out_strPart = m_Namer.makeName(first, inout_Position);
        return true;
    }

    template <class ScannerT>
    bool readFurtherPart(const ScannerT& in_Scanner) const {
        const ScriptIterator behind(in_Scanner.first);
        std::string strPart;
        in_Scanner.skip(in_Scanner);
        if (!in_Scanner.first.isAtEnd() && *in_Scanner.first == '.') {
            ++in_Scanner.first;
            in_Scanner.skip(in_Scanner);
            if (readPart(in_Scanner.first, strPart)) {
                return true;
            }
        }
        in_Scanner.first = behind;
        return false;
    }

    NamerT& m_Namer;
};

/// The base of a parser that adds something to another one and has its value.
template <class DerivedT, class ParserT>
class WrappedParser
    : public boost::spirit::classic::unary<ParserT, boost::spirit::classic::parser<DerivedT>> {
    using Base = boost::spirit::classic::unary<ParserT, boost::spirit::classic::parser<DerivedT>>;

public:
    using parser_category_t = boost::spirit::classic::unary_parser_category;

    template <class ScannerT>
    struct result { // NOLINT(readability-identifier-naming): the parser library's name
        using type = typename boost::spirit::classic::parser_result<ParserT, ScannerT>::type;
    };

    explicit WrappedParser(const ParserT& in_Parser) : Base(in_Parser) {}
};

/// A token that is reported when it is missing, at the place where the search for it began, ahead
/// of what may be skipped. The rule that needs it then fails as at any other token.
template <class ParserT, class ReporterT>
class ExpectedParser : public WrappedParser<ExpectedParser<ParserT, ReporterT>, ParserT> {
    using Base = WrappedParser<ExpectedParser<ParserT, ReporterT>, ParserT>;

public:
    ExpectedParser(const ParserT& in_Parser, const char* in_szMessage, ReporterT& inout_Reporter)
        : Base(in_Parser), m_szMessage(in_szMessage), m_Reporter(inout_Reporter) {}

    template <class ScannerT>
    typename Base::template result<ScannerT>::type parse(const ScannerT& in_Scanner) const {
        const ScriptIterator first(in_Scanner.first);
        const auto hit = this->subject().parse(in_Scanner);
        if (!hit) {
            m_Reporter.reportMissing(m_szMessage, first);
        }
        return hit;
    }

private:
    const char* m_szMessage;
    ReporterT& m_Reporter;
};

/// A rule of which all begins with a name and one of "(" and "<". As long as nobody sees what is
/// tried in vain, it isn't tried where something else stands.
template <class ParserT, class WatchT>
class CallParser : public WrappedParser<CallParser<ParserT, WatchT>, ParserT> {
    using Base = WrappedParser<CallParser<ParserT, WatchT>, ParserT>;

public:
    CallParser(const ParserT& in_Parser, const WatchT& in_Watch)
        : Base(in_Parser), m_Watch(in_Watch) {}

    template <class ScannerT>
    typename Base::template result<ScannerT>::type parse(const ScannerT& in_Scanner) const {
        in_Scanner.skip(in_Scanner);
        if (!mayBeginCall(in_Scanner.first.getText(), in_Scanner.first.getTextEnd()) &&
            !m_Watch.isWatched()) {
            return in_Scanner.no_match();
        }
        return this->subject().parse(in_Scanner);
    }

private:
    const WatchT& m_Watch;
};

/// One level of nesting, on whatever stack the thread has. Throws `ScriptSyntaxError` when it is
/// one too many.
template <class ParserT>
class NestedParser : public WrappedParser<NestedParser<ParserT>, ParserT> {
    using Base = WrappedParser<NestedParser<ParserT>, ParserT>;

public:
    NestedParser(const ParserT& in_Parser, StatementGuard& inout_Guard)
        : Base(in_Parser), m_Guard(inout_Guard) {}

    template <class ScannerT>
    typename Base::template result<ScannerT>::type parse(const ScannerT& in_Scanner) const {
        const StatementGuard::Level level(m_Guard, in_Scanner.first);
        return DeepCall::run([&] { return this->subject().parse(in_Scanner); });
    }

private:
    StatementGuard& m_Guard;
};

/// A rule that isn't tried again where the statement's guard knows its result. Its value is the
/// expression that it has built. `NamesT` knows the place of the last name.
template <class ParserT, class NamesT>
class TriedParser : public boost::spirit::classic::unary<
                        ParserT, boost::spirit::classic::parser<TriedParser<ParserT, NamesT>>> {
    using Base =
        boost::spirit::classic::unary<ParserT,
                                      boost::spirit::classic::parser<TriedParser<ParserT, NamesT>>>;

public:
    using parser_category_t = boost::spirit::classic::unary_parser_category;

    template <class ScannerT>
    struct result { // NOLINT(readability-identifier-naming): the parser library's name
        using type =
            typename boost::spirit::classic::match_result<ScannerT, ParsedNode<Expression>>::type;
    };

    TriedParser(const ParserT& in_Parser, StatementGuard::Rule in_Rule, StatementGuard& inout_Guard,
                NamesT& inout_Names)
        : Base(in_Parser), m_Rule(in_Rule), m_Guard(inout_Guard), m_Names(inout_Names) {}

    template <class ScannerT>
    typename result<ScannerT>::type parse(const ScannerT& in_Scanner) const {
        in_Scanner.skip(in_Scanner);
        const ScriptIterator first(in_Scanner.first);
        const auto& meter = in_Scanner.skipper();
        StatementGuard::Trial trial(m_Guard, m_Rule, first, meter.getTextRead());
        const StatementGuard::Result* pKnown = trial.findResult();
        if (pKnown != nullptr) {
            in_Scanner.first = pKnown->m_End;
            meter.jumpTo(pKnown->m_End);
            if (pKnown->m_bNamed) {
                m_Names.noteName(pKnown->m_LastName);
            }
            return match(in_Scanner, first, *pKnown);
        }
        StatementGuard::Result outcome;
        const std::size_t uiNamesBefore = m_Names.getNameCount();
        const auto hit = this->subject().parse(in_Scanner);
        outcome.m_bHit = hit;
        outcome.m_End = in_Scanner.first;
        if (hit) {
            outcome.m_Value = hit.value();
        }
        outcome.m_bNamed = m_Names.getNameCount() != uiNamesBefore;
        if (outcome.m_bNamed) {
            outcome.m_LastName = m_Names.getLastName();
        }
        trial.finish(outcome, meter.getTextRead());
        return match(in_Scanner, first, outcome);
    }

private:
    template <class ScannerT>
    static typename result<ScannerT>::type match(const ScannerT& in_Scanner,
                                                 const ScriptIterator& in_First,
                                                 const StatementGuard::Result& in_Result) {
        if (!in_Result.m_bHit) {
            return in_Scanner.no_match();
        }
        const auto uiLength =
            static_cast<std::size_t>(in_Result.m_End.getText() - in_First.getText());
        return in_Scanner.create_match(uiLength, in_Result.m_Value, in_First, in_Result.m_End);
    }

    StatementGuard::Rule m_Rule;
    StatementGuard& m_Guard;
    NamesT& m_Names;
};

} // namespace Velmora::Math::Xpr
