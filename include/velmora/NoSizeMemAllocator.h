#pragma once

#include <velmora/Export.h>
#include <velmora/MemAccountName.h>

#include <cstddef>

namespace Velmora {

/// The allocator that counts blocks by account and needs no size on release. Thread-safe.
class VELMORA_EXPORT NoSizeMemAllocator {
public:
    /// A block for any object that isn't over-aligned; null when memory is exhausted.
    static void* allocate(std::size_t in_uiSize, const char* in_szAccount) noexcept;

    /// Releases a block with the account of its allocation. A null block is ignored.
    static void deallocate(void* in_pBlock, const char* in_szAccount) noexcept;

    /// The same two for a place that keeps the name, and needn't look the account up.
    static void* allocate(std::size_t in_uiSize, MemAccountName& inout_Account) noexcept;
    static void deallocate(void* in_pBlock, MemAccountName& inout_Account) noexcept;
};

} // namespace Velmora
