#pragma once

#include <atomic>
#include <cstddef>

#include <velmora/MemAccountName.h>

namespace Velmora {

/// The counters of one account. Accounts are never removed, so a pointer to one stays valid.
///
/// Only what grows is counted: two counters a side instead of a running difference keep an
/// allocation at two atomic additions.
struct alignas(64) AccountCounters {
    const char* m_szName = nullptr;
    AccountCounters* m_pNext = nullptr;
    std::atomic<std::size_t> m_uiAllocatedBlocks{0};
    std::atomic<std::size_t> m_uiAllocatedBytes{0};
    std::atomic<std::size_t> m_uiFreedBlocks{0};
    std::atomic<std::size_t> m_uiFreedBytes{0};

    void countAllocation(std::size_t in_uiBytes) noexcept;
    void countRelease(std::size_t in_uiBytes) noexcept;
};

/// Finds the counters of an account by its name, without a lock.
///
/// The table is constant-initialised and never destroyed: static initialisers and destructors
/// allocate through it.
class AccountTable {
public:
    /// The account of that name, opened on first use. Null when memory for it is exhausted.
    static AccountCounters* open(const char* in_szName) noexcept;
    static AccountCounters* open(MemAccountName& inout_Name) noexcept {
        AccountCounters* const pCounters = inout_Name.m_pCounters.load(std::memory_order_acquire);
        return pCounters == nullptr ? remember(inout_Name) : pCounters;
    }

    /// The account of that name, or null if it was never opened.
    static AccountCounters* find(const char* in_szName) noexcept;

    /// The account opened last; the others follow by `m_pNext`.
    static AccountCounters* first() noexcept;

private:
    static AccountCounters* remember(MemAccountName& inout_Name) noexcept;
};

} // namespace Velmora
