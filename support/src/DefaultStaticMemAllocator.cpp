#include <velmora/DefaultStaticMemAllocator.h>

#include "AccountTable.h"

#include <cstdlib>

namespace Velmora {

void* DefaultStaticMemAllocator::allocate(std::size_t in_uiSize,
                                          const char* in_szAccount) noexcept {
    AccountCounters* pAccount = AccountTable::open(in_szAccount);
    void* pBlock = pAccount == nullptr ? nullptr : std::malloc(in_uiSize == 0 ? 1 : in_uiSize);
    if (pBlock != nullptr) {
        pAccount->countAllocation(in_uiSize);
    }
    return pBlock;
}

void DefaultStaticMemAllocator::deallocate(void* in_pBlock, std::size_t in_uiSize,
                                           const char* in_szAccount) noexcept {
    if (in_pBlock == nullptr) {
        return;
    }
    std::free(in_pBlock);
    AccountCounters* pAccount = AccountTable::open(in_szAccount);
    if (pAccount != nullptr) {
        pAccount->countRelease(in_uiSize);
    }
}

} // namespace Velmora
