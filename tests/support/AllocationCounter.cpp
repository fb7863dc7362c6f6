#include "support/AllocationCounter.h"

#include <velmora/MemAccounts.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> globalAllocations{0};

std::size_t accountedAllocations() {
    std::size_t blocks = 0;
    for (const auto& account : Velmora::MemAccounts::snapshot()) {
        blocks += account.totalBlocks;
    }
    return blocks;
}

void* allocateCounted(std::size_t in_uiSize) noexcept {
    globalAllocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(in_uiSize != 0 ? in_uiSize : 1);
}

void* allocateCountedOrThrow(std::size_t in_uiSize) {
    void* const block = allocateCounted(in_uiSize);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

} // namespace

// Every form by name: a sanitizer brings its own of those that aren't replaced.
void* operator new(std::size_t in_uiSize) {
    return allocateCountedOrThrow(in_uiSize);
}
void* operator new[](std::size_t in_uiSize) {
    return allocateCountedOrThrow(in_uiSize);
}
void* operator new(std::size_t in_uiSize, const std::nothrow_t&) noexcept {
    return allocateCounted(in_uiSize);
}
void* operator new[](std::size_t in_uiSize, const std::nothrow_t&) noexcept {
    return allocateCounted(in_uiSize);
}
void operator delete(void* in_pBlock) noexcept {
    std::free(in_pBlock);
}
void operator delete[](void* in_pBlock) noexcept {
    std::free(in_pBlock);
}
void operator delete(void* in_pBlock, std::size_t) noexcept {
    std::free(in_pBlock);
}
void operator delete[](void* in_pBlock, std::size_t) noexcept {
    std::free(in_pBlock);
}
void operator delete(void* in_pBlock, const std::nothrow_t&) noexcept {
    std::free(in_pBlock);
}
void operator delete[](void* in_pBlock, const std::nothrow_t&) noexcept {
    std::free(in_pBlock);
}

namespace Velmora::Testing {

// The books are looked at outside the counted stretch: a snapshot allocates.
AllocationCounter::AllocationCounter()
    : m_uiAccounted(accountedAllocations()),
      m_uiGlobal(globalAllocations.load(std::memory_order_relaxed)) {}

std::size_t AllocationCounter::allocations() const {
    const std::size_t global = globalAllocations.load(std::memory_order_relaxed) - m_uiGlobal;
    return global + accountedAllocations() - m_uiAccounted;
}

} // namespace Velmora::Testing
