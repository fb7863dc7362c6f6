#pragma once

#include <velmora/Object.h>

namespace Velmora {

/// An object that carries state from call to call and can forget it.
class VELMORA_EXPORT Resettable : public virtual Object {
public:
    /// Forgets the state. False if it couldn't.
    virtual bool reset() = 0;
};

} // namespace Velmora
