#pragma once

#include <velmora/Export.h>
#include <velmora/Handle.h>

#include <type_traits>

namespace Velmora {

/// The pointer that doesn't own, for references that must not keep their target alive.
///
/// Nothing tells it that the target has died: whoever owns the target clears the pointer.
template <class T>
class VELMORA_EXPORT LimitedObjPtr {
    template <class U>
    using IfConvertible = std::enable_if_t<std::is_convertible_v<U*, T*>>;

public:
    LimitedObjPtr() noexcept = default;

    /// Points where the other one does.
    LimitedObjPtr(T* in_p) noexcept : m_ptr(in_p) {}

    /// Points where the other one does.
    template <class U, class = IfConvertible<U>>
    LimitedObjPtr(const LimitedObjPtr<U>& in_rhs) noexcept : m_ptr(in_rhs.get()) {}

    /// Points at the object of the handle, without a share in it.
    template <class U, class RC, class = IfConvertible<U>>
    LimitedObjPtr(const Handle<U, RC>& in_pOwner) noexcept : m_ptr(in_pOwner.get()) {}

    LimitedObjPtr(const LimitedObjPtr& in_rhs) noexcept = default;
    ~LimitedObjPtr() = default;

    /// Stores only when the value differs, so that the steady frame doesn't write.
    LimitedObjPtr& operator=(const LimitedObjPtr& in_rhs) noexcept { return *this = in_rhs.m_ptr; }

    /// The same from a plain pointer, which may be null.
    LimitedObjPtr& operator=(T* in_p) noexcept {
        if (m_ptr != in_p) {
            m_ptr = in_p;
        }
        return *this;
    }

    /// Whether it points at nothing.
    bool isNull() const noexcept { return m_ptr == nullptr; }

    /// Unchecked: the pointer isn't null and the target lives.
    T& operator*() const noexcept { return *m_ptr; }
    T* operator->() const noexcept { return m_ptr; }
    T* get() const noexcept { return m_ptr; }

    /// Equal if they point at the same object.
    friend bool operator==(const LimitedObjPtr& in_a, const LimitedObjPtr& in_b) noexcept {
        return in_a.m_ptr == in_b.m_ptr;
    }
    friend bool operator!=(const LimitedObjPtr& in_a, const LimitedObjPtr& in_b) noexcept {
        return in_a.m_ptr != in_b.m_ptr;
    }
    friend bool operator==(const LimitedObjPtr& in_a, const T* in_b) noexcept {
        return in_a.m_ptr == in_b;
    }
    friend bool operator!=(const LimitedObjPtr& in_a, const T* in_b) noexcept {
        return in_a.m_ptr != in_b;
    }

private:
    T* m_ptr = nullptr;
};

} // namespace Velmora
