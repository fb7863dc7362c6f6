#include "SoakSound.h"

#include <cstring>
#include <random>

#include <recordings/SoundFile.h>
#include <recordings/Telephone.h>

namespace Velmora::Benchmarks {

namespace {

using Recordings::Signal;

/// The distributions of the standard library differ from one implementation to the next.
class Draw {
public:
    explicit Draw(int in_iSeed) : m_Random(static_cast<std::uint64_t>(in_iSeed)) {}

    double between(double in_dLow, double in_dHigh) {
        return in_dLow + (in_dHigh - in_dLow) * static_cast<double>(m_Random() >> 11) * 0x1p-53;
    }
    char key() { return Recordings::DialKeys[m_Random() % std::strlen(Recordings::DialKeys)]; }
    std::uint64_t seed() { return m_Random(); }

private:
    std::mt19937_64 m_Random;
};

void addCadence(Signal& inout_Signal, std::size_t in_uiCadence, double in_dSeconds,
                Draw& inout_Draw) {
    const Recordings::Tone tone{Recordings::CadenceFrequency, inout_Draw.between(0.05, 0.3),
                                inout_Draw.between(0.0, 1.0)};
    Recordings::addCadence(inout_Signal, Recordings::listCadences()[in_uiCadence], tone, 0.0,
                           in_dSeconds);
}

void addKeys(Signal& inout_Signal, Draw& inout_Draw) {
    for (int i = 0; i < 12; ++i) {
        Recordings::Dialling dialling;
        dialling.m_dToneSeconds = inout_Draw.between(0.06, 0.15);
        dialling.m_dPauseSeconds = inout_Draw.between(0.06, 0.15);
        dialling.m_dRowAmplitude = inout_Draw.between(0.1, 0.2);
        dialling.m_dColumnAmplitude = inout_Draw.between(0.1, 0.2);
        dialling.m_dDetuning = inout_Draw.between(0.985, 1.015);
        Recordings::addKey(inout_Signal, inout_Draw.key(), dialling);
    }
}

void addVoice(Signal& inout_Signal, const Signal& in_Voice, Draw& inout_Draw) {
    Signal voice = in_Voice;
    voice.scale(inout_Draw.between(0.3, 1.0));
    inout_Signal.addSamples(voice.samples());
}

void addSwinging(Signal& inout_Signal, Draw& inout_Draw) {
    Recordings::ModulatedTone tone;
    tone.m_Carrier = {1000.0, inout_Draw.between(0.1, 0.4), inout_Draw.between(0.0, 1.0)};
    tone.m_dRate = inout_Draw.between(1.0, 8.0);
    tone.m_dDepth = inout_Draw.between(0.1, 1.0);
    inout_Signal.addModulated(tone, 6.0);
}

} // namespace

SoakSound::SoakSound()
    : m_Voice(
          Recordings::readSound(std::string(VELMORA_SOURCE_DIR) + "/examples/audio/prompt.wav")) {}

Signal SoakSound::makeMinute(int in_iMinute) const {
    Draw draw(in_iMinute);
    Signal signal;
    addCadence(signal, 0, 4.0, draw);
    addKeys(signal, draw);
    addCadence(signal, 2, 14.0, draw);
    addVoice(signal, m_Voice, draw);
    addSwinging(signal, draw);
    addCadence(signal, 1, 9.0, draw);
    signal.addSilence(MinuteSeconds);
    signal.mixNoise(Recordings::ratioOf(draw.between(-70.0, -40.0)), draw.seed());

    const auto iLength =
        static_cast<std::ptrdiff_t>(Signal::countSamples(static_cast<double>(MinuteSeconds)));
    Signal minute;
    minute.addSamples({signal.samples().begin(), signal.samples().begin() + iLength});
    return minute;
}

} // namespace Velmora::Benchmarks
