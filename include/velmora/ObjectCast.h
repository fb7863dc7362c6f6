#pragma once

#include <velmora/Object.h>

#include <type_traits>

namespace Velmora {

/// The `Object` part of an object; null for null.
template <class T>
auto objectPart(T* in_p) noexcept {
    using Part = std::conditional_t<std::is_const_v<T>, const Object, Object>;
    return static_cast<Part*>(in_p);
}

/// A quicker way to the result of a cast that the library makes all the time. Whoever declares `U`,
/// or what such classes derive from, specialises it there, with a `cast` that gives what the
/// checked cast would. The last parameter is for a condition on `U`.
template <class T, class U, class = void>
struct ObjectCastShortcut {
    /// Is there such a way?
    static constexpr bool EXISTS = false;
};

/// The cast between interfaces of one object: the object as a `T`, or null if it isn't one.
///
/// It is checked at run time, from the object's `Object` part. Where the conversion is known to
/// succeed at compile time it is made there, at the price of a pointer copy.
template <class T, class U>
T* objectCast(U* in_p) noexcept {
    if constexpr (std::is_convertible_v<U*, T*>) {
        return in_p;
    } else if constexpr (ObjectCastShortcut<T, U>::EXISTS) {
        return in_p == nullptr ? nullptr : ObjectCastShortcut<T, U>::cast(*in_p);
    } else {
        return dynamic_cast<T*>(objectPart(in_p));
    }
}

} // namespace Velmora
