#include "ScriptParserImpl.h"

#include <cstdint>

#include <velmora/LogSite.h>
#include <velmora/ParameterValue.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/ParameterImpl.h>

namespace Velmora::Math::Xpr {

namespace {

const char* rangeText() {
    static const std::string s_strText = "An index range lists more than " +
                                         std::to_string(ScriptParser::MaxRangeSize) + " indices.";
    return s_strText.c_str();
}

const char* rangesText() {
    static const std::string s_strText = "The index ranges of the script list more than " +
                                         std::to_string(ScriptParser::MaxRangesSize) +
                                         " indices together.";
    return s_strText.c_str();
}

Handle<Expression> newConstantOf(const DoubleVector& in_vValue) {
    const Handle<ConstantImpl> pNewConstant(new ConstantImpl(in_vValue));
    if (pNewConstant.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewConstant.isNull()");
    }
    return Handle<Expression>(pNewConstant);
}

Handle<Parameter> newParameterOf(const ParameterValue& in_Value) {
    const Handle<Parameter> pNewParameter(new ParameterImpl);
    if (pNewParameter.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewParameter.isNull()");
        return pNewParameter;
    }
    pNewParameter->setValue(in_Value);
    return pNewParameter;
}

} // namespace

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newConstant(double in_dValue) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newConstant");
    DoubleVector vValue;
    vValue.push_back(in_dValue);
    return ParsedExpression(newConstantOf(vValue));
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newIndexRange(std::size_t in_uiFirst, std::size_t in_uiLast,
                                              const ScriptIterator& in_Position) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newIndexRange");
    const bool bUpward = in_uiFirst <= in_uiLast;
    const std::size_t uiCount = (bUpward ? in_uiLast - in_uiFirst : in_uiFirst - in_uiLast) + 1;
    if (uiCount > ScriptParser::MaxRangeSize) {
        throw ScriptSyntaxError(in_Position, rangeText());
    }
    m_uiListedIndices += uiCount;
    if (m_uiListedIndices > ScriptParser::MaxRangesSize) {
        throw ScriptSyntaxError(in_Position, rangesText());
    }
    DoubleVector vIndices;
    vIndices.resize(uiCount);
    for (std::size_t ui = 0; ui < uiCount; ++ui) {
        vIndices[ui] = static_cast<double>(bUpward ? in_uiFirst + ui : in_uiFirst - ui);
    }
    return ParsedExpression(newConstantOf(vIndices));
}

Handle<Parameter> ScriptParser::ScriptParserImpl::newParameterValueInt(int in_iValue) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newParameterValueInt");
    return newParameterOf(ParameterValue(in_iValue));
}

Handle<Parameter> ScriptParser::ScriptParserImpl::newParameterValueSizeT(std::size_t in_uiValue) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newParameterValueSizeT");
    return newParameterOf(
        ParameterValue(static_cast<std::int32_t>(static_cast<std::uint32_t>(in_uiValue))));
}

Handle<Parameter> ScriptParser::ScriptParserImpl::newParameterValueDouble(double in_dValue) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newParameterValueDouble");
    return newParameterOf(ParameterValue(static_cast<float>(in_dValue)));
}

Handle<Parameter>
ScriptParser::ScriptParserImpl::newParameterValueIter(const ScriptIterator& in_First,
                                                      const ScriptIterator& in_Last) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newParameterValueIter");
    const Handle<Parameter> pNewParameter(new ParameterImpl);
    if (pNewParameter.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewParameter.isNull()");
        return pNewParameter;
    }
    const std::string strText(in_First.getText() + 1, in_Last.getText() - 1);
    std::string strFinal;
    if (!m_pScriptParser->replaceMacros(strText, strFinal)) {
        return Handle<Parameter>();
    }
    ParameterValue value;
    value.setTag(ParameterValue::StringTag);
    value.initUnionFromString(strFinal.c_str(), strFinal.c_str() + strFinal.size());
    pNewParameter->setValue(value);
    value.deallocateString();
    return pNewParameter;
}

Handle<Parameter> ScriptParser::ScriptParserImpl::newParameterValue(const std::string& in_strName) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newParameterValue");
    if (m_pScriptParser->m_pCurrentFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!m_pScriptParser->m_pCurrentFunction.isNull()");
        return Handle<Parameter>();
    }
    return m_pScriptParser->m_pCurrentFunction->getParameter(in_strName.c_str());
}

} // namespace Velmora::Math::Xpr
