#include <velmora/AceCleanupLogger.h>

#include <velmora/DefaultStaticMemAllocator.h>

namespace Velmora {

namespace {
constexpr const char* Account = "AceCleanupLogger";
}

AceCleanupLogger::AceCleanupLogger(const char* in_szName) : Logger(in_szName) {}

AceCleanupLogger::~AceCleanupLogger() = default;

void* AceCleanupLogger::operator new(std::size_t in_uiSize) noexcept {
    return DefaultStaticMemAllocator::allocate(in_uiSize, Account);
}

void AceCleanupLogger::operator delete(void* in_pBlock, std::size_t in_uiSize) noexcept {
    DefaultStaticMemAllocator::deallocate(in_pBlock, in_uiSize, Account);
}

} // namespace Velmora
