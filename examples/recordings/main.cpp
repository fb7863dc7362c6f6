// make-recording: sounds to try detectors on. Equal command lines give equal files on every
// machine.

#include "SoundFile.h"
#include "Telephone.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <exception>

using namespace Recordings;

namespace {

/// What every kind of recording can be told.
struct Common {
    std::string m_strOutput;
    double m_dSeconds = 10.0;
    double m_dAmplitude = 0.2;
    double m_dRatio = 40.0;
    std::uint64_t m_uiSeed = 1;
};

CLI::App* addKind(CLI::App& inout_App, const std::string& in_strName, const std::string& in_strHelp,
                  Common& inout_Common) {
    CLI::App* const kind = inout_App.add_subcommand(in_strName, in_strHelp);
    kind->add_option("-o,--output", inout_Common.m_strOutput, "The WAV file to write")->required();
    kind->add_option("--snr", inout_Common.m_dRatio, "Decibels from the signal down to the noise")
        ->capture_default_str();
    kind->add_option("--seed", inout_Common.m_uiSeed, "Another number gives another noise")
        ->capture_default_str();
    return kind;
}

void addLength(CLI::App& inout_Kind, Common& inout_Common) {
    inout_Kind.add_option("--seconds", inout_Common.m_dSeconds, "Length")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    inout_Kind.add_option("--amplitude", inout_Common.m_dAmplitude, "Amplitude; 1 is full scale")
        ->capture_default_str();
}

void finish(Signal& inout_Signal, double in_dSignalPower, const Common& in_Common) {
    inout_Signal.mixNoise(noisePower(in_dSignalPower, in_Common.m_dRatio), in_Common.m_uiSeed);
    writeSound(in_Common.m_strOutput, inout_Signal);
}

void makeKeys(const std::string& in_strKeys, const Common& in_Common) {
    const Dialling dialling;
    Signal signal;
    signal.addSilence(0.2);
    for (const char cKey : in_strKeys) {
        if (!addKey(signal, cKey, dialling)) {
            throw std::runtime_error(std::string("there is no key ") + cKey);
        }
    }
    signal.addSilence(0.2);
    finish(signal, dialling.m_dRowAmplitude * dialling.m_dRowAmplitude, in_Common);
}

void makeCadence(const std::string& in_strName, const Common& in_Common) {
    Signal signal;
    for (const Cadence& cadence : listCadences()) {
        if (cadence.m_strName == in_strName) {
            addCadence(signal, cadence, {CadenceFrequency, in_Common.m_dAmplitude, 0.0}, 0.0,
                       in_Common.m_dSeconds);
        }
    }
    finish(signal, 0.5 * in_Common.m_dAmplitude * in_Common.m_dAmplitude, in_Common);
}

} // namespace

int main(int in_iCount, char** in_pArguments) {
    CLI::App app("Makes recordings to try detectors on: one channel, 8000 Hz, 16 bits.");
    app.require_subcommand(1);
    Common common;
    std::string strText;
    double dLevel = -40.0;
    ModulatedTone modulated{{1000.0, 0.0, 0.0}, 2.0, 0.5, 0.0};

    addKind(app, "keys", "Keys of a telephone, 70 ms each with pauses of 70 ms", common)
        ->add_option("KEYS", strText, "Of 0123456789*#ABCD")
        ->required();
    CLI::App* const cadence =
        addKind(app, "progress", "What a telephone exchange says: 425 Hz", common);
    cadence->add_option("NAME", strText, "dial, busy or ringback")
        ->required()
        ->check(CLI::IsMember({"dial", "busy", "ringback"}));
    addLength(*cadence, common);
    CLI::App* const am = addKind(app, "am", "A tone whose loudness swings", common);
    am->add_option("--carrier", modulated.m_Carrier.m_dFrequency, "Hz")->capture_default_str();
    am->add_option("--rate", modulated.m_dRate, "Swings a second")->capture_default_str();
    am->add_option("--depth", modulated.m_dDepth, "From 0 to 1")->capture_default_str();
    addLength(*am, common);
    addKind(app, "noisy", "A recording with noise, counted from its own mean power", common)
        ->add_option("RECORDING", strText, "One channel, 8000 Hz")
        ->required();
    CLI::App* const noise = app.add_subcommand("noise", "Noise alone");
    noise->add_option("-o,--output", common.m_strOutput, "The WAV file to write")->required();
    noise->add_option("--level", dLevel, "Its power, in decibels; 0 is full scale")
        ->capture_default_str();
    noise->add_option("--seconds", common.m_dSeconds, "Length")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    noise->add_option("--seed", common.m_uiSeed, "Another number gives another noise")
        ->capture_default_str();
    CLI11_PARSE(app, in_iCount, in_pArguments);

    try {
        if (app.got_subcommand("keys")) {
            makeKeys(strText, common);
        } else if (app.got_subcommand("progress")) {
            makeCadence(strText, common);
        } else if (app.got_subcommand("am")) {
            modulated.m_Carrier.m_dAmplitude = common.m_dAmplitude;
            Signal signal;
            signal.addModulated(modulated, common.m_dSeconds);
            finish(signal, signal.power(), common);
        } else if (app.got_subcommand("noise")) {
            Signal signal;
            signal.addSilence(common.m_dSeconds);
            signal.mixNoise(ratioOf(dLevel), common.m_uiSeed);
            writeSound(common.m_strOutput, signal);
        } else {
            Signal signal = readSound(strText);
            finish(signal, signal.power(), common);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make-recording: %s\n", error.what());
        return 1;
    }
    return 0;
}
