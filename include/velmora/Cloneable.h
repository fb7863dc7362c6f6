#pragma once

#include <velmora/Object.h>

namespace Velmora {

/// An object that can be copied without knowing its class.
class VELMORA_EXPORT Cloneable : public virtual Object {
public:
    /// A new object of the same class, owned by the caller.
    virtual Cloneable* clone() const = 0;
};

} // namespace Velmora
