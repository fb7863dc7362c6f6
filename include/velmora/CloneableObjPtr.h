#pragma once

#include <velmora/Cloneable.h>
#include <velmora/LogSite.h>
#include <velmora/ObjectCast.h>

#include <utility>

namespace Velmora {

/// The owning pointer with value semantics, for `Cloneable` classes: a copy of the pointer is a
/// clone of the object. It never shares.
template <class T>
class VELMORA_EXPORT CloneableObjPtr {
public:
    CloneableObjPtr() noexcept = default;

    /// Takes the object over.
    CloneableObjPtr(T* in_p) noexcept : m_ptr(in_p) {}

    /// Holds a clone of the other's object, or null if the other is null.
    CloneableObjPtr(const CloneableObjPtr& in_rhs) : m_ptr(cloneOf(in_rhs)) {}

    /// Takes the object over; the other is null afterwards.
    CloneableObjPtr(CloneableObjPtr&& inout_rhs) noexcept
        : m_ptr(std::exchange(inout_rhs.m_ptr, nullptr)) {}

    ~CloneableObjPtr() { delete objectPart(m_ptr); }

    /// Deletes the object and holds a clone of the other's, or null if the other is null.
    CloneableObjPtr& operator=(const CloneableObjPtr& in_rhs) {
        if (m_ptr != in_rhs.m_ptr) {
            replaceBy(cloneOf(in_rhs));
        }
        return *this;
    }

    /// Deletes the object and takes the other's over; the other is null afterwards.
    CloneableObjPtr& operator=(CloneableObjPtr&& inout_rhs) {
        if (m_ptr != inout_rhs.m_ptr) {
            replaceBy(std::exchange(inout_rhs.m_ptr, nullptr));
        }
        return *this;
    }

    /// Deletes the object and takes `in_p` over, which may be null.
    CloneableObjPtr& operator=(T* in_p) {
        if (m_ptr != in_p) {
            replaceBy(in_p);
        }
        return *this;
    }

    /// Whether there is no object.
    bool isNull() const noexcept { return m_ptr == nullptr; }

    /// Unchecked: the pointer isn't null.
    T& operator*() const noexcept { return *m_ptr; }
    T* operator->() const noexcept { return m_ptr; }

    /// The object, which stays owned by the pointer.
    T* get() const noexcept { return m_ptr; }

private:
    static T* cloneOf(const CloneableObjPtr& rhs) {
        if (rhs.isNull()) {
            return nullptr;
        }
        Cloneable* pClone = rhs->clone();
        T* pResult = objectCast<T>(pClone);
        if (pResult == nullptr) {
            delete pClone;
            VELMORA_ASSERT_FAIL("rhs.isNull() || m_ptr");
        }
        return pResult;
    }

    // The old object goes last: it may own the pointer that was assigned from.
    void replaceBy(T* in_p) { delete objectPart(std::exchange(m_ptr, in_p)); }

    T* m_ptr = nullptr;
};

} // namespace Velmora
