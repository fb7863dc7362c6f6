#include "Allocations.h"

#include <atomic>
#include <cstddef>
#include <limits>

#include <velmora/MemAccountName.h>

namespace {

constexpr std::size_t Never = std::numeric_limits<std::size_t>::max();

std::atomic<std::size_t> s_uiLive{0};
thread_local std::size_t t_uiCount = 0;
thread_local std::size_t t_uiFailing = Never;
thread_local bool t_bFailed = false;
thread_local const char* t_szAccount = nullptr;
thread_local const char* t_szFailedAccount = nullptr;

} // namespace

extern "C" {

// The names that the linker's option gives them.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
void* __real_malloc(std::size_t in_uiSize);
void __real_free(void* in_pBlock);

void* __wrap_malloc(std::size_t in_uiSize) {
    if (t_uiCount++ == t_uiFailing) {
        t_bFailed = true;
        t_szFailedAccount = t_szAccount;
        return nullptr;
    }
    void* const pBlock = __real_malloc(in_uiSize);
    if (pBlock != nullptr) {
        s_uiLive.fetch_add(1, std::memory_order_relaxed);
    }
    return pBlock;
}

void __wrap_free(void* in_pBlock) {
    if (in_pBlock != nullptr) {
        s_uiLive.fetch_sub(1, std::memory_order_relaxed);
    }
    __real_free(in_pBlock);
}

// The pool of blocks takes memory for many at once, which would hide all but the first.
void* __wrap__ZN7Velmora9BlockPool8allocateEm(std::size_t in_uiSize) {
    return __wrap_malloc(in_uiSize);
}

void __wrap__ZN7Velmora9BlockPool10deallocateEPvm(void* in_pBlock, std::size_t /*in_uiSize*/) {
    __wrap_free(in_pBlock);
}

void* __wrap__ZN7Velmora9BlockPool15allocateUnsizedEm(std::size_t in_uiSize) {
    return __wrap_malloc(in_uiSize);
}

void __wrap__ZN7Velmora9BlockPool17deallocateUnsizedEPv(void* in_pBlock) {
    __wrap_free(in_pBlock);
}

// DefaultStaticMemAllocator::allocate, by the text of a name and by a name that is kept
void* __real__ZN7Velmora25DefaultStaticMemAllocator8allocateEmPKc(std::size_t in_uiSize,
                                                                  const char* in_szAccount);

void* __wrap__ZN7Velmora25DefaultStaticMemAllocator8allocateEmPKc(std::size_t in_uiSize,
                                                                  const char* in_szAccount) {
    t_szAccount = in_szAccount;
    void* const pBlock =
        __real__ZN7Velmora25DefaultStaticMemAllocator8allocateEmPKc(in_uiSize, in_szAccount);
    t_szAccount = nullptr;
    return pBlock;
}

void* __real__ZN7Velmora25DefaultStaticMemAllocator8allocateEmRNS_14MemAccountNameE(
    std::size_t in_uiSize, Velmora::MemAccountName& inout_Account);

void* __wrap__ZN7Velmora25DefaultStaticMemAllocator8allocateEmRNS_14MemAccountNameE(
    std::size_t in_uiSize, Velmora::MemAccountName& inout_Account) {
    t_szAccount = inout_Account.getName();
    void* const pBlock =
        __real__ZN7Velmora25DefaultStaticMemAllocator8allocateEmRNS_14MemAccountNameE(
            in_uiSize, inout_Account);
    t_szAccount = nullptr;
    return pBlock;
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

} // extern "C"

namespace Velmora::Testing {

std::size_t Allocations::getLiveBlocks() {
    return s_uiLive.load(std::memory_order_relaxed);
}

std::size_t Allocations::getCount() {
    return t_uiCount;
}

void Allocations::failBehind(std::size_t in_uiOthers) {
    t_bFailed = false;
    t_uiFailing = t_uiCount + in_uiOthers;
}

void Allocations::stopFailing() {
    t_uiFailing = Never;
}

bool Allocations::hasFailed() {
    return t_bFailed;
}

const char* Allocations::getFailedAccount() {
    return t_szFailedAccount;
}

} // namespace Velmora::Testing
