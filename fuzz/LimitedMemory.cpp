// Memory ends somewhere: a block beyond the limit is refused to the caller, as on a machine that
// hasn't any left, where the sanitizer would end the process.

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t Limit = std::size_t(1) << 28;

} // namespace

void* operator new(std::size_t in_uiSize, const std::nothrow_t&) noexcept {
    return in_uiSize > Limit ? nullptr : std::malloc(in_uiSize);
}

void* operator new(std::size_t in_uiSize) {
    void* const pBlock = operator new(in_uiSize, std::nothrow);
    if (pBlock == nullptr) {
        throw std::bad_alloc();
    }
    return pBlock;
}

void operator delete(void* in_pBlock) noexcept {
    std::free(in_pBlock);
}

void operator delete(void* in_pBlock, std::size_t) noexcept {
    std::free(in_pBlock);
}
