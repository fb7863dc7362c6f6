#include "math/xpr/ParsedScript.h"

#include <sstream>

#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/ScriptParser.h>
#include <velmora/math/xpr/XaryFunction.h>

#include "math/xpr/src/UnknownFunction.h"
#include "math/xpr/src/UnknownVariable.h"

namespace Velmora::Testing {

using namespace Math::Xpr;

namespace {

std::string describeParameter(const ParameterImpl& in_Parameter) {
    std::ostringstream stream;
    if (in_Parameter.hasDirectValue()) {
        const bool bText = in_Parameter.getValue().getTag() == ParameterValue::StringTag;
        stream << (bText ? "\"" : "") << in_Parameter.getValue() << (bText ? "\"" : "");
        if (in_Parameter.getValue().getTag() == ParameterValue::FloatTag) {
            stream << "f";
        }
    } else if (&in_Parameter.getLeafChild() != &in_Parameter) {
        stream << "@" << in_Parameter.getLeafChild().getName();
    } else {
        stream << in_Parameter.getName();
    }
    return stream.str();
}

std::string describeParameters(const FunctionBaseImpl& in_Function) {
    std::string strText;
    for (auto ite = in_Function.getParameterBegin(); ite != in_Function.getParameterEnd(); ++ite) {
        strText += (strText.empty() ? "<" : ", ") + describeParameter(*ite->second);
    }
    return strText.empty() ? strText : strText + ">";
}

std::string describeArguments(const FunctionBaseImpl& in_Function) {
    std::string strText;
    for (std::size_t ui = 0; ui < in_Function.getArgumentCount(); ++ui) {
        const Handle<VariableImpl> pArgument(in_Function.getArgument(ui));
        strText += (ui == 0 ? "" : ", ") +
                   describe(pArgument.isNull() ? Handle<Expression>()
                                               : Handle<Expression>(pArgument->getValue()));
    }
    return "(" + strText + ")";
}

std::string describeDefinition(const ScriptFunctionImpl& in_Function) {
    std::string strNames;
    for (auto ite = in_Function.getArgumentBegin(); ite != in_Function.getArgumentEnd(); ++ite) {
        strNames += (strNames.empty() ? "" : ", ") + ite->first;
    }
    return in_Function.getName() + describeParameters(in_Function) + "(" + strNames +
           ") = " + describe(Handle<Expression>(in_Function.getImplementation()));
}

} // namespace

ParsedScript::ParsedScript(const std::string& in_strText, const char* in_szScriptName,
                           const char* in_szFileDirectory) {
    ScriptParser parser;
    std::istringstream stream(in_strText);
    parser.initialize(stream, in_szScriptName, in_szFileDirectory);
    for (;;) {
        const Handle<Expression> pExpression = parser.getExpression();
        if (pExpression.isNull()) {
            break;
        }
        expressions.push_back(pExpression);
    }
    failed = parser.failed();
}

std::vector<std::string> ParsedScript::descriptions() const {
    std::vector<std::string> vTexts;
    for (const Handle<Expression>& pExpression : expressions) {
        vTexts.push_back(describe(pExpression));
    }
    return vTexts;
}

std::string describe(const Handle<Expression>& in_pExpression) {
    if (in_pExpression.isNull()) {
        return "null";
    }
    if (const Handle<ConstantImpl> pConstant(in_pExpression); !pConstant.isNull()) {
        std::ostringstream stream;
        stream << pConstant->getValue();
        return stream.str();
    }
    if (const Handle<UnknownVariable> pUnknown(in_pExpression); !pUnknown.isNull()) {
        return std::string("?") + pUnknown->getName();
    }
    if (const Handle<Argument> pArgument(in_pExpression); !pArgument.isNull()) {
        const std::string strName = pArgument->getName();
        return strName.substr(0, strName.find('&'));
    }
    if (const Handle<DomainVariableImpl> pInput(in_pExpression); !pInput.isNull()) {
        return std::string("input ") + pInput->getName();
    }
    if (const Handle<VariableImpl> pVariable(in_pExpression); !pVariable.isNull()) {
        return std::string(pVariable->getName()) + " = " +
               describe(Handle<Expression>(pVariable->getValue()));
    }
    if (const Handle<ScriptFunctionImpl> pFunction(in_pExpression); !pFunction.isNull()) {
        return describeDefinition(*pFunction);
    }
    const Handle<FunctionBaseImpl> pFunction(in_pExpression);
    const bool bUnknown = !Handle<UnknownFunction>(in_pExpression).isNull();
    return (bUnknown ? "?" : "") + std::string(pFunction->getName()) +
           describeParameters(*pFunction) + describeArguments(*pFunction);
}

std::string sourceInfo(const Handle<Expression>& in_pExpression) {
    return Handle<ExpressionBaseImpl>(in_pExpression)->getSourceInfo();
}

std::string position(int in_iLine, int in_iColumn) {
    return "<file_position fileName=\"s\" line=\"" + std::to_string(in_iLine) + "\" column=\"" +
           std::to_string(in_iColumn) + "\"/>";
}

} // namespace Velmora::Testing
