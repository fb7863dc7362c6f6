#pragma once

#include <memory>
#include <string>

#include <velmora/CachedLLLogger.h>
#include <velmora/Handle.h>
#include <velmora/Object.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/Parameter.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/ScriptParser.h>
#include <velmora/math/xpr/VariableImpl.h>
#include <velmora/math/xpr/XaryFunction.h>

#include "ParsedNode.h"
#include "ScriptErrorDescription.h"
#include "ScriptIterator.h"
#include "StatementGuard.h"

namespace Velmora::Math::Xpr {

class SkipGrammar;

/// What an action throws to end the script: the definition can't be made.
using ScriptDefinitionError =
    boost::spirit::classic::parser_error<Handle<ScriptErrorDescription>, ScriptIterator>;

/// The grammar of the script language and its actions, which build the graph while the text is
/// read.
///
/// An action that has fired stays done when the alternative that it belongs to fails: its node
/// dies, its line stays in the log. The actions have no state; what outlives a rule is in the
/// fields of the parser. They go on with null handles behind a failed assertion.
class ScriptParser::ScriptParserImpl : public virtual Object {
public:
    VELMORA_MEM_ACCOUNT("ScriptParser::ScriptParserImpl")

    using ParsedExpression = ParsedNode<Expression>;
    using ParsedCall = ParsedNode<FunctionBaseImpl>;

    /// Where the parse of a statement has stopped: behind what may be skipped after a statement
    /// that matched, at the statement's first character otherwise.
    struct Outcome {
        ScriptIterator m_Stop;
        bool m_bHit = false;
        /// A hit that reached the end of the script.
        bool m_bFull = false;
    };

    ScriptParserImpl();
    ~ScriptParserImpl() override;

    void setScriptParser(ScriptParser* in_pScriptParser) { m_pScriptParser = in_pScriptParser; }

    /// Reads one statement. Throws `ScriptDefinitionError` and `ScriptSyntaxError`.
    Outcome parseStatement(const ScriptIterator& in_First, const ScriptIterator& in_Last);

    /// Writes the report of a token that is missing at a place.
    void reportMissing(const char* in_szMessage, const ScriptIterator& in_Position);

    /// The text of a name, which becomes the place of the last name.
    std::string makeName(const ScriptIterator& in_First, const ScriptIterator& in_Last);

    /// A name has been matched, by whatever alternative: the place behind it is where an error of
    /// the statement is reported.
    void noteName(const ScriptIterator& in_Behind);
    std::size_t getNameCount() const { return m_uiNames; }
    const ScriptIterator& getLastName() const { return *m_pScriptParser->m_pLastNamePosition; }

    /// Does anybody see what is tried? Every trial has its lines in the log.
    bool isWatched() const;

private:
    /// The rules, in ScriptGrammar.h.
    class Definition;

    /// ScriptParserImpl.cpp: statements, positions, errors.
    void saveExpression(const Handle<Expression>& in_pExpression);
    void savePosition(const Handle<Expression>& in_pExpression, const ScriptIterator& in_Position);
    void setSourceInfo(ExpressionBaseImpl& inout_Node, const ScriptIterator& in_Position);
    void saveNodePosition(const ParsedExpression& in_Node, const ScriptIterator& in_Position);
    void saveCallPosition(const ParsedCall& in_Call, const ScriptIterator& in_Position);
    void saveReferencePosition(const ParsedExpression& in_Node, const ScriptIterator& in_Position);
    void checkDepth(const ParsedExpression& in_Node, const ScriptIterator& in_Position);
    void logFound(const char* in_szLiteral, const ScriptIterator& in_Position);
    void foundStatement(const ScriptIterator& in_First, const ScriptIterator& in_Last);

