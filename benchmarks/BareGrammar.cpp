#include "BareGrammar.h"

#include <boost/spirit/include/classic_core.hpp>
#include <boost/spirit/include/classic_position_iterator.hpp>

namespace Velmora::Benchmarks {

namespace {

namespace classic = boost::spirit::classic;
using classic::alnum_p;
using classic::alpha_p;
using classic::ch_p;
using classic::end_p;
using classic::hex_p;
using classic::int_p;
using classic::lexeme_d;
using classic::longest_d;
using classic::oct_p;
using classic::real_p;
using classic::str_p;
using classic::strict_real_p;
using classic::uint_p;

using Iterator = classic::position_iterator<const char*, classic::file_position_base<const char*>>;

/// White space but line ends, which are tokens.
class Blanks : public classic::parser<Blanks> {
public:
    using embed_t = const Blanks&;

    template <class ScannerT>
    typename classic::parser_result<Blanks, ScannerT>::type
    parse(const ScannerT& in_Scanner) const {
        std::ptrdiff_t iLength = 0;
        while (in_Scanner.first != in_Scanner.last &&
               (*in_Scanner.first == ' ' || *in_Scanner.first == '\t')) {
            ++in_Scanner.first;
            ++iLength;
        }
        return iLength == 0
                   ? in_Scanner.no_match()
                   : in_Scanner.create_match(static_cast<std::size_t>(iLength), classic::nil_t(),
                                             in_Scanner.first, in_Scanner.first);
    }
};

using Skipping = classic::skip_parser_iteration_policy<Blanks>;
using Scanner = classic::scanner<Iterator, classic::scanner_policies<Skipping>>;
using Rule = classic::rule<Scanner>;

class BareGrammar {
public:
    BareGrammar() {
        m_identifier = lexeme_d[(alpha_p | '_') >> *(alnum_p | '_')];
        m_qualifiedName = m_identifier >> *('.' >> m_identifier);
        defineStatements();
        defineExpressions();
        defineCalls();
    }
    BareGrammar(const BareGrammar&) = delete;
    BareGrammar& operator=(const BareGrammar&) = delete;

    const Rule& statement() const { return m_statement; }

private:
    void defineStatements() {
        const auto lineEnd = ch_p('\n') | ch_p('\r');
        const auto end = ';' | lineEnd | end_p;
        m_statement =
            (m_functionDefinition >> end) | (m_variableDefinition >> end) | end_p | lineEnd;

        const auto names = m_identifier >> *(',' >> m_identifier);
        const auto parameters = '<' >> names >> '>';
        const auto arguments = '(' >> names >> ')';
        const auto body = '=' >> m_expression;
        m_functionDefinition = (m_identifier >> parameters >> arguments >> body) |
                               (m_identifier >> parameters >> '(' >> ')' >> body) |
                               (m_identifier >> arguments >> body) |
                               (m_identifier >> '(' >> ')' >> body);
        m_variableDefinition = (m_identifier >> body) | ("inputvar" >> m_identifier);
    }

    void defineExpressions() {
        m_expression = m_term >> *(('+' >> m_term) | ('-' >> m_term));
        m_term = m_factor >> *(('*' >> m_factor) | ('/' >> m_factor) | ('^' >> m_factor) |
                               ('[' >> m_indexRange >> *(',' >> m_indexRange) >> ']'));
        m_indexRange = (uint_p >> ".." >> uint_p) | m_expression;
        m_factor = real_p | m_ifOperation | m_functionCall | m_qualifiedName |
                   ('(' >> m_expression >> ')') | m_concatenateOperation | ('+' >> m_factor);
        m_ifOperation =
            str_p("if") >> '(' >> m_expression >> ',' >> m_expression >> ',' >> m_expression >> ')';
        m_concatenateOperation = '{' >> m_expressions >> '}';
        m_expressions = m_expression >> *(',' >> m_expression);
    }

    void defineCalls() {
        const auto parameters = '<' >> m_parameterValue >> *(',' >> m_parameterValue) >> '>';
        const auto arguments = '(' >> m_expressions >> ')';
        m_functionCall = (m_qualifiedName >> parameters >> arguments) |
                         (m_qualifiedName >> parameters >> '(' >> ')') |
                         (m_qualifiedName >> arguments) | (m_qualifiedName >> '(' >> ')');
        m_parameterValue = m_identifier | (ch_p('"') >> *~ch_p('"') >> '"') |
                           longest_d[int_p | uint_p | lexeme_d[str_p("0x") >> hex_p] |
                                     lexeme_d[ch_p('0') >> oct_p] | strict_real_p];
    }

    Rule m_identifier;
    Rule m_qualifiedName;
    Rule m_statement;
    Rule m_functionDefinition;
    Rule m_variableDefinition;
    Rule m_expression;
    Rule m_expressions;
    Rule m_term;
    Rule m_factor;
    Rule m_indexRange;
    Rule m_ifOperation;
    Rule m_concatenateOperation;
    Rule m_functionCall;
    Rule m_parameterValue;
};

} // namespace

std::size_t countStatements(const std::string& in_strScript) {
    const BareGrammar grammar;
    const Blanks blanks;
    const char* const pText = in_strScript.data();
    const char* const pEnd = pText + in_strScript.size();
    Iterator position(pText, pEnd, "script");
    const Iterator end(pEnd, pEnd, "script");
    const Scanner scanner(position, end, Skipping(blanks));
    std::size_t uiCount = 0;
    while (position != end && grammar.statement().parse(scanner)) {
        ++uiCount;
    }
    return uiCount;
}

} // namespace Velmora::Benchmarks
