#pragma once

#include <velmora/DefaultStaticMemAllocator.h>
#include <velmora/Export.h>
#include <velmora/MemAccountName.h>

#include <cstdint>
#include <new>

namespace Velmora {

/// The unsynchronised counter that the handles of one object share, apart from the object.
///
/// It is never 0: the last handle tests for 1 and destroys. Counters stand under the account
/// "ReferenceCount".
class VELMORA_EXPORT ReferenceCount {
public:
    /// A new counter set to 1, or null when memory is exhausted.
    static ReferenceCount* create() noexcept {
        void* pBlock = DefaultStaticMemAllocator::allocate(sizeof(ReferenceCount), account());
        return pBlock == nullptr ? nullptr : ::new (pBlock) ReferenceCount;
    }

    /// Releases a counter that `create` has made.
    static void destroy(ReferenceCount* in_pCount) noexcept {
        DefaultStaticMemAllocator::deallocate(in_pCount, sizeof(ReferenceCount), account());
    }

    /// One handle more, and one less: not for the last.
    void increment() noexcept { ++m_uiCount; }
    void decrement() noexcept { --m_uiCount; }

    /// Whether one handle is left.
    bool isLast() const noexcept { return m_uiCount == 1; }

    /// The number of handles.
    int get() const noexcept { return static_cast<int>(m_uiCount); }

private:
    ReferenceCount() = default;

    [[gnu::visibility("hidden")]] static MemAccountName& account() noexcept {
        static MemAccountName s_Account("ReferenceCount");
        return s_Account;
    }

    std::uint32_t m_uiCount = 1;
};

static_assert(sizeof(ReferenceCount) == 4, "the counter is one 32-bit word");

} // namespace Velmora
