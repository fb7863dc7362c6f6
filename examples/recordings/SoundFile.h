#pragma once

#include "Signal.h"

#include <string>

namespace Recordings {

/// Writes a WAV file of 16 bits and one channel. Throws std::runtime_error if it can't.
void writeSound(const std::string& in_strPath, const Signal& in_Signal);

/// Reads a sound file of one channel at 8000 Hz. Throws std::runtime_error if it isn't one.
Signal readSound(const std::string& in_strPath);

} // namespace Recordings
