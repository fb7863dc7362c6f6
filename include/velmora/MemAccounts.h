#pragma once

#include <velmora/Export.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Velmora {

/// What one account of the allocators holds.
struct VELMORA_EXPORT MemAccount {
    /// The name that the classes of the account give.
    std::string name;

    /// Blocks that haven't been released.
    std::size_t liveBlocks = 0;
    /// 0 for an account that is used through `NoSizeMemAllocator`, which isn't told sizes on
    /// release.
    std::size_t liveBytes = 0;
    /// Blocks allocated since the process started.
    std::size_t totalBlocks = 0;
};

/// The books of both accounting allocators: blocks and bytes by account name.
///
/// An account exists from the first allocation under its name to the end of the process. Two names
/// of equal text are one account, wherever the texts lie. Thread-safe; counting takes no lock.
class VELMORA_EXPORT MemAccounts {
public:
    /// Every account, sorted by name. While other threads allocate, each number is one that the
    /// account had at some moment of the call.
    static std::vector<MemAccount> snapshot();

    /// The account of that name, all zero if nothing was ever allocated under it.
    static MemAccount get(const char* in_szAccount);
};

} // namespace Velmora
