#include "SlabSource.h"

#include <cstdint>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace Velmora {

namespace {

constexpr std::size_t ChunkSize = std::size_t(1) << 21;

/// Slabs that a source takes from the heap: half a megabyte.
constexpr std::size_t MaxAlone = 32;

struct FreeSlab {
    FreeSlab* m_pNext;
};

} // namespace

/// Stands in the place of a chunk's first slab.
struct SlabSource::Chunk {
    static constexpr std::size_t SlabCount = ChunkSize / SlabSource::Alignment - 1;

    bool isFull() const noexcept { return m_uiTaken == SlabCount; }
    bool isEmpty() const noexcept { return m_uiTaken == 0; }

    void* take() noexcept {
        ++m_uiTaken;
        if (m_pFree != nullptr) {
            FreeSlab* const pSlab = m_pFree;
            m_pFree = pSlab->m_pNext;
            return pSlab;
        }
        return reinterpret_cast<char*>(this) + SlabSource::Alignment * ++m_uiFresh;
    }

    void give(void* in_pSlab) noexcept {
        --m_uiTaken;
        m_pFree = ::new (in_pSlab) FreeSlab{m_pFree};
    }

    std::size_t m_uiTaken = 0;
    std::size_t m_uiFresh = 0;
    FreeSlab* m_pFree = nullptr;
    /// Those that aren't full.
    Chunk* m_pNext = nullptr;
    Chunk* m_pPrevious = nullptr;
};

SlabSource::Chunk* SlabSource::newChunk() noexcept {
    void* const pMemory = std::aligned_alloc(ChunkSize, ChunkSize);
    if (pMemory == nullptr) {
        return nullptr;
    }
#ifdef MADV_HUGEPAGE
    // A wish: without large pages the chunk is as good as any memory.
    static_cast<void>(madvise(pMemory, ChunkSize, MADV_HUGEPAGE));
#endif
    return ::new (pMemory) Chunk;
}

void SlabSource::link(Chunk& inout_chunk) noexcept {
    inout_chunk.m_pPrevious = nullptr;
    inout_chunk.m_pNext = m_pFirst;
    if (m_pFirst != nullptr) {
        m_pFirst->m_pPrevious = &inout_chunk;
    }
    m_pFirst = &inout_chunk;
}

void SlabSource::unlink(Chunk& inout_chunk) noexcept {
    (inout_chunk.m_pPrevious == nullptr ? m_pFirst : inout_chunk.m_pPrevious->m_pNext) =
        inout_chunk.m_pNext;
    if (inout_chunk.m_pNext != nullptr) {
        inout_chunk.m_pNext->m_pPrevious = inout_chunk.m_pPrevious;
    }
}

void* SlabSource::takeFromChunk() noexcept {
    if (m_pFirst == nullptr) {
        Chunk* const pChunk = newChunk();
        if (pChunk == nullptr) {
            return nullptr;
        }
        link(*pChunk);
    }
    Chunk& chunk = *m_pFirst;
    void* const pSlab = chunk.take();
    if (chunk.isFull()) {
        unlink(chunk);
    }
    return pSlab;
}

/// The chunk, if it isn't needed any more.
SlabSource::Chunk* SlabSource::giveToChunk(void* in_pSlab) noexcept {
    const auto uiOffset = reinterpret_cast<std::uintptr_t>(in_pSlab) % ChunkSize;
    auto& chunk = *reinterpret_cast<Chunk*>(static_cast<char*>(in_pSlab) - uiOffset);
    if (chunk.isFull()) {
        link(chunk);
    }
    chunk.give(in_pSlab);
    if (!chunk.isEmpty()) {
        return nullptr;
    }
    unlink(chunk);
    return &chunk;
}

SlabSource::Taken SlabSource::take() noexcept {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_uiAlone == MaxAlone) {
        return {takeFromChunk(), false};
    }
    void* const pSlab = std::aligned_alloc(Alignment, Size);
    m_uiAlone += pSlab == nullptr ? 0 : 1;
    return {pSlab, true};
}

void SlabSource::give(const Taken& in_Taken) noexcept {
    void* pFree = in_Taken.m_pSlab;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (in_Taken.m_bAlone) {
            --m_uiAlone;
        } else {
            pFree = giveToChunk(in_Taken.m_pSlab);
        }
    }
    std::free(pFree);
}

} // namespace Velmora
