#pragma once

#include <velmora/ObjectCast.h>
#include <velmora/TSReferenceCount.h>

#include <utility>

namespace Velmora {

/// The shared owning pointer with a thread-safe count, for objects that are shared with the host.
///
/// Threads may each hold, copy and drop a handle of their own to one object. One handle variable
/// may not be assigned by one thread while another reads it, and the object isn't protected by it.
template <class T>
class VELMORA_EXPORT TSHandle {
public:
    TSHandle() noexcept = default;

    /// Takes the object over, which no other handle may hold.
    TSHandle(T* in_p)
        : m_ptr(in_p), m_count(in_p == nullptr ? nullptr : TSReferenceCount::create()) {}

    /// Shares the object and the counter.
    TSHandle(const TSHandle& in_rhs) noexcept : m_ptr(in_rhs.m_ptr), m_count(in_rhs.m_count) {
        TSReferenceCount::increment(m_count);
    }

    /// Takes the other's share; the other has neither afterwards.
    TSHandle(TSHandle&& inout_rhs) noexcept
        : m_ptr(std::exchange(inout_rhs.m_ptr, nullptr)),
          m_count(std::exchange(inout_rhs.m_count, nullptr)) {}

    /// The checked cast: null if the object is no `T`. The source and its count are untouched then.
    template <class U>
    TSHandle(const TSHandle<U>& in_source) noexcept
        : m_ptr(objectCast<T>(in_source.m_ptr)),
          m_count(m_ptr == nullptr ? nullptr : in_source.m_count) {
        TSReferenceCount::increment(m_count);
    }

    /// The same, and takes the source's share; a failed cast leaves the source as it is.
    template <class U>
    TSHandle(TSHandle<U>&& inout_source) noexcept : m_ptr(objectCast<T>(inout_source.m_ptr)) {
        if (m_ptr != nullptr) {
            m_count = std::exchange(inout_source.m_count, nullptr);
            inout_source.m_ptr = nullptr;
        }
    }

    ~TSHandle() { release(); }

    /// Does nothing if both point at the same object, even with two different counters.
    TSHandle& operator=(const TSHandle& in_rhs) { // NOLINT(bugprone-unhandled-self-assignment)
        if (m_ptr != in_rhs.m_ptr) {
            TSHandle held(in_rhs);
            swapWords(held);
        }
        return *this;
    }

    /// The same, and takes the other's share.
    TSHandle& operator=(TSHandle&& inout_rhs) {
        if (m_ptr != inout_rhs.m_ptr) {
            TSHandle held(std::move(inout_rhs));
            swapWords(held);
        }
        return *this;
    }

    /// The reset: drops the object and takes `in_p` over, which may be null. The last handle of an
    /// object keeps its counter, also for null.
    TSHandle& operator=(T* in_p) {
        if (in_p != nullptr && in_p == m_ptr) {
            return *this;
        }
        T* pOld = std::exchange(m_ptr, in_p);
        if (m_count == nullptr) {
            m_count = in_p == nullptr ? nullptr : TSReferenceCount::create();
        } else if (!TSReferenceCount::dropObject(m_count, objectPart(pOld))) {
            m_count = TSReferenceCount::create();
        }
        return *this;
    }

    /// Whether there is no object.
    bool isNull() const noexcept { return m_ptr == nullptr; }

    /// Unchecked: the handle isn't null.
    T& operator*() const noexcept { return *m_ptr; }
    T* operator->() const noexcept { return m_ptr; }

    /// The object, which stays owned by the handle.
    T* get() const noexcept { return m_ptr; }

    /// How many handles share the counter; 0 without a counter. For tests and diagnosis.
    int getReferenceCount() const noexcept { return TSReferenceCount::get(m_count); }

    /// Equal if they point at the same object.
    friend bool operator==(const TSHandle& in_a, const TSHandle& in_b) noexcept {
        return in_a.m_ptr == in_b.m_ptr;
    }
    friend bool operator!=(const TSHandle& in_a, const TSHandle& in_b) noexcept {
        return in_a.m_ptr != in_b.m_ptr;
    }
    friend bool operator==(const TSHandle& in_a, const T* in_b) noexcept {
        return in_a.m_ptr == in_b;
    }
    friend bool operator!=(const TSHandle& in_a, const T* in_b) noexcept {
        return in_a.m_ptr != in_b;
    }

private:
    template <class>
    friend class TSHandle;

    void swapWords(TSHandle& inout_other) noexcept {
        std::swap(m_ptr, inout_other.m_ptr);
        std::swap(m_count, inout_other.m_count);
    }

    void release() { TSReferenceCount::release(m_count, objectPart(m_ptr)); }

    T* m_ptr = nullptr;
    TSReferenceCount* m_count = nullptr;
};

} // namespace Velmora
