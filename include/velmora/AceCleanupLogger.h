#pragma once

#include <velmora/Logger.h>

#include <cstddef>

namespace Velmora {

/// The logger of a source file, created while the library loads and alive to the end of the
/// process. The library never deletes one, so that a static destructor may still log.
class VELMORA_EXPORT AceCleanupLogger : public Logger {
public:
    /// The logger of that name.
    explicit AceCleanupLogger(const char* in_szName);
    ~AceCleanupLogger() override;

    /// Null when memory is exhausted.
    static void* operator new(std::size_t in_uiSize) noexcept;
    static void operator delete(void* in_pBlock, std::size_t in_uiSize) noexcept;
};

} // namespace Velmora
