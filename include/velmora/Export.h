#pragma once

/// Marks what a library exports. Everything else is hidden.
#define VELMORA_EXPORT __attribute__((visibility("default")))

/// Hides a class that is nested in an exported one.
#define VELMORA_HIDDEN __attribute__((visibility("hidden")))
