#include "BlockPool.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <thread>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VELMORA_PLAIN_BLOCKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VELMORA_PLAIN_BLOCKS
#endif
#endif

namespace Velmora {

#ifdef VELMORA_PLAIN_BLOCKS

void* BlockPool::allocate(std::size_t in_uiSize) noexcept {
    return std::malloc(in_uiSize == 0 ? 1 : in_uiSize);
}

void BlockPool::deallocate(void* in_pBlock, std::size_t) noexcept {
    std::free(in_pBlock);
}

void* BlockPool::allocateUnsized(std::size_t in_uiSize) noexcept {
    return allocate(in_uiSize);
}

void BlockPool::deallocateUnsized(void* in_pBlock) noexcept {
    std::free(in_pBlock);
}

#else

namespace {

constexpr std::size_t Step = 16;
constexpr std::size_t MaxPooled = 1024;

/// Blocks are cut from slabs of this size and alignment. A slab begins with its head, so that no
/// pooled block is aligned like a slab: an unsized block that is, stands alone.
constexpr std::size_t SlabAlignment = 16384;

/// What the system's allocator keeps ahead of a block fits between two slabs.
constexpr std::size_t SlabSize = SlabAlignment - 16;

struct Block {
    Block* m_pNext;
};

/// The head of a slab. What was never used of it, or not since all of it was free, is given in the
/// order of the addresses.
struct alignas(Step) Slab {
    explicit Slab(std::size_t in_uiClass) : m_uiClass(in_uiClass) {}

    bool isFull() const noexcept { return m_pFree == nullptr && m_uiFresh == m_uiEnd; }
    bool isEmpty() const noexcept { return m_uiTaken == 0; }

    void* take() noexcept {
        ++m_uiTaken;
        if (m_pFree != nullptr) {
            Block* const pBlock = m_pFree;
            m_pFree = pBlock->m_pNext;
            return pBlock;
        }
        void* const pBlock = reinterpret_cast<char*>(this) + m_uiFresh;
        m_uiFresh += blockSize();
        return pBlock;
    }

    void give(void* in_pBlock) noexcept {
        m_pFree = ::new (in_pBlock) Block{m_pFree};
        if (--m_uiTaken == 0) {
            m_pFree = nullptr;
            m_uiFresh = sizeof(Slab);
        }
    }

    std::size_t blockSize() const noexcept { return (m_uiClass + 1) * Step; }

    const std::size_t m_uiClass;
    const std::size_t m_uiEnd =
        sizeof(Slab) + (SlabSize - sizeof(Slab)) / blockSize() * blockSize();
    std::size_t m_uiFresh = sizeof(Slab);
    std::size_t m_uiTaken = 0;
    Block* m_pFree = nullptr;
    /// Those of its size that aren't full.
    Slab* m_pNext = nullptr;
    Slab* m_pPrevious = nullptr;
};

/// Held for a few instructions, by threads that build or destroy graphs; nothing computes here.
class SpinLock {
public:
    explicit SpinLock(std::atomic_flag& inout_flag) noexcept : m_flag(inout_flag) {
        while (m_flag.test_and_set(std::memory_order_acquire)) {
            std::this_thread::yield();
        }
    }
    ~SpinLock() { m_flag.clear(std::memory_order_release); }
    SpinLock(const SpinLock&) = delete;
    SpinLock& operator=(const SpinLock&) = delete;

private:
    std::atomic_flag& m_flag;
};

/// The slabs of one size.
class SizeClass {
public:
    void* take(std::size_t in_uiClass) noexcept {
        const SpinLock lock(m_flag);
        if (m_pFirst == nullptr) {
            void* const pMemory = std::aligned_alloc(SlabAlignment, SlabSize);
            if (pMemory == nullptr) {
                return nullptr;
            }
            link(*::new (pMemory) Slab(in_uiClass));
        }
        Slab& slab = *m_pFirst;
        void* const pBlock = slab.take();
        if (slab.isFull()) {
            unlink(slab);
        }
        return pBlock;
    }

    void give(Slab& inout_slab, void* in_pBlock) noexcept {
        if (giveTo(inout_slab, in_pBlock)) {
            std::free(&inout_slab);
        }
    }

private:
    /// True if the slab isn't needed any more. The last one stays, so that a block that comes and
    /// goes doesn't take a slab along each time.
    bool giveTo(Slab& inout_slab, void* in_pBlock) noexcept {
        const SpinLock lock(m_flag);
        if (inout_slab.isFull()) {
            link(inout_slab);
        }
        inout_slab.give(in_pBlock);
        if (!inout_slab.isEmpty() || (m_pFirst == &inout_slab && inout_slab.m_pNext == nullptr)) {
            return false;
        }
        unlink(inout_slab);
        return true;
    }

    void link(Slab& inout_slab) noexcept {
        inout_slab.m_pPrevious = nullptr;
        inout_slab.m_pNext = m_pFirst;
        if (m_pFirst != nullptr) {
            m_pFirst->m_pPrevious = &inout_slab;
        }
        m_pFirst = &inout_slab;
    }

    void unlink(Slab& inout_slab) noexcept {
        (inout_slab.m_pPrevious == nullptr ? m_pFirst : inout_slab.m_pPrevious->m_pNext) =
            inout_slab.m_pNext;
        if (inout_slab.m_pNext != nullptr) {
            inout_slab.m_pNext->m_pPrevious = inout_slab.m_pPrevious;
        }
    }

    std::atomic_flag m_flag = ATOMIC_FLAG_INIT;
    Slab* m_pFirst = nullptr;
};

// Constant-initialised and never destroyed, like the accounts: static initialisers and destructors
// allocate.
SizeClass s_classes[MaxPooled / Step];

void* takePooled(std::size_t in_uiSize) noexcept {
    const std::size_t uiClass = in_uiSize == 0 ? 0 : (in_uiSize - 1) / Step;
    return s_classes[uiClass].take(uiClass);
}

void givePooled(void* in_pBlock) noexcept {
    const auto uiOffset = reinterpret_cast<std::uintptr_t>(in_pBlock) % SlabAlignment;
    auto& slab = *reinterpret_cast<Slab*>(static_cast<char*>(in_pBlock) - uiOffset);
    s_classes[slab.m_uiClass].give(slab, in_pBlock);
}

} // namespace

void* BlockPool::allocate(std::size_t in_uiSize) noexcept {
    return in_uiSize > MaxPooled ? std::malloc(in_uiSize) : takePooled(in_uiSize);
}

void BlockPool::deallocate(void* in_pBlock, std::size_t in_uiSize) noexcept {
    if (in_uiSize > MaxPooled) {
        std::free(in_pBlock);
    } else {
        givePooled(in_pBlock);
    }
}

void* BlockPool::allocateUnsized(std::size_t in_uiSize) noexcept {
    return in_uiSize > MaxPooled ? std::aligned_alloc(SlabAlignment, in_uiSize)
                                 : takePooled(in_uiSize);
}

void BlockPool::deallocateUnsized(void* in_pBlock) noexcept {
    if (reinterpret_cast<std::uintptr_t>(in_pBlock) % SlabAlignment == 0) {
        std::free(in_pBlock);
    } else {
        givePooled(in_pBlock);
    }
}

#endif

} // namespace Velmora
