#include <velmora/DefaultStaticMemAllocator.h>

#include "AccountTable.h"
#include "BlockPool.h"

namespace Velmora {

namespace {

template <class Name>
void* allocateIn(std::size_t in_uiSize, Name& inout_Account) noexcept {
    AccountCounters* pAccount = AccountTable::open(inout_Account);
    void* pBlock = pAccount == nullptr ? nullptr : BlockPool::allocate(in_uiSize);
    if (pBlock != nullptr) {
        pAccount->countAllocation(in_uiSize);
    }
    return pBlock;
}

template <class Name>
void deallocateIn(void* in_pBlock, std::size_t in_uiSize, Name& inout_Account) noexcept {
    if (in_pBlock == nullptr) {
        return;
    }
    BlockPool::deallocate(in_pBlock, in_uiSize);
    AccountCounters* pAccount = AccountTable::open(inout_Account);
    if (pAccount != nullptr) {
        pAccount->countRelease(in_uiSize);
    }
}

} // namespace

void* DefaultStaticMemAllocator::allocate(std::size_t in_uiSize,
                                          const char* in_szAccount) noexcept {
    return allocateIn(in_uiSize, in_szAccount);
}

void DefaultStaticMemAllocator::deallocate(void* in_pBlock, std::size_t in_uiSize,
                                           const char* in_szAccount) noexcept {
    deallocateIn(in_pBlock, in_uiSize, in_szAccount);
}

void* DefaultStaticMemAllocator::allocate(std::size_t in_uiSize,
                                          MemAccountName& inout_Account) noexcept {
    return allocateIn(in_uiSize, inout_Account);
}

void DefaultStaticMemAllocator::deallocate(void* in_pBlock, std::size_t in_uiSize,
                                           MemAccountName& inout_Account) noexcept {
    deallocateIn(in_pBlock, in_uiSize, inout_Account);
}

} // namespace Velmora
