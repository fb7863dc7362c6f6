#include "ScriptParserImpl.h"

#include <algorithm>

#include <velmora/LogSite.h>
#include <velmora/math/xpr/DomainVariableImpl.h>

#include "UnknownFunction.h"
#include "UnknownVariable.h"

namespace Velmora::Math::Xpr {

Handle<VariableImpl> ScriptParser::ScriptParserImpl::newVariableDef(const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newVariableDef");
    VELMORA_LOG_DEBUG(m_Logger, "found new variable definition: " << in_strName);
    Handle<VariableImpl> pNewVariable(new VariableImpl);
    if (pNewVariable.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewVariable.isNull()");
        return pNewVariable;
    }
    pNewVariable->setName(makeQualifiedName(in_strName).c_str());
    m_pScriptParser->m_pCurrentFunction = Handle<Function>();
    return pNewVariable;
}

Handle<VariableImpl>
ScriptParser::ScriptParserImpl::newDomainVariableDef(const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newDomainVariableDef");
    VELMORA_LOG_DEBUG(m_Logger, "found new domain variable definition: " << in_strName);
    Handle<VariableImpl> pNewVariable(new DomainVariableImpl);
    if (pNewVariable.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewVariable.isNull()");
        return pNewVariable;
    }
    pNewVariable->setName(makeQualifiedName(in_strName).c_str());
    m_pScriptParser->m_pCurrentFunction = Handle<Function>();
    return pNewVariable;
}

Handle<ScriptFunctionImpl>
ScriptParser::ScriptParserImpl::newFunctionDef(const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newFunctionDef");
    VELMORA_LOG_DEBUG(m_Logger, "found new function definition: " << in_strName);
    Handle<ScriptFunctionImpl> pNewFunction(new ScriptFunctionImpl(""));
    if (pNewFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewFunction.isNull()");
        return pNewFunction;
    }
    pNewFunction->setName(makeQualifiedName(in_strName).c_str());
    m_pScriptParser->m_pCurrentFunction = pNewFunction;
    return pNewFunction;
}

void ScriptParser::ScriptParserImpl::addFunctionArgument(
    const Handle<ScriptFunctionImpl>& in_pFunction, const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::addFunctionArgument");
    countOperands(1);
    if (in_pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pFunction.isNull()");
        return;
    }
    VELMORA_LOG_DEBUG(m_Logger, "adding argument=\"" << in_strName << "\" to function=\""
                                                     << in_pFunction->getName() << "\"");
    in_pFunction->addArgument(in_strName.c_str());
}

void ScriptParser::ScriptParserImpl::addFunctionParameter(
    const Handle<ScriptFunctionImpl>& in_pFunction, const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::addFunctionParameter");
    countOperands(1);
    if (in_pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pFunction.isNull()");
        return;
    }
    VELMORA_LOG_DEBUG(m_Logger, "adding parameter=\"" << in_strName << "\" to function=\""
                                                      << in_pFunction->getName() << "\"");
    in_pFunction->addParameter(in_strName.c_str());
}

void ScriptParser::ScriptParserImpl::setFunctionImplementation(
    const Handle<ScriptFunctionImpl>& in_pFunction, const ParsedExpression& in_Body) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::setFunctionImplementation");
    if (in_pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pFunction.isNull()");
        return;
    }
    VELMORA_LOG_DEBUG(m_Logger, "setting implementation for function=" << in_pFunction->getName());
    if (!in_pFunction->setImplementation(in_Body.m_pNode)) {
        throw ScriptDefinitionError(
            *m_pScriptParser->m_pLastNamePosition,
            Handle<ScriptErrorDescription>(new ScriptFunctionError(
                in_pFunction->getName(), "failed to set function implementation")));
    }
}

