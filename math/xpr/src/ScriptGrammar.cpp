#include "ScriptGrammar.h"

#include <boost/spirit/include/phoenix1_binders.hpp>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

#include "ScriptTokens.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ScriptParser");

namespace classic = boost::spirit::classic;
using classic::ch_p;
using classic::end_p;
using classic::eps_p;
using classic::hex_p;
using classic::int_p;
using classic::lexeme_d;
using classic::longest_d;
using classic::oct_p;
using classic::str_p;
using classic::uint_p;
using phoenix::arg1;
using phoenix::arg2;
using phoenix::bind;

namespace {

std::mutex& constructionMutex() {
    static std::mutex s_mutex;
    return s_mutex;
}

/// One step of the iterator is one line end, however it is written.
auto lineEnd() {
    return ch_p('\n') | ch_p('\r');
}

} // namespace

ScriptParser::ScriptParserImpl::Definition::Definition(ScriptParserImpl& inout_Self)
    : m_Construction(constructionMutex()), m_pSelf(&inout_Self) {
    m_Construction.unlock();
    VELMORA_TRACE_SCOPE(fileLogger(), "ScriptParserImpl::definition::definition");
    defineStatements();
    defineFunctionDefinition();
    defineVariableDefinition();
    defineExpressions();
    defineFactors();
    defineCalls();
    defineParameterValues();
}

template <class ParserT>
auto ScriptParser::ScriptParserImpl::Definition::expect(const ParserT& in_Parser,
                                                        const char* in_szMessage) const {
    return ExpectedParser<ParserT, ScriptParserImpl>(in_Parser, in_szMessage, *m_pSelf);
}

auto ScriptParser::ScriptParserImpl::Definition::closingParenthesis() const {
    return expect(ch_p(')'), "Expecting ')', but found something else.");
}

auto ScriptParser::ScriptParserImpl::Definition::openingParenthesis() const {
    return expect(ch_p('('), "Expecting '(', but found something else.");
}

auto ScriptParser::ScriptParserImpl::Definition::closingAngle() const {
    return expect(ch_p('>'), "Expecting '>', but found something else.");
}

template <class ParserT>
auto ScriptParser::ScriptParserImpl::Definition::nested(const ParserT& in_Parser) const {
    return NestedParser<ParserT>(in_Parser, m_pSelf->m_Guard);
}

template <class ParserT>
auto ScriptParser::ScriptParserImpl::Definition::tried(StatementGuard::Rule in_Rule,
                                                       const ParserT& in_Parser) const {
    return TriedParser<ParserT, ScriptParserImpl>(in_Parser, in_Rule, m_pSelf->m_Guard, *m_pSelf);
}

auto ScriptParser::ScriptParserImpl::Definition::identifier() const {
    return NameToken<ScriptParserImpl, false>(*m_pSelf);
}

auto ScriptParser::ScriptParserImpl::Definition::qualifiedName() const {
    return NameToken<ScriptParserImpl, true>(*m_pSelf);
}

template <class ParserT>
auto ScriptParser::ScriptParserImpl::Definition::called(const ParserT& in_Parser) const {
    return CallParser<ParserT, ScriptParserImpl>(in_Parser, *m_pSelf);
}

void ScriptParser::ScriptParserImpl::Definition::defineStatements() {
    const auto save = bind(m_pSelf, &ScriptParserImpl::saveExpression)(arg1);
    const auto found = bind(m_pSelf, &ScriptParserImpl::foundStatement)(arg1, arg2);
    const auto logFound = bind(m_pSelf, &ScriptParserImpl::logFound);
    const auto end = expect(m_endOfStatement, "Expecting 'EOL', but found something else.");

    m_statement = (m_functionDefinition[save] >> end)[found] |
                  (m_variableDefinition[save] >> end)[found] |
                  end_p[logFound("???end of file???", arg1)] |
                  lineEnd()[logFound("???empty line(s)???", arg1)];

    m_endOfStatement = ';' | lineEnd() | end_p;
}

