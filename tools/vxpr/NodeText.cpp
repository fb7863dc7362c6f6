#include "NodeText.h"

#include "NumberText.h"
#include "TextList.h"

#include <velmora/ParameterValue.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>
#include <velmora/math/xpr/ParameterImpl.h>

#include <array>
#include <charconv>
#include <sstream>
#include <vector>

namespace Vxpr {

using namespace Velmora::Math::Xpr;
using Velmora::ParameterValue;
using Velmora::Math::DoubleVector;

namespace {

/// More would make the nodes wider than pictures can bear.
constexpr std::size_t MOST_ELEMENTS = 4;
constexpr std::size_t LONGEST_TEXT = 32;

constexpr int TEXT_TAG = 1;
constexpr int FLOAT_TAG = 5;

template <class T>
bool is(const ExpressionBaseImpl& in_Node) {
    return dynamic_cast<const T*>(&in_Node) != nullptr;
}

const char* findSymbol(const ExpressionBaseImpl& in_Node) {
    if (is<OperatorPlus>(in_Node)) {
        return "+";
    }
    if (is<OperatorMinus>(in_Node)) {
        return "-";
    }
    if (is<OperatorMultiply>(in_Node)) {
        return "*";
    }
    if (is<OperatorDivide>(in_Node)) {
        return "/";
    }
    if (is<OperatorSlice>(in_Node)) {
        return "x[i]";
    }
    if (is<OperatorConcatenate>(in_Node)) {
        return "{ }";
    }
    return is<OperatorIf>(in_Node) ? "if" : nullptr;
}

/// A float always shows that it is none of the whole numbers, which are another kind.
std::string describeFloat(float in_fValue) {
    std::array<char, MAX_NUMBER_TEXT> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), in_fValue);
    const std::string strValue(buffer.data(), result.ptr);
    return strValue.find_first_not_of("-0123456789") == std::string::npos ? strValue + ".0"
                                                                          : strValue;
}

std::string describeParameter(const ParameterImpl& in_Parameter) {
    const ParameterImpl& leaf = in_Parameter.getLeafChild();
    if (!leaf.hasDirectValue()) {
        return leaf.getName();
    }
    const ParameterValue& value = leaf.getValue();
    if (value.getTag() == TEXT_TAG) {
        const std::string strText = value.getString();
        return "\"" +
               (strText.size() > LONGEST_TEXT ? strText.substr(0, LONGEST_TEXT) + "..." : strText) +
               "\"";
    }
    if (value.getTag() == FLOAT_TAG) {
        return describeFloat(value);
    }
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

} // namespace

std::string describeOperation(const FunctionBaseImpl& in_Function, const std::string& in_strName) {
    if (const char* szSymbol = findSymbol(in_Function)) {
        return szSymbol;
    }
    const std::vector<std::string> vParameters = describeParameters(in_Function);
    return in_strName + (vParameters.empty() ? "" : "<" + join(vParameters, ", ") + ">");
}

std::vector<std::string> describeParameters(const FunctionBaseImpl& in_Function) {
    std::vector<std::string> vParameters;
    for (auto ite = in_Function.getParameterBegin(); ite != in_Function.getParameterEnd(); ++ite) {
        vParameters.push_back(describeParameter(*ite->second));
    }
    return vParameters;
}

std::string describeArguments(const FunctionBaseImpl& in_Function) {
    std::vector<std::string> vParameters;
    for (auto ite = in_Function.getParameterBegin(); ite != in_Function.getParameterEnd(); ++ite) {
        vParameters.push_back(ite->first);
    }
    std::vector<std::string> vArguments;
    for (auto ite = in_Function.getArgumentBegin(); ite != in_Function.getArgumentEnd(); ++ite) {
        vArguments.push_back(ite->first);
    }
    return (vParameters.empty() ? "" : "<" + join(vParameters, ", ") + ">") + "(" +
           join(vArguments, ", ") + ")";
}

std::string describeValue(const DoubleVector& in_vValue) {
    if (in_vValue.size() == 1) {
        return toText(in_vValue[0]);
    }
    const bool bWhole = in_vValue.size() <= MOST_ELEMENTS;
    std::vector<std::string> vElements;
    for (std::size_t ui = 0; ui < (bWhole ? in_vValue.size() : MOST_ELEMENTS - 1); ++ui) {
        vElements.push_back(toText(in_vValue[ui]));
    }
    if (!bWhole) {
        vElements.push_back("... " + count(in_vValue.size(), "value"));
    }
    return "[" + join(vElements, ", ") + "]";
}

std::string describeRole(const ExpressionBaseImpl& in_Reader, std::size_t in_uiSource,
                         std::size_t in_uiSources) {
    if (is<OperatorIf>(in_Reader) && in_uiSource < 3) {
        constexpr std::array ROLES{"if", "then", "else"};
        return ROLES[in_uiSource];
    }
    if (is<OperatorSlice>(in_Reader) && in_uiSource < 2) {
        return in_uiSource == 0 ? "x" : "i";
    }
    return in_uiSources > 1 ? std::to_string(in_uiSource + 1) : "";
}

} // namespace Vxpr
