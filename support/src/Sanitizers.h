#pragma once

/// Defines VELMORA_ADDRESS_SANITIZER or VELMORA_THREAD_SANITIZER in a build with that sanitizer,
/// which compilers tell in two ways.

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMORA_ADDRESS_SANITIZER
#endif
#if __has_feature(thread_sanitizer)
#define VELMORA_THREAD_SANITIZER
#endif
#endif

#if defined(__SANITIZE_ADDRESS__) && !defined(VELMORA_ADDRESS_SANITIZER)
#define VELMORA_ADDRESS_SANITIZER
#endif
#if defined(__SANITIZE_THREAD__) && !defined(VELMORA_THREAD_SANITIZER)
#define VELMORA_THREAD_SANITIZER
#endif
