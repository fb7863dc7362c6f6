#pragma once

#include <velmora/CountedPtrBase.h>
#include <velmora/ReferenceCount.h>

#include <type_traits>
#include <utility>

namespace Velmora {

/// Destroys an object with `delete`.
template <class T>
struct VELMORA_EXPORT DeleteCountedObjDeleter {
    /// A null object is ignored.
    void operator()(T* in_p) const { delete in_p; }
};

/// The shared owning pointer for classes that need not derive from `Object`.
///
/// Works as `Handle` does, with the way of destruction as a parameter. The cast is checked at run
/// time where the source's class is polymorphic, and exists only for conversions known at compile
/// time where it isn't.
template <class T, class RC = ReferenceCount, class Deleter = DeleteCountedObjDeleter<T>>
class VELMORA_EXPORT CountedObjPtr : public CountedPtrBase<T, RC, Deleter> {
    using Base = CountedPtrBase<T, RC, Deleter>;

    template <class U>
    static T* cast(U* in_p) noexcept {
        if constexpr (std::is_convertible_v<U*, T*>) {
            return in_p;
        } else {
            return dynamic_cast<T*>(in_p);
        }
    }

public:
    CountedObjPtr() noexcept = default;

    /// Takes the object over, which no other pointer may hold.
    CountedObjPtr(T* in_p) : Base(in_p) {}

    CountedObjPtr(const CountedObjPtr& in_rhs) noexcept = default;
    CountedObjPtr(CountedObjPtr&& inout_rhs) noexcept = default;

    /// The checked cast: null if the object is no `T`. The source and its count are untouched then.
    template <class U, class OtherDeleter>
    CountedObjPtr(const CountedObjPtr<U, RC, OtherDeleter>& in_source) noexcept
        : Base(cast(in_source.get()), in_source) {}

    /// The same, and takes the source's share; a failed cast leaves the source as it is.
    template <class U, class OtherDeleter>
    CountedObjPtr(CountedObjPtr<U, RC, OtherDeleter>&& inout_source) noexcept
        : Base(cast(inout_source.get()), std::move(inout_source)) {}

    ~CountedObjPtr() = default;

    /// Does nothing if both point at the same object, even with two different counters.
    CountedObjPtr& operator=(const CountedObjPtr& in_rhs) {
        this->assign(in_rhs);
        return *this;
    }

    /// The same, and takes the other's share.
    CountedObjPtr& operator=(CountedObjPtr&& inout_rhs) {
        this->assign(std::move(inout_rhs));
        return *this;
    }

    /// The reset: drops the object and takes `in_p` over, which may be null. The last pointer to an
    /// object keeps its counter, also for null.
    CountedObjPtr& operator=(T* in_p) {
        this->reset(in_p);
        return *this;
    }

    /// Equal if they point at the same object.
    friend bool operator==(const CountedObjPtr& in_a, const CountedObjPtr& in_b) noexcept {
        return in_a.get() == in_b.get();
    }
    friend bool operator!=(const CountedObjPtr& in_a, const CountedObjPtr& in_b) noexcept {
        return in_a.get() != in_b.get();
    }
    friend bool operator==(const CountedObjPtr& in_a, const T* in_b) noexcept {
        return in_a.get() == in_b;
    }
    friend bool operator!=(const CountedObjPtr& in_a, const T* in_b) noexcept {
        return in_a.get() != in_b;
    }
};

} // namespace Velmora
