#pragma once

#include <cstddef>

namespace Velmora::Testing {

/// Counts the allocations of the whole process since its construction: those of the global
/// `operator new` and those of both accounting allocators.
///
/// `allocations()` is read before anything else that may allocate, such as a failing expectation.
class AllocationCounter {
public:
    AllocationCounter();

    std::size_t allocations() const;

private:
    std::size_t m_uiAccounted;
    std::size_t m_uiGlobal;
};

} // namespace Velmora::Testing
