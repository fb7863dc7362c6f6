#include "ScriptParserImpl.h"

#include <typeinfo>

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

#include "OperandsAhead.h"
#include "ScriptGrammar.h"
#include "SkipGrammar.h"
#include "UnknownVariable.h"

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ScriptParser");

namespace {

const char* depthText() {
    static const std::string s_strText = "Operators are chained more than " +
                                         std::to_string(ScriptParser::MaxOperatorDepth) +
                                         " levels deep.";
    return s_strText.c_str();
}

const char* indicesText() {
    static const std::string s_strText =
        "A slice has more than " + std::to_string(ScriptParser::MaxIndices) + " indices.";
    return s_strText.c_str();
}

const char* operandsText() {
    static const std::string s_strText = "The script has more than " +
                                         std::to_string(ScriptParser::MaxOperands) +
                                         " definitions and operands.";
    return s_strText.c_str();
}

} // namespace

ScriptParser::ScriptParserImpl::ScriptParserImpl() {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::ScriptParserImpl");
}

ScriptParser::ScriptParserImpl::~ScriptParserImpl() {
    readLogLevel();
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::~ScriptParserImpl");
}

ScriptParser::ScriptParserImpl::Outcome
ScriptParser::ScriptParserImpl::parseStatement(const ScriptIterator& in_First,
                                               const ScriptIterator& in_Last) {
    if (m_pSkipGrammar == nullptr) {
        lookAhead(in_First);
        m_pSkipGrammar = std::make_unique<SkipGrammar>(in_First.getText());
    }
    if (m_pDefinition == nullptr) {
        m_pDefinition = std::make_unique<Definition>(*this);
    }
    readLogLevel();
    const StatementGuard::Statement statement(m_Guard);
    Outcome outcome;
    outcome.m_Stop = in_First;
    const ScriptScanner scanner(outcome.m_Stop, in_Last, SkipAheadPolicy(*m_pSkipGrammar));
    outcome.m_bHit = m_pDefinition->start().parse(scanner);
    if (outcome.m_bHit) {
        m_pSkipGrammar->skip(outcome.m_Stop);
        outcome.m_bFull = outcome.m_Stop == in_Last;
    }
    return outcome;
}

/// Refuses a script that has too many operands before their nodes are made, by its commas and
/// equals signs. One with fewer characters can't have so many.
void ScriptParser::ScriptParserImpl::lookAhead(const ScriptIterator& in_First) {
    const auto uiText = static_cast<std::size_t>(in_First.getTextEnd() - in_First.getText());
    if (uiText <= ScriptParser::MaxOperands) {
        return;
    }
    const auto statement = findOperandsBeyond(ScriptParser::MaxOperands, in_First);
    if (statement) {
        throw ScriptSyntaxError(*statement, operandsText());
    }
}

void ScriptParser::ScriptParserImpl::readLogLevel() {
    const auto level =
        fileLogger().isEnabledFor(log4cplus::TRACE_LOG_LEVEL)   ? log4cplus::TRACE_LOG_LEVEL
        : fileLogger().isEnabledFor(log4cplus::DEBUG_LOG_LEVEL) ? log4cplus::DEBUG_LOG_LEVEL
                                                                : log4cplus::OFF_LOG_LEVEL;
    m_Logger.setCachedLogLevel(level);
}

void ScriptParser::ScriptParserImpl::saveExpression(const Handle<Expression>& in_pExpression) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::saveExpression");
    m_pScriptParser->m_pSavedExpression = in_pExpression;
    countOperands(1);
}

void ScriptParser::ScriptParserImpl::savePosition(const Handle<Expression>& in_pExpression,
                                                  const ScriptIterator& in_Position) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::savePosition");
    const Handle<ExpressionBaseImpl> pExpressionImpl(in_pExpression);
    if (pExpressionImpl.isNull()) {
        VELMORA_ASSERT_FAIL("!pExpressionImpl.isNull() && \"invalid expression type\"");
        return;
    }
    setSourceInfo(*pExpressionImpl, in_Position);
}

