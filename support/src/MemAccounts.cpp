#include <velmora/MemAccounts.h>

#include "AccountTable.h"

#include <algorithm>

namespace Velmora {

namespace {

// While another thread allocates, the freed count may be read behind a release whose allocation
// was missed by the count read before it.
std::size_t live(std::size_t in_uiAllocated, std::size_t in_uiFreed) {
    return in_uiAllocated > in_uiFreed ? in_uiAllocated - in_uiFreed : 0;
}

MemAccount read(const AccountCounters& in_counters) {
    MemAccount account;
    account.name = in_counters.m_szName;
    account.totalBlocks = in_counters.m_uiAllocatedBlocks.load(std::memory_order_relaxed);
    account.liveBlocks =
        live(account.totalBlocks, in_counters.m_uiFreedBlocks.load(std::memory_order_relaxed));
    account.liveBytes = live(in_counters.m_uiAllocatedBytes.load(std::memory_order_relaxed),
                             in_counters.m_uiFreedBytes.load(std::memory_order_relaxed));
    return account;
}

} // namespace

std::vector<MemAccount> MemAccounts::snapshot() {
    std::vector<MemAccount> vAccounts;
    for (const AccountCounters* p = AccountTable::first(); p != nullptr; p = p->m_pNext) {
        vAccounts.push_back(read(*p));
    }
    std::sort(vAccounts.begin(), vAccounts.end(),
              [](const MemAccount& in_a, const MemAccount& in_b) { return in_a.name < in_b.name; });
    return vAccounts;
}

MemAccount MemAccounts::get(const char* in_szAccount) {
    const AccountCounters* pCounters = AccountTable::find(in_szAccount);
    if (pCounters != nullptr) {
        return read(*pCounters);
    }
    MemAccount account;
    account.name = in_szAccount == nullptr ? "" : in_szAccount;
    return account;
}

} // namespace Velmora