    /// ScriptParserDefinitions.cpp: definitions and references.
    Handle<VariableImpl> newVariableDef(const std::string& in_strName);
    Handle<VariableImpl> newDomainVariableDef(const std::string& in_strName);
    Handle<ScriptFunctionImpl> newFunctionDef(const std::string& in_strName);
    void addFunctionArgument(const Handle<ScriptFunctionImpl>& in_pFunction,
                             const std::string& in_strName);
    void addFunctionParameter(const Handle<ScriptFunctionImpl>& in_pFunction,
                              const std::string& in_strName);
    void setFunctionImplementation(const Handle<ScriptFunctionImpl>& in_pFunction,
                                   const ParsedExpression& in_Body);
    void setVariable(const Handle<VariableImpl>& in_pVariable, const ParsedExpression& in_Value);
    ParsedExpression newVariable(const std::string& in_strName);
    ParsedCall newFunction(const std::string& in_strName);
    void setFunctionArgument(ParsedCall& inout_Function, std::size_t& inout_uiIndex,
                             const ParsedExpression& in_Argument);
    void setFunctionParameter(const ParsedCall& in_Function, std::size_t& inout_uiIndex,
                              const Handle<Parameter>& in_pParameter);

    /// ScriptParserValues.cpp: constants and values of parameters.
    ParsedExpression newConstant(double in_dValue);
    ParsedExpression newIndexRange(std::size_t in_uiFirst, std::size_t in_uiLast,
                                   const ScriptIterator& in_Position);
    Handle<Parameter> newParameterValueInt(int in_iValue);
    Handle<Parameter> newParameterValueSizeT(std::size_t in_uiValue);
    Handle<Parameter> newParameterValueDouble(double in_dValue);
    Handle<Parameter> newParameterValueIter(const ScriptIterator& in_First,
                                            const ScriptIterator& in_Last);
    Handle<Parameter> newParameterValue(const std::string& in_strName);

    /// ScriptParserOperations.cpp: operators.
    ParsedExpression newAddOperation(const ParsedExpression& in_Left,
                                     const ParsedExpression& in_Right);
    ParsedExpression newSubOperation(const ParsedExpression& in_Left,
                                     const ParsedExpression& in_Right);
    ParsedExpression newMultOperation(const ParsedExpression& in_Left,
                                      const ParsedExpression& in_Right);
    ParsedExpression newDivOperation(const ParsedExpression& in_Left,
                                     const ParsedExpression& in_Right);
    ParsedExpression newPowOperation(const ParsedExpression& in_Left,
                                     const ParsedExpression& in_Right);
    ParsedExpression newSliceOperation(const ParsedExpression& in_Left,
                                       const ParsedExpression& in_Right);
    ParsedExpression newConcatenateOperation(const ParsedExpression& in_Left,
                                             const ParsedExpression& in_Right);
    ParsedExpression newConcatenateOperationDef(const ParsedExpression& in_First);
    ParsedExpression newIfOperationDef(const ParsedExpression& in_First);
    void addConcatenateOperationArgument(ParsedExpression& inout_Operation,
                                         const ParsedExpression& in_Operand);
    void addIfOperationArgument(ParsedExpression& inout_Operation,
                                const ParsedExpression& in_Operand);

    template <class OperatorT>
    ParsedExpression newBinaryOperation(const ParsedExpression& in_Left,
                                        const ParsedExpression& in_Right);
    template <class OperatorT>
    ParsedExpression newXaryOperation(const ParsedExpression& in_First);
    static bool addOperand(FunctionBaseImpl& inout_Function,
                           const Handle<Expression>& in_pExpression);
    void addOperationArgument(ParsedExpression& inout_Operation,
                              const ParsedExpression& in_Operand);

    static void lookAhead(const ScriptIterator& in_First);

    /// Ends the script with the first operand that is one too many.
    void countOperands(std::size_t in_uiCount);

    std::string makeQualifiedName(const std::string& in_strName) const;

    /// Dozens of sites ask for the level in each statement; it is read once.
    void readLogLevel();

    /// For what tells of the grammar's way, by the level at the start of the statement.
    CachedLLLogger m_Logger{"quillmark.math.xpr.ScriptParser"};
    ScriptParser* m_pScriptParser = nullptr;
    std::unique_ptr<SkipGrammar> m_pSkipGrammar;
    std::unique_ptr<Definition> m_pDefinition;
    StatementGuard m_Guard;
    std::size_t m_uiNames = 0;
    /// What the script has made so far, failed alternatives included.
    std::size_t m_uiOperands = 0;
    std::size_t m_uiListedIndices = 0;
    /// The name of the script's file, which the positions of its nodes share.
    std::shared_ptr<const std::string> m_pFile;
};

} // namespace Velmora::Math::Xpr
