#include "BlockPool.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>

#include "Sanitizers.h"
#include "SlabSource.h"

#if defined(VELMORA_ADDRESS_SANITIZER) || defined(VELMORA_THREAD_SANITIZER)
#define VELMORA_PLAIN_BLOCKS
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

struct Block {
    Block* m_pNext;
};

class SizeClass;

/// The head of a slab, so that no pooled block is aligned like a slab: an unsized block that is,
/// stands alone. What was never used of it, or not since all of it was free, is given in the
/// order of the addresses.
struct alignas(Step) Slab {
    Slab(SizeClass& inout_owner, SlabSource& inout_source, std::size_t in_uiBlockSize,
         std::size_t in_uiPlace, bool in_bAlone)
        : m_owner(inout_owner),
          m_source(inout_source),
          m_uiBlockSize(in_uiBlockSize),
          m_uiBegin(sizeof(Slab) + in_uiPlace),
          m_bAlone(in_bAlone) {}

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
        m_uiFresh += m_uiBlockSize;
        fetchAhead(static_cast<const char*>(pBlock));
        return pBlock;
    }

    void give(void* in_pBlock) noexcept {
        m_pFree = ::new (in_pBlock) Block{m_pFree};
        if (--m_uiTaken == 0) {
            m_pFree = nullptr;
            m_uiFresh = m_uiBegin;
        }
    }

    /// A new node is written at once, and whatever locks or counts next waits until memory has it.
    void fetchAhead(const char* in_pBlock) const noexcept {
        constexpr std::size_t Line = 64;
        const char* const pAhead = in_pBlock + 2 * m_uiBlockSize;
        for (std::size_t ui = 0; ui < m_uiBlockSize; ui += Line) {
            __builtin_prefetch(pAhead + ui, 1);
        }
    }

    SizeClass& m_owner;
    SlabSource& m_source;
    const std::size_t m_uiBlockSize;
    const std::size_t m_uiBegin;
    const bool m_bAlone;
    const std::size_t m_uiEnd =
        m_uiBegin + (SlabSource::Size - m_uiBegin) / m_uiBlockSize * m_uiBlockSize;
    std::size_t m_uiFresh = m_uiBegin;
    std::size_t m_uiTaken = 0;
    Block* m_pFree = nullptr;
    /// Those of its size that aren't full.
    Slab* m_pNext = nullptr;
    Slab* m_pPrevious = nullptr;
};

/// The slabs of one size.
class SizeClass {
public:
    void* take(SlabSource& inout_source, std::size_t in_uiBlockSize) noexcept {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_pFirst == nullptr) {
            const SlabSource::Taken taken = inout_source.take();
            if (taken.m_pSlab == nullptr) {
                return nullptr;
            }
            link(*::new (taken.m_pSlab)
                     Slab(*this, inout_source, in_uiBlockSize, nextPlace(), taken.m_bAlone));
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
            inout_slab.m_source.give({&inout_slab, inout_slab.m_bAlone});
        }
    }

private:
    /// How far behind its head the blocks of the next slab begin. Slabs are aligned to more than a
    /// cache tells apart: what stands at the same place of each, as every eighth block of a graph
    /// that is made of equal definitions does, would fight for the same few lines.
    std::size_t nextPlace() noexcept {
        constexpr std::size_t Line = 64;
        constexpr std::size_t Places = 8;
        return m_uiSlabs++ % Places * Line;
    }

    /// True if the slab isn't needed any more. The last one stays, so that a block that comes and
    /// goes doesn't take a slab along each time.
    bool giveTo(Slab& inout_slab, void* in_pBlock) noexcept {
        const std::lock_guard<std::mutex> lock(m_mutex);
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

    std::mutex m_mutex;
    Slab* m_pFirst = nullptr;
    std::size_t m_uiSlabs = 0;
};

// Constant-initialised and never destroyed, like the accounts: static initialisers and destructors
// allocate.
using SizeClasses = SizeClass[MaxPooled / Step];
SizeClasses s_sized;
SizeClasses s_unsized;

/// Nodes are unsized. Sized are counters and the values of a frame of one element, which live as
/// long, and what a graph is put together and looked at with, which goes before it does.
constexpr std::size_t MaxCounter = 48;
SlabSource s_nodes;
SlabSource s_counters;
SlabSource s_passing;

/// Large blocks are vectors, whose values stand 16 bytes behind the start of an aligned block.
/// Those values begin on a line of the cache, so that no access crosses two of them, and blocks of
/// a page and more begin at different places of a page: a processor takes addresses for the same
/// that differ by whole pages.
constexpr std::size_t Line = 64;
constexpr std::size_t Page = 4096;
constexpr std::size_t PlacesInPage = 16;

void* takeLarge(std::size_t in_uiSize) noexcept {
    static std::atomic<std::size_t> s_uiLast{0};
    const std::size_t uiPlace =
        in_uiSize < Page ? 0 : s_uiLast.fetch_add(1, std::memory_order_relaxed) % PlacesInPage;
    const std::size_t uiAhead = Line - Step + uiPlace * 3 * Line;
    if (in_uiSize > std::numeric_limits<std::size_t>::max() - uiAhead) {
        return nullptr;
    }
    auto* const pStart = static_cast<char*>(std::aligned_alloc(Line, in_uiSize + uiAhead));
    if (pStart == nullptr) {
        return nullptr;
    }
    char* const pBlock = pStart + uiAhead;
    std::memcpy(pBlock - sizeof(pStart), &pStart, sizeof(pStart));
    return pBlock;
}

void giveLarge(void* in_pBlock) noexcept {
    char* pStart;
    std::memcpy(&pStart, static_cast<char*>(in_pBlock) - sizeof(pStart), sizeof(pStart));
    std::free(pStart);
}

void* takePooled(SizeClasses& inout_classes, SlabSource& inout_source,
                 std::size_t in_uiSize) noexcept {
    const std::size_t uiClass = in_uiSize == 0 ? 0 : (in_uiSize - 1) / Step;
    return inout_classes[uiClass].take(inout_source, (uiClass + 1) * Step);
}

void givePooled(void* in_pBlock) noexcept {
    const auto uiOffset = reinterpret_cast<std::uintptr_t>(in_pBlock) % SlabSource::Alignment;
    auto& slab = *reinterpret_cast<Slab*>(static_cast<char*>(in_pBlock) - uiOffset);
    slab.m_owner.give(slab, in_pBlock);
}

} // namespace

void* BlockPool::allocate(std::size_t in_uiSize) noexcept {
    if (in_uiSize > MaxPooled) {
        return takeLarge(in_uiSize);
    }
    return takePooled(s_sized, in_uiSize > MaxCounter ? s_passing : s_counters, in_uiSize);
}

void BlockPool::deallocate(void* in_pBlock, std::size_t in_uiSize) noexcept {
    if (in_uiSize > MaxPooled) {
        giveLarge(in_pBlock);
    } else {
        givePooled(in_pBlock);
    }
}

void* BlockPool::allocateUnsized(std::size_t in_uiSize) noexcept {
    return in_uiSize > MaxPooled ? std::aligned_alloc(SlabSource::Alignment, in_uiSize)
                                 : takePooled(s_unsized, s_nodes, in_uiSize);
}

void BlockPool::deallocateUnsized(void* in_pBlock) noexcept {
    if (reinterpret_cast<std::uintptr_t>(in_pBlock) % SlabSource::Alignment == 0) {
        std::free(in_pBlock);
    } else {
        givePooled(in_pBlock);
    }
}

#endif

} // namespace Velmora
