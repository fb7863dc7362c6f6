#include <velmora/NoSizeMemAllocator.h>

#include "AccountTable.h"
#include "BlockPool.h"

namespace Velmora {

void* NoSizeMemAllocator::allocate(std::size_t in_uiSize, const char* in_szAccount) noexcept {
    AccountCounters* pAccount = AccountTable::open(in_szAccount);
    void* pBlock = pAccount == nullptr ? nullptr : BlockPool::allocateUnsized(in_uiSize);
    if (pBlock != nullptr) {
        pAccount->countAllocation(0);
    }
    return pBlock;
}

void NoSizeMemAllocator::deallocate(void* in_pBlock, const char* in_szAccount) noexcept {
    if (in_pBlock == nullptr) {
        return;
    }
    BlockPool::deallocateUnsized(in_pBlock);
    AccountCounters* pAccount = AccountTable::open(in_szAccount);
    if (pAccount != nullptr) {
        pAccount->countRelease(0);
    }
}

} // namespace Velmora
