#include <velmora/DefaultStaticMemAllocator.h>

#include "AccountTable.h"
#include "BlockPool.h"

namespace Velmora {

void* DefaultStaticMemAllocator::allocate(std::size_t in_uiSize,
                                          const char* in_szAccount) noexcept {
    AccountCounters* pAccount = AccountTable::open(in_szAccount);
    void* pBlock = pAccount == nullptr ? nullptr : BlockPool::allocate(in_uiSize);
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
    BlockPool::deallocate(in_pBlock, in_uiSize);
    AccountCounters* pAccount = AccountTable::open(in_szAccount);
    if (pAccount != nullptr) {
        pAccount->countRelease(in_uiSize);
    }
}

} // namespace Velmora
