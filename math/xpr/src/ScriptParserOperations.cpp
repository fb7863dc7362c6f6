#include "ScriptParserImpl.h"

#include <algorithm>

#include <velmora/LogSite.h>
#include <velmora/UUID.h>
#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>

namespace Velmora::Math::Xpr {

template <class OperatorT>
ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newBinaryOperation(const ParsedExpression& in_Left,
                                                   const ParsedExpression& in_Right) {
    countOperands(2);
    const Handle<BinaryOperatorImplNoT> pNewOperation(new OperatorT);
    if (pNewOperation.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewOperation.isNull()");
        return ParsedExpression();
    }
    // A null operand is reported by the argument that refuses it, and the operator stays without.
    pNewOperation->getLeftArgument()->setValue(in_Left.m_pNode);
    pNewOperation->getRightArgument()->setValue(in_Right.m_pNode);
    return ParsedExpression(pNewOperation, std::max(in_Left.m_uiDepth, in_Right.m_uiDepth) + 1);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newAddOperation(const ParsedExpression& in_Left,
                                                const ParsedExpression& in_Right) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newAddOperation");
    return newBinaryOperation<OperatorPlus>(in_Left, in_Right);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newSubOperation(const ParsedExpression& in_Left,
                                                const ParsedExpression& in_Right) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newSubOperation");
    return newBinaryOperation<OperatorMinus>(in_Left, in_Right);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newMultOperation(const ParsedExpression& in_Left,
                                                 const ParsedExpression& in_Right) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newMultOperation");
    return newBinaryOperation<OperatorMultiply>(in_Left, in_Right);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newDivOperation(const ParsedExpression& in_Left,
                                                const ParsedExpression& in_Right) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newDivOperation");
    return newBinaryOperation<OperatorDivide>(in_Left, in_Right);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newPowOperation(const ParsedExpression&, const ParsedExpression&) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newPowOperation");
    VELMORA_ASSERT_FAIL("Not implemented : ScriptParser::ScriptParserImpl::newPowOperation");
    return ParsedExpression();
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newSliceOperation(const ParsedExpression& in_Left,
                                                  const ParsedExpression& in_Right) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newSliceOperation");
    return newBinaryOperation<OperatorSlice>(in_Left, in_Right);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newConcatenateOperation(const ParsedExpression& in_Left,
                                                        const ParsedExpression& in_Right) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newConcatenateOperation");
    countOperands(2);
    const Handle<FunctionBaseImpl> pNewOperation(new OperatorConcatenate);
    if (pNewOperation.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewOperation.isNull()");
        return ParsedExpression();
    }
    const Handle<VariableImpl> pLeft(new Argument);
    if (pLeft.isNull() || !pLeft->setValue(in_Left.m_pNode)) {
        VELMORA_ASSERT_FAIL("pLeft->setValue( in_pLeftExpression )");
        return ParsedExpression();
    }
    const Handle<VariableImpl> pRight(new Argument);
    if (pRight.isNull() || !pRight->setValue(in_Right.m_pNode)) {
        VELMORA_ASSERT_FAIL("pRight->setValue( in_pRightExpression )");
        return ParsedExpression();
    }
    pNewOperation->addArgument("Left", pLeft);
    pNewOperation->addArgument("Right", pRight);
    ParsedExpression joined(pNewOperation, std::max(in_Left.m_uiDepth, in_Right.m_uiDepth) + 1);
    joined.m_uiIndices = std::max(in_Left.m_uiIndices, std::size_t{1}) + 1;
    return joined;
}

template <class OperatorT>
ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newXaryOperation(const ParsedExpression& in_First) {
    countOperands(1);
    const Handle<FunctionBaseImpl> pNewOperation(new OperatorT);
    if (pNewOperation.isNull()) {
        VELMORA_ASSERT_FAIL("!pNewOperation.isNull()");
        return ParsedExpression();
    }
    if (in_First.m_pNode.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pExpression.isNull()");
        return ParsedExpression();
    }
    if (!addOperand(*pNewOperation, in_First.m_pNode)) {
        return ParsedExpression();
    }
    return ParsedExpression(pNewOperation, in_First.m_uiDepth + 1);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newConcatenateOperationDef(const ParsedExpression& in_First) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newConcatenateOperationDef");
    return newXaryOperation<OperatorConcatenate>(in_First);
}

ScriptParser::ScriptParserImpl::ParsedExpression
ScriptParser::ScriptParserImpl::newIfOperationDef(const ParsedExpression& in_First) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::newIfOperationDef");
    return newXaryOperation<OperatorIf>(in_First);
}

void ScriptParser::ScriptParserImpl::addConcatenateOperationArgument(
    ParsedExpression& inout_Operation, const ParsedExpression& in_Operand) {
    VELMORA_TRACE_SCOPE(m_Logger, "ScriptParserImpl::addConcatenateOperationArgument");
    addOperationArgument(inout_Operation, in_Operand);
}

void ScriptParser::ScriptParserImpl::addIfOperationArgument(ParsedExpression& inout_Operation,
                                                            const ParsedExpression& in_Operand) {
    addOperationArgument(inout_Operation, in_Operand);
}

void ScriptParser::ScriptParserImpl::addOperationArgument(ParsedExpression& inout_Operation,
                                                          const ParsedExpression& in_Operand) {
    countOperands(1);
    VELMORA_LOG_DEBUG(m_Logger, "adding argument to concatenate operator");
    const Handle<FunctionBaseImpl> pFunction(inout_Operation.m_pNode);
    if (pFunction.isNull()) {
        VELMORA_ASSERT_FAIL("!pFunction.isNull()");
        return;
    }
    if (in_Operand.m_pNode.isNull()) {
        VELMORA_ASSERT_FAIL("!in_pExpression.isNull()");
        return;
    }
    if (addOperand(*pFunction, in_Operand.m_pNode)) {
        inout_Operation.m_uiDepth = std::max(inout_Operation.m_uiDepth, in_Operand.m_uiDepth + 1);
    }
}

// Nobody looks an operand up by name; the name must only be free.
bool ScriptParser::ScriptParserImpl::addOperand(FunctionBaseImpl& inout_Function,
                                                const Handle<Expression>& in_pExpression) {
    const Handle<VariableImpl> pVar(new Argument);
    if (pVar.isNull() || !pVar->setValue(in_pExpression)) {
        VELMORA_ASSERT_FAIL("pVar->setValue( in_pExpression )");
        return false;
    }
    return inout_Function.addArgument(std::string(UUID()).c_str(), pVar);
}

} // namespace Velmora::Math::Xpr
