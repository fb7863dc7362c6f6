#pragma once

/// Marks what a library exports. Everything else is hidden.
#define VELMORA_EXPORT __attribute__((visibility("default")))
