#pragma once

#include "Signal.h"

#include <string>
#include <vector>

namespace Recordings {

/// How a key is dialled: two tones at once, one for the key's row and one for its column.
struct Dialling {
    double m_dToneSeconds = 0.07;
    double m_dPauseSeconds = 0.07;
    double m_dRowAmplitude = 0.2;
    double m_dColumnAmplitude = 0.2;
    /// What the frequencies are multiplied by: senders are allowed 1.5 % more or less.
    double m_dDetuning = 1.0;
};

/// The sixteen keys, row by row.
constexpr const char* DialKeys = "123A456B789C*0#D";

/// Appends the tones of a key and the pause behind it. Returns false for what is no key.
bool addKey(Signal& inout_Signal, char in_cKey, const Dialling& in_Dialling);

/// A signal that tells the caller how the call is doing: one tone, switched on and off in turn.
struct Cadence {
    std::string m_strName;
    /// Seconds on, off, on, off ...; a single number is a tone that stays on.
    std::vector<double> m_vSeconds;
};

/// Dial tone, busy and ringback as most of Europe has them.
const std::vector<Cadence>& listCadences();

/// The frequency of all of them, in Hz.
constexpr double CadenceFrequency = 425.0;

/// Appends the cadence over and over, from a place within it on, for so many seconds.
void addCadence(Signal& inout_Signal, const Cadence& in_Cadence, const Tone& in_Tone,
                double in_dStart, double in_dSeconds);

} // namespace Recordings