void ScriptParser::ScriptParserImpl::setSourceInfo(ExpressionBaseImpl& inout_Node,
                                                   const ScriptIterator& in_Position) {
    if (m_pFile == nullptr) {
        m_pFile = std::make_shared<const std::string>(in_Position.getFile());
    }
    inout_Node.setSourceInfo(
        SourcePosition(m_pFile, in_Position.getLine(), in_Position.getColumn()));
}

void ScriptParser::ScriptParserImpl::saveNodePosition(const ParsedExpression& in_Node,
                                                      const ScriptIterator& in_Position) {
    savePosition(in_Node.m_pNode, in_Position);
    checkDepth(in_Node, in_Position);
}

void ScriptParser::ScriptParserImpl::saveCallPosition(const ParsedCall& in_Call,
                                                      const ScriptIterator& in_Position) {
    saveNodePosition(in_Call, in_Position);
}

// An argument that the name turned out to be belongs to the definition, not to this place.
void ScriptParser::ScriptParserImpl::saveReferencePosition(const ParsedExpression& in_Node,
                                                           const ScriptIterator& in_Position) {
    ExpressionBaseImpl* const pNode =
        in_Node.m_pNode.isNull() ? nullptr : in_Node.m_pNode->asNode();
    if (pNode != nullptr && typeid(*pNode) == typeid(UnknownVariable)) {
        setSourceInfo(*pNode, in_Position);
    }
}

void ScriptParser::ScriptParserImpl::checkDepth(const ParsedExpression& in_Node,
                                                const ScriptIterator& in_Position) {
    if (in_Node.m_uiDepth > ScriptParser::MaxOperatorDepth) {
        throw ScriptSyntaxError(in_Position, depthText());
    }
    if (in_Node.m_uiIndices > ScriptParser::MaxIndices) {
        throw ScriptSyntaxError(in_Position, indicesText());
    }
}

void ScriptParser::ScriptParserImpl::countOperands(std::size_t in_uiCount) {
    m_uiOperands += in_uiCount;
    if (m_uiOperands > ScriptParser::MaxOperands) {
        throw ScriptSyntaxError(*m_pScriptParser->m_pCurrentPosition, operandsText());
    }
}

void ScriptParser::ScriptParserImpl::logFound(const char* in_szLiteral,
                                              const ScriptIterator& in_Position) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::logFound");
    VELMORA_LOG_DEBUG(m_Logger,
                      "found: [" << in_szLiteral << "] at line " << in_Position.getLine());
}

void ScriptParser::ScriptParserImpl::foundStatement(const ScriptIterator& in_First,
                                                    const ScriptIterator& in_Last) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::foundStatement");
    VELMORA_LOG_DEBUG(m_Logger, "found statement: \n"
                                    << rawText(in_First, in_Last) << "\nfileName=\""
                                    << in_First.getFile() << "\" line=\"" << in_First.getLine()
                                    << "\" column=\"" << in_First.getColumn() << "\"");
}

std::string ScriptParser::ScriptParserImpl::makeName(const ScriptIterator& in_First,
                                                     const ScriptIterator& in_Last) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::makeName");
    noteName(in_Last);
    return rawText(in_First, in_Last);
}

void ScriptParser::ScriptParserImpl::noteName(const ScriptIterator& in_Behind) {
    *m_pScriptParser->m_pLastNamePosition = in_Behind;
    ++m_uiNames;
}

bool ScriptParser::ScriptParserImpl::isWatched() const {
    return detail::isSiteEnabled(m_Logger, log4cplus::DEBUG_LOG_LEVEL);
}

void ScriptParser::ScriptParserImpl::reportMissing(const char* in_szMessage,
                                                   const ScriptIterator& in_Position) {
    VELMORA_LOG_ERROR(fileLogger(), "syntax error:" << in_Position << " " << in_szMessage);
}

std::string ScriptParser::ScriptParserImpl::makeQualifiedName(const std::string& in_strName) const {
    return m_pScriptParser->m_strScriptName + "." + in_strName;
}

} // namespace Velmora::Math::Xpr
