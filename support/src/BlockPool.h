#pragma once

#include <cstddef>

namespace Velmora {

/// The blocks behind the accounted allocators.
///
/// A graph is made of many small blocks of few sizes, which are walked over again and again. Here
/// blocks of one size stand side by side, apart from what else the process allocates meanwhile;
/// nothing is joined or split when they go. Memory goes back to the heap when all blocks in a
/// stretch of it have gone. Any thread may free a block.
///
/// Under a sanitizer, which must see every block, all of it is `malloc` and `free`.
class BlockPool {
public:
    /// A block for any object that isn't over-aligned; null when memory is exhausted.
    static void* allocate(std::size_t in_uiSize) noexcept;

    /// Takes a block of that size back.
    static void deallocate(void* in_pBlock, std::size_t in_uiSize) noexcept;

    /// The same two for who doesn't know the size any more when the block goes; a large block costs
    /// more this way.
    static void* allocateUnsized(std::size_t in_uiSize) noexcept;
    static void deallocateUnsized(void* in_pBlock) noexcept;
};

} // namespace Velmora
