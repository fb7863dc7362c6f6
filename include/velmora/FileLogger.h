#pragma once

#include <velmora/AceCleanupLogger.h>

/// Defines the logger of a source file: a function `accessor` of that file that returns it as a
/// `const AceCleanupLogger&`. A static initialiser calls it once, so that every logger exists when
/// the library has loaded, whether or not another initialiser logged before.
///
///     VELMORA_FILE_LOGGER(linkerLogger, "quillmark.math.xpr.Linker");
#define VELMORA_FILE_LOGGER(accessor, name)                                                        \
    static const ::Velmora::AceCleanupLogger& accessor() {                                         \
        static const ::Velmora::AceCleanupLogger* const s_pLogger =                                \
            new ::Velmora::AceCleanupLogger(name);                                                 \
        return *s_pLogger;                                                                         \
    }                                                                                              \
    [[maybe_unused]] static const bool accessor##IsCreated = (static_cast<void>(accessor()), true)
