#pragma once

#include <velmora/Export.h>

namespace Velmora {

/// The root of every class that a handle may own.
///
/// It is always inherited as a virtual base, so that an object that is reached through several
/// interfaces has one `Object` part. Owning pointers destroy through that part, and so through the
/// class-level `operator delete` of the object's dynamic type.
class VELMORA_EXPORT Object {
public:
    virtual ~Object() = 0;

protected:
    Object() = default;
    Object(const Object&) = default;
    Object& operator=(const Object&) = default;
};

} // namespace Velmora
