#pragma once

#include <velmora/Export.h>

#include <utility>

namespace Velmora {

/// What the counting pointers with an unsynchronised counter have in common.
///
/// Two words: the object and its counter. A default pointer has both null. An object without a
/// counter belongs to a pointer whose counter couldn't be allocated: it is never destroyed. A null
/// pointer may carry a counter, behind a reset to null. Not thread-safe in any respect.
///
/// `RC` has `create()`, `destroy(RC*)`, `increment()`, `decrement()`, `isLast()` and `get()`;
/// `Deleter` is called with the object that goes.
template <class T, class RC, class Deleter>
class VELMORA_EXPORT CountedPtrBase {
public:
    /// Whether there is no object; there may be a counter all the same.
    bool isNull() const noexcept { return m_ptr == nullptr; }

    /// Unchecked: the pointer isn't null.
    T& operator*() const noexcept { return *m_ptr; }
    T* operator->() const noexcept { return m_ptr; }

    /// The object, which stays owned by the pointer.
    T* get() const noexcept { return m_ptr; }

    /// How many pointers share the counter; 0 without a counter. For tests and diagnosis.
    int getReferenceCount() const noexcept { return m_count == nullptr ? 0 : m_count->get(); }

    /// Has the processor fetch the counter: for who walks over a large graph and is about to copy
    /// the pointer.
    void fetchCount() const noexcept { __builtin_prefetch(m_count, 1); }

protected:
    CountedPtrBase() noexcept = default;

    /// Takes the object over and makes its counter.
    explicit CountedPtrBase(T* in_p)
        : m_ptr(in_p), m_count(in_p == nullptr ? nullptr : RC::create()) {}

    /// Shares the object and the counter.
    CountedPtrBase(const CountedPtrBase& in_rhs) noexcept
        : m_ptr(in_rhs.m_ptr), m_count(in_rhs.m_count) {
        if (m_count != nullptr) {
            m_count->increment();
        }
    }

    /// Takes the other's share; the other has neither afterwards.
    CountedPtrBase(CountedPtrBase&& inout_rhs) noexcept
        : m_ptr(std::exchange(inout_rhs.m_ptr, nullptr)),
          m_count(std::exchange(inout_rhs.m_count, nullptr)) {}

    /// The result of a cast of `in_source`: shares its counter, or is null if `in_pCast` is.
    template <class U, class OtherDeleter>
    CountedPtrBase(T* in_pCast, const CountedPtrBase<U, RC, OtherDeleter>& in_source) noexcept
        : m_ptr(in_pCast), m_count(in_pCast == nullptr ? nullptr : in_source.m_count) {
        if (m_count != nullptr) {
            m_count->increment();
        }
    }

    /// The same, and takes the source's share; a failed cast leaves the source as it is.
    template <class U, class OtherDeleter>
    CountedPtrBase(T* in_pCast, CountedPtrBase<U, RC, OtherDeleter>&& inout_source) noexcept
        : m_ptr(in_pCast) {
        if (in_pCast != nullptr) {
            m_count = std::exchange(inout_source.m_count, nullptr);
            inout_source.m_ptr = nullptr;
        }
    }

    ~CountedPtrBase() { release(); }

    CountedPtrBase& operator=(const CountedPtrBase&) = delete;

    /// Does nothing if both point at the same object, even with two different counters.
    void assign(const CountedPtrBase& in_rhs) {
        if (m_ptr != in_rhs.m_ptr) {
            CountedPtrBase held(in_rhs);
            swapWords(held);
        }
    }

    /// The same, and takes the other's share.
    void assign(CountedPtrBase&& inout_rhs) {
        if (m_ptr != inout_rhs.m_ptr) {
            CountedPtrBase held(std::move(inout_rhs));
            swapWords(held);
        }
    }

    /// The last pointer keeps its counter, also for null; one of several gets a new counter, also
    /// for null. The object that is already held stays.
    void reset(T* in_p) {
        if (in_p != nullptr && in_p == m_ptr) {
            return;
        }
        T* pOld = std::exchange(m_ptr, in_p);
        if (m_count != nullptr && m_count->isLast()) {
            if (pOld != nullptr) {
                Deleter()(pOld);
            }
            return;
        }
        if (m_count != nullptr) {
            m_count->decrement();
            m_count = RC::create();
        } else if (in_p != nullptr) {
            m_count = RC::create();
        }
    }

private:
    template <class, class, class>
    friend class CountedPtrBase;

    // The old object goes last, from a pointer of its own: its destructor may reach the assigned
    // pointer, or may have owned the pointer that was assigned from.
    void swapWords(CountedPtrBase& inout_other) noexcept {
        std::swap(m_ptr, inout_other.m_ptr);
        std::swap(m_count, inout_other.m_count);
    }

    void release() {
        if (m_count == nullptr) {
            return;
        }
        if (m_count->isLast()) {
            if (m_ptr != nullptr) {
                Deleter()(m_ptr);
            }
            RC::destroy(m_count);
        } else {
            m_count->decrement();
        }
    }

    T* m_ptr = nullptr;
    RC* m_count = nullptr;
};

} // namespace Velmora