void ScriptParser::ScriptParserImpl::Definition::defineFunctionDefinition() {
    const auto& val = m_functionDefinition.val;
    const auto addParameter = bind(m_pSelf, &ScriptParserImpl::addFunctionParameter)(val, arg1);
    const auto addArgument = bind(m_pSelf, &ScriptParserImpl::addFunctionArgument)(val, arg1);
    const auto savePosition = bind(m_pSelf, &ScriptParserImpl::savePosition)(val, arg1);

    const auto name = identifier()[m_functionDefinition.val =
                                       bind(m_pSelf, &ScriptParserImpl::newFunctionDef)(arg1)];
    const auto parameters =
        '<' >> identifier()[addParameter] >> *(',' >> identifier()[addParameter]) >> closingAngle();
    const auto arguments = '(' >> identifier()[addArgument] >>
                           *(',' >> identifier()[addArgument]) >> closingParenthesis();
    const auto body =
        '=' >> m_expression[bind(m_pSelf, &ScriptParserImpl::setFunctionImplementation)(val, arg1)];

    m_functionDefinition = called(
        (name >> parameters >> arguments >> body)[savePosition] |
        (name >> parameters >> openingParenthesis() >> closingParenthesis() >> body)[savePosition] |
        (name >> arguments >> body)[savePosition] |
        (name >> '(' >> closingParenthesis() >> body)[savePosition]);
}

void ScriptParser::ScriptParserImpl::Definition::defineVariableDefinition() {
    const auto& val = m_variableDefinition.val;
    const auto setVariable = bind(m_pSelf, &ScriptParserImpl::setVariable)(val, arg1);
    const auto savePosition = bind(m_pSelf, &ScriptParserImpl::savePosition)(val, arg1);
    const auto newVariableDef = bind(m_pSelf, &ScriptParserImpl::newVariableDef)(arg1);
    const auto newDomainVariableDef = bind(m_pSelf, &ScriptParserImpl::newDomainVariableDef)(arg1);

    m_variableDefinition =
        (identifier()[m_variableDefinition.val = newVariableDef] >> '=' >>
         m_expression[setVariable])[savePosition] |
        ("inputvar" >> identifier()[m_variableDefinition.val = newDomainVariableDef]);
}

void ScriptParser::ScriptParserImpl::Definition::defineExpressions() {
    const auto binary = [this](const auto& in_Val, auto in_pAction) {
        return bind(m_pSelf, in_pAction)(in_Val, arg1);
    };
    const auto saved = [this](const auto& in_Val) {
        return bind(m_pSelf, &ScriptParserImpl::saveNodePosition)(in_Val, arg1);
    };

    const auto savedSum = saved(m_expression.val);
    const auto add = binary(m_expression.val, &ScriptParserImpl::newAddOperation);
    const auto subtract = binary(m_expression.val, &ScriptParserImpl::newSubOperation);
    m_expression = nested(m_term[m_expression.val = arg1] >>
                          *(('+' >> m_term[m_expression.val = add])[savedSum] |
                            ('-' >> m_term[m_expression.val = subtract])[savedSum]));

    const auto savedProduct = saved(m_term.val);
    const auto multiply = binary(m_term.val, &ScriptParserImpl::newMultOperation);
    const auto divide = binary(m_term.val, &ScriptParserImpl::newDivOperation);
    const auto raise = binary(m_term.val, &ScriptParserImpl::newPowOperation);
    const auto concatenate = binary(m_term.indexVector, &ScriptParserImpl::newConcatenateOperation);
    const auto cut =
        bind(m_pSelf, &ScriptParserImpl::newSliceOperation)(m_term.val, m_term.indexVector);
    const auto checkDepth = bind(m_pSelf, &ScriptParserImpl::checkDepth);
    const auto indices =
        m_indexRange[m_term.indexVector = arg1] >>
        *(',' >>
          m_indexRange[m_term.indexVector = concatenate])[checkDepth(m_term.indexVector, arg1)];
    const auto slice =
        ('[' >> indices >> expect(ch_p(']'), "Expecting ']', but found something else."));
    m_term =
        m_factor[m_term.val = arg1] >> *(('*' >> m_factor[m_term.val = multiply])[savedProduct] |
                                         ('/' >> m_factor[m_term.val = divide])[savedProduct] |
                                         ('^' >> m_factor[m_term.val = raise])[savedProduct] |
                                         slice[m_term.val = cut][checkDepth(m_term.val, arg1)]);

    const auto range = bind(m_pSelf, &ScriptParserImpl::newIndexRange)(m_indexRange.first,
                                                                       m_indexRange.last, arg1);
    m_indexRange = (uint_p[m_indexRange.first = arg1] >> ".." >>
                    uint_p[m_indexRange.last = arg1])[m_indexRange.val = range] |
                   m_expression[m_indexRange.val = arg1];
}

