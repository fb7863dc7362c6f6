#pragma once

#include <string>

#include <velmora/Object.h>

namespace Velmora::Math::Xpr {

/// What an action of the script grammar throws to end the script, held by `Handle`.
class ScriptErrorDescription : public virtual Object {
public:
    virtual const char* getMessage() const = 0;
};

/// A function definition that failed.
class ScriptFunctionError : public ScriptErrorDescription {
public:
    ScriptFunctionError(const char* in_szName, const char* in_szMessage);
    const char* getMessage() const override { return m_strText.c_str(); }

private:
    std::string m_strText;
};

/// A variable definition that failed.
class ScriptVariableError : public ScriptErrorDescription {
public:
    ScriptVariableError(const char* in_szName, const char* in_szMessage);
    const char* getMessage() const override { return m_strText.c_str(); }

private:
    std::string m_strText;
};

} // namespace Velmora::Math::Xpr
