#include "AccountTable.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace Velmora {

namespace {

// Where an account was last found for the address of a name. The address only says where to look:
// a buffer may be reused for another name, so the text decides.
constexpr std::size_t HintCount = 512;
constexpr std::size_t ProbeCount = 4;
std::atomic<AccountCounters*> s_hints[HintCount];

std::atomic<AccountCounters*> s_pAccounts{nullptr};

std::size_t hintOf(const char* in_szName) noexcept {
    const auto uiAddress = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(in_szName));
    return static_cast<std::size_t>((uiAddress * 0x9E3779B97F4A7C15u) >> 55);
}
static_assert(HintCount == std::size_t{1} << (64 - 55), "hintOf yields an index of the table");

std::atomic<AccountCounters*>& hint(std::size_t in_uiHome, std::size_t in_uiProbe) noexcept {
    return s_hints[(in_uiHome + in_uiProbe) % HintCount];
}

AccountCounters* findUntil(const char* in_szName, AccountCounters* in_pFirst,
                           const AccountCounters* in_pEnd) noexcept {
    for (AccountCounters* p = in_pFirst; p != in_pEnd; p = p->m_pNext) {
        if (std::strcmp(p->m_szName, in_szName) == 0) {
            return p;
        }
    }
    return nullptr;
}

AccountCounters* newAccount(const char* in_szName) noexcept {
    // The name is copied: the library that it belongs to may be unloaded while blocks of it live.
    const std::size_t uiNameSize = std::strlen(in_szName) + 1;
    const std::size_t uiSize = sizeof(AccountCounters) + uiNameSize;
    const std::size_t uiAlignment = alignof(AccountCounters);
    void* pBlock =
        std::aligned_alloc(uiAlignment, (uiSize + uiAlignment - 1) / uiAlignment * uiAlignment);
    if (pBlock == nullptr) {
        return nullptr;
    }
    auto* pAccount = ::new (pBlock) AccountCounters;
    char* szName = static_cast<char*>(pBlock) + sizeof(AccountCounters);
    std::memcpy(szName, in_szName, uiNameSize);
    pAccount->m_szName = szName;
    return pAccount;
}

AccountCounters* findOrAdd(const char* in_szName) noexcept {
    AccountCounters* pFirst = s_pAccounts.load(std::memory_order_acquire);
    if (AccountCounters* pFound = findUntil(in_szName, pFirst, nullptr)) {
        return pFound;
    }
    AccountCounters* pNew = newAccount(in_szName);
    if (pNew == nullptr) {
        return nullptr;
    }
    for (;;) {
        pNew->m_pNext = pFirst;
        AccountCounters* const pSearched = pFirst;
        if (s_pAccounts.compare_exchange_weak(pFirst, pNew, std::memory_order_release,
                                              std::memory_order_acquire)) {
            return pNew;
        }
        if (AccountCounters* pFound = findUntil(in_szName, pFirst, pSearched)) {
            std::free(pNew);
            return pFound;
        }
    }
}

} // namespace

void AccountCounters::countAllocation(std::size_t in_uiBytes) noexcept {
    m_uiAllocatedBlocks.fetch_add(1, std::memory_order_relaxed);
    if (in_uiBytes != 0) {
        m_uiAllocatedBytes.fetch_add(in_uiBytes, std::memory_order_relaxed);
    }
}

void AccountCounters::countRelease(std::size_t in_uiBytes) noexcept {
    m_uiFreedBlocks.fetch_add(1, std::memory_order_relaxed);
    if (in_uiBytes != 0) {
        m_uiFreedBytes.fetch_add(in_uiBytes, std::memory_order_relaxed);
    }
}

AccountCounters* AccountTable::open(const char* in_szName) noexcept {
    const char* szName = in_szName == nullptr ? "" : in_szName;
    const std::size_t uiHome = hintOf(szName);
    std::size_t uiFree = 0;
    for (std::size_t ui = 0; ui < ProbeCount; ++ui) {
        AccountCounters* p = hint(uiHome, ui).load(std::memory_order_acquire);
        if (p == nullptr) {
            uiFree = ui;
            break;
        }
        if (std::strcmp(p->m_szName, szName) == 0) {
            return p;
        }
    }
    AccountCounters* pAccount = findOrAdd(szName);
    if (pAccount != nullptr) {
        hint(uiHome, uiFree).store(pAccount, std::memory_order_release);
    }
    return pAccount;
}

AccountCounters* AccountTable::remember(MemAccountName& inout_Name) noexcept {
    AccountCounters* const pCounters = open(inout_Name.m_szName);
    inout_Name.m_pCounters.store(pCounters, std::memory_order_release);
    return pCounters;
}

AccountCounters* AccountTable::find(const char* in_szName) noexcept {
    return findUntil(in_szName == nullptr ? "" : in_szName, first(), nullptr);
}

AccountCounters* AccountTable::first() noexcept {
    return s_pAccounts.load(std::memory_order_acquire);
}

} // namespace Velmora
