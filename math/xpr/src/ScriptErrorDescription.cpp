#include "ScriptErrorDescription.h"

namespace Velmora::Math::Xpr {

namespace {

std::string errorText(const char* in_szMessage, const char* in_szKind, const char* in_szName) {
    return std::string("\"") + in_szMessage + "\" while defining " + in_szKind + ": " + in_szName;
}

} // namespace

ScriptFunctionError::ScriptFunctionError(const char* in_szName, const char* in_szMessage)
    : m_strText(errorText(in_szMessage, "function", in_szName)) {}

ScriptVariableError::ScriptVariableError(const char* in_szName, const char* in_szMessage)
    : m_strText(errorText(in_szMessage, "variable", in_szName)) {}

} // namespace Velmora::Math::Xpr