void ScriptParser::ScriptParserImpl::Definition::defineFactors() {
    const auto newConstant = bind(m_pSelf, &ScriptParserImpl::newConstant)(arg1);
    const auto newVariable = bind(m_pSelf, &ScriptParserImpl::newVariable)(arg1);
    const auto savePosition =
        bind(m_pSelf, &ScriptParserImpl::saveReferencePosition)(m_factor.val, arg1);
    const auto call = m_functionCall(ParsedCall(), std::size_t{0}, std::size_t{0});
    // The empty parser in front makes a sequence, whose action gets the place and not the value.
    const auto reference = eps_p >> qualifiedName()[m_factor.val = newVariable];

    m_factor = RealNumberToken<false>()[m_factor.val = newConstant] |
               tried(StatementGuard::Rule::IfOperation, m_ifOperation)[m_factor.val = arg1] |
               tried(StatementGuard::Rule::FunctionCall, called(call))[m_factor.val = arg1] |
               reference[savePosition] |
               ('(' >> m_expression[m_factor.val = arg1] >> closingParenthesis()) |
               m_concatenateOperation[m_factor.val = arg1] |
               ('+' >> nested(m_factor[m_factor.val = arg1]));

    const auto logFound = bind(m_pSelf, &ScriptParserImpl::logFound);
    const auto operand = [this](const auto& in_Val, auto in_pAction) {
        return (',' >> m_expression[bind(m_pSelf, in_pAction)(in_Val, arg1)])[bind(
            m_pSelf, &ScriptParserImpl::saveNodePosition)(in_Val, arg1)];
    };

    const auto newIf = bind(m_pSelf, &ScriptParserImpl::newIfOperationDef)(arg1);
    const auto ifOperand = operand(m_ifOperation.val, &ScriptParserImpl::addIfOperationArgument);
    m_ifOperation = (str_p("if") >> '(' >> m_expression[m_ifOperation.val = newIf] >> ifOperand >>
                     ifOperand >> closingParenthesis())[logFound("if", arg1)];

    const auto newConcatenate = bind(m_pSelf, &ScriptParserImpl::newConcatenateOperationDef)(arg1);
    const auto concatenateOperand =
        operand(m_concatenateOperation.val, &ScriptParserImpl::addConcatenateOperationArgument);
    m_concatenateOperation =
        ('{' >> m_expression[m_concatenateOperation.val = newConcatenate] >> *concatenateOperand >>
         expect(ch_p('}'),
                "Expecting '}', but found something else."))[logFound("concatenate", arg1)];
}

void ScriptParser::ScriptParserImpl::Definition::defineCalls() {
    const auto& val = m_functionCall.val;
    const auto newFunction = bind(m_pSelf, &ScriptParserImpl::newFunction)(arg1);
    const auto setParameter = bind(m_pSelf, &ScriptParserImpl::setFunctionParameter)(
        val, m_functionCall.parameterIndex, arg1);
    const auto setArgument = bind(m_pSelf, &ScriptParserImpl::setFunctionArgument)(
        val, m_functionCall.argumentIndex, arg1);
    const auto savePosition = bind(m_pSelf, &ScriptParserImpl::saveCallPosition)(val, arg1);

    const auto name = qualifiedName()[m_functionCall.val = newFunction];
    const auto parameters = '<' >> m_parameterValue[setParameter] >>
                            *(',' >> m_parameterValue[setParameter]) >> closingAngle();
    const auto arguments = '(' >> m_expression[setArgument] >>
                           *(',' >> m_expression[setArgument]) >> closingParenthesis();

    m_functionCall =
        (name >> parameters >> arguments)[savePosition] |
        (name >> parameters >> openingParenthesis() >> closingParenthesis())[savePosition] |
        (name >> arguments)[savePosition] | (name >> '(' >> closingParenthesis())[savePosition];
}

void ScriptParser::ScriptParserImpl::Definition::defineParameterValues() {
    const auto newValue = bind(m_pSelf, &ScriptParserImpl::newParameterValue)(arg1);
    const auto newText = bind(m_pSelf, &ScriptParserImpl::newParameterValueIter)(arg1, arg2);
    const auto newInt = bind(m_pSelf, &ScriptParserImpl::newParameterValueInt)(arg1);
    const auto newSizeT = bind(m_pSelf, &ScriptParserImpl::newParameterValueSizeT)(arg1);
    const auto newDouble = bind(m_pSelf, &ScriptParserImpl::newParameterValueDouble)(arg1);
    auto& val = m_parameterValue.val;

    const auto stringLiteral = ch_p('"') >> *~ch_p('"') >> '"';
    // Every alternative that matches sets the value, also one that isn't the longest.
    const auto numberValue = longest_d[int_p[val = newInt] | uint_p[val = newSizeT] |
                                       lexeme_d[str_p("0x") >> hex_p[val = newSizeT]] |
                                       lexeme_d[ch_p('0') >> oct_p[val = newSizeT]] |
                                       RealNumberToken<true>()[val = newDouble]];

    m_parameterValue = identifier()[val = newValue] | stringLiteral[val = newText] | numberValue;
}

} // namespace Velmora::Math::Xpr
