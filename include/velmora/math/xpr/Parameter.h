#pragma once

#include <velmora/Export.h>
#include <velmora/Handle.h>
#include <velmora/Object.h>
#include <velmora/OutputStreamable.h>
#include <velmora/ParameterValue.h>

namespace Velmora::Math::Xpr {

/// A named setting of a function, read when the function is configured and not per frame.
class VELMORA_EXPORT Parameter : public virtual Object, public OutputStreamable {
public:
    /// The name inside its function.
    virtual const char* getName() const = 0;

    /// Takes the value from another parameter from now on; a null handle ends that. The parameter
    /// must belong to a function.
    virtual bool setValue(const Handle<Parameter>& in_pParameter) = 0;

    /// Sets the direct value, which stays hidden as long as the parameter takes its value from
    /// another one.
    virtual bool setValue(const ParameterValue& in_Value) = 0;

    /// The value in force, possibly empty.
    virtual const ParameterValue& getValue() const = 0;
};

} // namespace Velmora::Math::Xpr
