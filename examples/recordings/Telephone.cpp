#include "Telephone.h"

#include <algorithm>
#include <cstring>

namespace Recordings {

namespace {

constexpr double rows[] = {697.0, 770.0, 852.0, 941.0};
constexpr double columns[] = {1209.0, 1336.0, 1477.0, 1633.0};

} // namespace

bool addKey(Signal& inout_Signal, char in_cKey, const Dialling& in_Dialling) {
    const char* const key = in_cKey == '\0' ? nullptr : std::strchr(DialKeys, in_cKey);
    if (key == nullptr) {
        return false;
    }
    const std::ptrdiff_t index = key - DialKeys;
    const double detuning = in_Dialling.m_dDetuning;
    inout_Signal.addTones({{rows[index / 4] * detuning, in_Dialling.m_dRowAmplitude, 0.0},
                           {columns[index % 4] * detuning, in_Dialling.m_dColumnAmplitude, 0.0}},
                          in_Dialling.m_dToneSeconds);
    inout_Signal.addSilence(in_Dialling.m_dPauseSeconds);
    return true;
}

const std::vector<Cadence>& listCadences() {
    static const std::vector<Cadence> cadences{
        {"dial", {1.0}}, {"busy", {0.5, 0.5}}, {"ringback", {1.0, 4.0}}};
    return cadences;
}

void addCadence(Signal& inout_Signal, const Cadence& in_Cadence, const Tone& in_Tone,
                double in_dStart, double in_dSeconds) {
    double skip = in_dStart;
    double left = in_dSeconds;
    const bool switched = in_Cadence.m_vSeconds.size() > 1;
    for (std::size_t i = 0; left > 0.0; ++i) {
        const double whole =
            switched ? in_Cadence.m_vSeconds[i % in_Cadence.m_vSeconds.size()] : in_dSeconds + skip;
        if (skip >= whole) {
            skip -= whole;
            continue;
        }
        const double part = std::min(whole - skip, left);
        if (switched && i % 2 != 0) {
            inout_Signal.addSilence(part);
        } else {
            inout_Signal.addTones({in_Tone}, part);
        }
        left -= part;
        skip = 0.0;
    }
}

} // namespace Recordings