void ScriptParser::ScriptParserImpl::setVariable(const Handle<VariableImpl>& in_pVariable,
                                                 const ParsedExpression& in_Value) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::setVariable");
    if (in_pVariable.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pVariable.isNull()");
        return;
    }
    Variable& variable = *in_pVariable;
    if (!variable.setValue(in_Value.m_pNode)) {
        throw ScriptDefinitionError(
            *m_pScriptParser->m_pLastNamePosition,
            Handle<ScriptErrorDescription>(new ScriptVariableError(
                variable.getName(), "failed to set variable implementation")));
    }
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newVariable(const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newVariable");
    VELMORA_LOG_DEBUG(m_Logger, "found reference to variable " << in_strName);
    const Handle<Function>& pCurrentFunction = m_pScriptParser->m_pCurrentFunction;
    if (!pCurrentFunction.isNull()) {
        const Handle<Variable> pArgument = pCurrentFunction->getArgument(in_strName.c_str());
        if (!pArgument.isNull()) {
            VELMORA_LOG_DEBUG(m_Logger, "variable " << in_strName
                                                    << " is an argument of the function "
                                                    << pCurrentFunction->getName());
            return ParsedExpression(pArgument);
        }
    }
    const Handle<UnknownVariable> pNewVariable(new UnknownVariable);
    if (pNewVariable.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewVariable.isNull()");
        return ParsedExpression();
    }
    pNewVariable->setName(makeQualifiedName(in_strName).c_str());
    return ParsedExpression(pNewVariable);
}

ScriptParser::ScriptParserImpl::ParsedCall
ScriptParser::ScriptParserImpl::newFunction(const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newFunction");
    VELMORA_LOG_DEBUG(m_Logger, "found function call to " << in_strName);
    const Handle<FunctionBaseImpl> pNewFunction(new UnknownFunction);
    if (pNewFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewFunction.isNull()");
        return ParsedCall();
    }
    pNewFunction->setName(makeQualifiedName(in_strName).c_str());
    return ParsedCall(pNewFunction, 1);
}

void ScriptParser::ScriptParserImpl::setFunctionArgument(ParsedCall& inout_Function,
                                                         std::size_t& inout_uiIndex,
                                                         const ParsedExpression& in_Argument) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::setFunctionArgument");
    countOperands(1);
    const Handle<FunctionBaseImpl>& pFunction = inout_Function.m_pNode;
    if (pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pFunction.isNull()");
        return;
    }
    if (in_Argument.m_pNode.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pExpression.isNull()");
        return;
    }
    const std::string strName = "_" + std::to_string(inout_uiIndex++);
    pFunction->addArgument(strName.c_str());
    const Handle<Variable> pArgument = pFunction->getArgument(strName.c_str());
    if (pArgument.isNull()) {
        VELMORA_ASSERT_FAIL("!pArgument.isNull()");
        return;
    }
    pArgument->setValue(in_Argument.m_pNode);
    inout_Function.m_uiDepth = std::max(inout_Function.m_uiDepth, in_Argument.m_uiDepth + 1);
}

void ScriptParser::ScriptParserImpl::setFunctionParameter(const ParsedCall& in_Function,
                                                          std::size_t& inout_uiIndex,
                                                          const Handle<Parameter>& in_pParameter) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::setFunctionParameter");
    countOperands(1);
    const Handle<FunctionBaseImpl>& pFunction = in_Function.m_pNode;
    if (pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pFunction.isNull()");
        return;
    }
    if (in_pParameter.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pParameter.isNull()");
        return;
    }
    const std::string strName = "_" + std::to_string(inout_uiIndex++);
    pFunction->addParameter(strName.c_str());
    const Handle<ParameterImpl> pParameter(pFunction->getParameter(strName.c_str()));
    if (pParameter.isNull()) {
        VELMORA_ASSERT_FAIL("!pParameter.isNull()");
        return;
    }
    const Handle<ParameterImpl> pSrcParam(in_pParameter);
    if (pSrcParam.isNull()) {
        VELMORA_ASSERT_FAIL("!pSrcParam.isNull()");
        return;
    }
    Parameter& parameter = *pParameter;
    if (pSrcParam->hasDirectValue()) {
        parameter.setValue(pSrcParam->getValue());
    } else {
        parameter.setValue(in_pParameter);
    }
}

} // namespace Velmora::Math::Xpr
