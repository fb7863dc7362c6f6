#pragma once

#include <cstddef>

#include <velmora/Handle.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/Parameter.h>
#include <velmora/math/xpr/Variable.h>

namespace Velmora::Math::Xpr {

/// An expression with named inputs, its arguments, and named settings, its parameters.
///
/// In C++ a literal 0 could be an index or a name: write `getArgument(std::size_t(0))`.
class VELMORA_EXPORT Function : public virtual Expression {
public:
    /// The name under which scripts call it.
    virtual const char* getName() const = 0;

    /// By position, from 0. Null, with an ERROR line, beyond the last.
    virtual Handle<Variable> getArgument(std::size_t in_uiIndex) const = 0;

    /// By name. A function of exactly one argument gives that argument for any name. Otherwise an
    /// unknown name gives null and logs nothing.
    virtual Handle<Variable> getArgument(const char* in_szArgumentName) const = 0;

    /// By position, from 0. Null, with an ERROR line, beyond the last.
    virtual Handle<Parameter> getParameter(std::size_t in_uiIndex) const = 0;

    /// By name. Null, with an ERROR line, for an unknown name.
    virtual Handle<Parameter> getParameter(const char* in_szName) const = 0;
};

} // namespace Velmora::Math::Xpr
