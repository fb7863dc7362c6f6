#pragma once

#include <cstddef>

namespace Velmora::Testing {

/// Every block that this program takes from the heap, whether by `operator new` or through the
/// accounting allocators: the linker puts these counters in the place of `malloc` and `free`.
class Allocations {
public:
    /// The blocks of all threads that live now.
    static std::size_t getLiveBlocks();

    /// The allocations of this thread since it started.
    static std::size_t getCount();

    /// Makes one allocation of this thread fail: the one that comes behind that many others.
    static void failBehind(std::size_t in_uiOthers);

    /// Lets every allocation succeed again.
    static void stopFailing();

    /// Whether one has failed since `failBehind`.
    static bool hasFailed();

    /// The account of the one that failed; null for a block without one.
    static const char* getFailedAccount();
};

} // namespace Velmora::Testing
