#pragma once

#include <recordings/Signal.h>

namespace Velmora::Benchmarks {

/// Minutes of what a telephone line carries: dial tone, keys, ringback, a voice, a swinging tone,
/// busy, silence, all of it in noise. Levels, keys, detunings and noise are drawn anew for every
/// minute; the same minute is the same to the bit.
class SoakSound {
public:
    static constexpr int MinuteSeconds = 60;

    /// Reads the voice. Throws std::runtime_error if it can't.
    SoakSound();

    /// Exactly a minute.
    Recordings::Signal makeMinute(int in_iMinute) const;

private:
    Recordings::Signal m_Voice;
};

} // namespace Velmora::Benchmarks
