#pragma once

#include <velmora/CountedPtrBase.h>
#include <velmora/ObjectCast.h>
#include <velmora/ReferenceCount.h>

#include <utility>

namespace Velmora {

/// Destroys an object through its `Object` part.
template <class T>
struct VELMORA_EXPORT DeleteObjectDeleter {
    /// A null object is ignored.
    void operator()(T* in_p) const { delete objectPart(in_p); }
};

/// The shared owning pointer of the system, for classes derived from `Object`.
///
/// All handles of one object share one counter, whatever interface they point at. The last handle
/// destroys the object. The count is a plain integer: handles of one object belong to one thread
/// at a time.
template <class T, class RC = ReferenceCount>
class VELMORA_EXPORT Handle : public CountedPtrBase<T, RC, DeleteObjectDeleter<T>> {
    using Base = CountedPtrBase<T, RC, DeleteObjectDeleter<T>>;

public:
    Handle() noexcept = default;

    /// Takes the object over, which no other handle may hold.
    Handle(T* in_p) : Base(in_p) {}

    Handle(const Handle& in_rhs) noexcept = default;
    Handle(Handle&& inout_rhs) noexcept = default;

    /// The checked cast, the system's only type test: null if the object is no `T`. The source and
    /// its count are untouched then.
    template <class U>
    Handle(const Handle<U, RC>& in_source) noexcept
        : Base(objectCast<T>(in_source.get()), in_source) {}

    /// The same, and takes the source's share; a failed cast leaves the source as it is.
    template <class U>
    Handle(Handle<U, RC>&& inout_source) noexcept
        : Base(objectCast<T>(inout_source.get()), std::move(inout_source)) {}

    /// The same share for a pointer at the source's object that is known already.
    template <class U>
    Handle(T* in_pSame, const Handle<U, RC>& in_source) noexcept : Base(in_pSame, in_source) {}

    ~Handle() = default;

    /// Does nothing if both point at the same object, even with two different counters.
    Handle& operator=(const Handle& in_rhs) {
        this->assign(in_rhs);
        return *this;
    }

    /// The same, and takes the other's share.
    Handle& operator=(Handle&& inout_rhs) {
        this->assign(std::move(inout_rhs));
        return *this;
    }

    /// The reset: drops the object and takes `in_p` over, which may be null. The last handle of an
    /// object keeps its counter, also for null.
    Handle& operator=(T* in_p) {
        this->reset(in_p);
        return *this;
    }

    /// Equal if they point at the same object.
    friend bool operator==(const Handle& in_a, const Handle& in_b) noexcept {
        return in_a.get() == in_b.get();
    }
    friend bool operator!=(const Handle& in_a, const Handle& in_b) noexcept {
        return in_a.get() != in_b.get();
    }
    friend bool operator==(const Handle& in_a, const T* in_b) noexcept {
        return in_a.get() == in_b;
    }
    friend bool operator!=(const Handle& in_a, const T* in_b) noexcept {
        return in_a.get() != in_b;
    }
};

} // namespace Velmora
