#pragma once

#include <string>
#include <vector>

#include <velmora/Handle.h>
#include <velmora/math/xpr/Expression.h>

namespace Velmora::Testing {

/// All definitions of a script, as `ScriptParser` hands them out.
struct ParsedScript {
    explicit ParsedScript(const std::string& in_strText, const char* in_szScriptName = "s.xpr",
                          const char* in_szFileDirectory = "dir");

    std::vector<Handle<Math::Xpr::Expression>> expressions;
    bool failed = false;

    /// Each definition as `describe` writes it.
    std::vector<std::string> descriptions() const;
};

/// A graph in one line: "s.x = add([1], ?s.a)". A definition of a function is "s.f<p>(x) = x", an
/// input "input s.x"; a placeholder has a "?" in front, and the parameters of a call their values,
/// "@p" for one that takes its value from the parameter p. An operand that is missing is "null".
std::string describe(const Handle<Math::Xpr::Expression>& in_pExpression);

/// The source info of a node.
std::string sourceInfo(const Handle<Math::Xpr::Expression>& in_pExpression);

/// The form in which a position of script "s" is written.
std::string position(int in_iLine, int in_iColumn);

} // namespace Velmora::Testing
