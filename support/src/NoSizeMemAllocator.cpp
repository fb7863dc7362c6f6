#include <velmora/NoSizeMemAllocator.h>

#include "AccountTable.h"
#include "BlockPool.h"

namespace Velmora {

namespace {

template <class Name>
void* allocateIn(std::size_t in_uiSize, Name& inout_Account) noexcept {
    AccountCounters* pAccount = AccountTable::open(inout_Account);
    void* pBlock = pAccount == nullptr ? nullptr : BlockPool::allocateUnsized(in_uiSize);
    if (pBlock != nullptr) {
        pAccount->countAllocation(0);
    }
    return pBlock;
}

template <class Name>
void deallocateIn(void* in_pBlock, Name& inout_Account) noexcept {
    if (in_pBlock == nullptr) {
        return;
    }
    BlockPool::deallocateUnsized(in_pBlock);
    AccountCounters* pAccount = AccountTable::open(inout_Account);
    if (pAccount != nullptr) {
        pAccount->countRelease(0);
    }
}

} // namespace

void* NoSizeMemAllocator::allocate(std::size_t in_uiSize, const char* in_szAccount) noexcept {
    return allocateIn(in_uiSize, in_szAccount);
}

void NoSizeMemAllocator::deallocate(void* in_pBlock, const char* in_szAccount) noexcept {
    deallocateIn(in_pBlock, in_szAccount);
}

void* NoSizeMemAllocator::allocate(std::size_t in_uiSize, MemAccountName& inout_Account) noexcept {
    return allocateIn(in_uiSize, inout_Account);
}

void NoSizeMemAllocator::deallocate(void* in_pBlock, MemAccountName& inout_Account) noexcept {
    deallocateIn(in_pBlock, inout_Account);
}

} // namespace Velmora
