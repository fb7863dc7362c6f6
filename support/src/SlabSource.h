#pragma once

#include <cstddef>
#include <mutex>

namespace Velmora {

/// Where the pool of blocks gets its slabs: the memory that it cuts into blocks. What lives long
/// and what soon goes come from sources of their own, so that chunks get free.
///
/// What a usual script needs is taken from the heap, slab by slab. What comes beyond is cut from
/// chunks that the system is asked to back by one large page each: of a graph of fifty megabytes a
/// processor can't keep the addresses of the small pages, and looks them up at every step. A chunk
/// goes back when all of its slabs have.
class SlabSource {
public:
    /// The size and the alignment of a slab, a little of which belongs to the heap.
    static constexpr std::size_t Alignment = 16384;
    static constexpr std::size_t Size = Alignment - 16;

    /// A slab, null when memory is exhausted, and where it came from.
    struct Taken {
        void* m_pSlab;
        bool m_bAlone;
    };

    Taken take() noexcept;
    void give(const Taken& in_Taken) noexcept;

private:
    struct Chunk;

    void* takeFromChunk() noexcept;
    Chunk* giveToChunk(void* in_pSlab) noexcept;
    static Chunk* newChunk() noexcept;
    void link(Chunk& inout_chunk) noexcept;
    void unlink(Chunk& inout_chunk) noexcept;

    std::mutex m_mutex;
    std::size_t m_uiAlone = 0;
    /// Those that aren't full.
    Chunk* m_pFirst = nullptr;
};

} // namespace Velmora
