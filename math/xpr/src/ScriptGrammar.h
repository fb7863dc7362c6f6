#pragma once

#include <cstddef>
#include <mutex>
#include <string>

#include <boost/spirit/include/classic_attribute.hpp>
#include <boost/spirit/include/classic_core.hpp>

#include "ScriptParserImpl.h"
#include "SkipGrammar.h"

namespace Velmora::Math::Xpr {

/// The rules of the script language, bound to the actions of one `ScriptParserImpl`.
///
/// The rules are members of the object that uses them, and no `grammar` of the parser library,
/// which would keep them in tables that all parsers of a thread share: a parser may be destroyed on
/// another thread than the one that it has read on.
///
/// `val` is the value of each rule. A closure is a frame on the stack, one for each activation.
class ScriptParser::ScriptParserImpl::Definition {
    template <class ClosureT>
    using Rule = boost::spirit::classic::rule<ScriptScanner, typename ClosureT::context_t>;
    using PlainRule = boost::spirit::classic::rule<ScriptScanner>;

    template <class T>
    struct ValueClosure : boost::spirit::classic::closure<ValueClosure<T>, T> {
        typename ValueClosure::member1 val;
    };
    using ExpressionClosure = ValueClosure<ParsedExpression>;
    using ParameterClosure = ValueClosure<Handle<Parameter>>;
    using FunctionDefinitionClosure = ValueClosure<Handle<ScriptFunctionImpl>>;
    using VariableDefinitionClosure = ValueClosure<Handle<VariableImpl>>;

    struct TermClosure
        : boost::spirit::classic::closure<TermClosure, ParsedExpression, ParsedExpression> {
        member1 val;
        member2 indexVector;
    };
    struct IndexRangeClosure : boost::spirit::classic::closure<IndexRangeClosure, ParsedExpression,
                                                               std::size_t, std::size_t> {
        member1 val;
        member2 first;
        member3 last;
    };
    struct FunctionCallClosure : boost::spirit::classic::closure<FunctionCallClosure, ParsedCall,
                                                                 std::size_t, std::size_t> {
        member1 val;
        member2 argumentIndex;
        member3 parameterIndex;
    };

public:
    explicit Definition(ScriptParserImpl& inout_Self);
    Definition(const Definition&) = delete;
    Definition& operator=(const Definition&) = delete;

    const PlainRule& start() const { return m_statement; }

private:
    void defineStatements();
    void defineFunctionDefinition();
    void defineVariableDefinition();
    void defineExpressions();
    void defineFactors();
    void defineCalls();
    void defineParameterValues();

    template <class ParserT>
    auto expect(const ParserT& in_Parser, const char* in_szMessage) const;
    auto closingParenthesis() const;
    auto openingParenthesis() const;
    auto closingAngle() const;
    auto identifier() const;
    auto qualifiedName() const;
    template <class ParserT>
    auto called(const ParserT& in_Parser) const;
    template <class ParserT>
    auto nested(const ParserT& in_Parser) const;
    template <class ParserT>
    auto tried(StatementGuard::Rule in_Rule, const ParserT& in_Parser) const;

    /// Held while the closures below are made: they find each other through statics of the parser
    /// library.
    std::unique_lock<std::mutex> m_Construction;

    ScriptParserImpl* m_pSelf;

    PlainRule m_statement;
    PlainRule m_endOfStatement;
    Rule<FunctionDefinitionClosure> m_functionDefinition;
    Rule<VariableDefinitionClosure> m_variableDefinition;
    Rule<ExpressionClosure> m_expression;
    Rule<TermClosure> m_term;
    Rule<ExpressionClosure> m_factor;
    Rule<ExpressionClosure> m_ifOperation;
    Rule<ExpressionClosure> m_concatenateOperation;
    Rule<IndexRangeClosure> m_indexRange;
    Rule<FunctionCallClosure> m_functionCall;
    Rule<ParameterClosure> m_parameterValue;
};

} // namespace Velmora::Math::Xpr
