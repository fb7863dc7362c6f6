// Reads a recording, computes two features of each frame with one shared evaluator, and prints
// them.
//
//     host SCRIPTS RECORDING
//
// SCRIPTS is the directory of the scripts, RECORDING a mono recording of 8000 samples a second.

#include <cstdlib>
#include <iomanip>
#include <iostream>

#include <log4cplus/consoleappender.h>
#include <log4cplus/logger.h>
#include <sndfile.hh>

#include <velmora/DiskFileSystem.h>
#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/FeatureComputer.h>

namespace {

namespace Xpr = Velmora::Math::Xpr;
using Velmora::Handle;
using Velmora::Math::DoubleVector;

constexpr int SampleRate = 8000;
constexpr std::size_t FrameSize = SampleRate / 50;

/// Errors, such as those of scripts, go to the standard error.
void setUpLogging() {
    log4cplus::SharedAppenderPtr pAppender(new log4cplus::ConsoleAppender(true, true));
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.addAppender(pAppender);
    root.setLogLevel(log4cplus::ERROR_LOG_LEVEL);
}

bool configure(Xpr::Evaluator& out_Evaluator, const char* in_szScripts) {
    Velmora::ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               Velmora::ParameterValue(in_szScripts));
    return out_Evaluator.configure(
        configuration, Velmora::TSHandle<Velmora::VirtualFileSystem>(new Velmora::DiskFileSystem));
}

/// Adds the computer's script to the evaluator.
bool share(Xpr::FeatureComputer& inout_Computer, Xpr::Evaluator& inout_Evaluator,
           const char* in_szScript) {
    return inout_Computer.setEvaluator(&inout_Evaluator) &&
           inout_Computer.setXprFilename(in_szScript,
                                         Velmora::TSHandle<Velmora::VirtualFileSystem>());
}

int run(const char* in_szScripts, const char* in_szRecording) {
    SndfileHandle recording(in_szRecording);
    if (recording.error() != SF_ERR_NO_ERROR || recording.channels() != 1 ||
        recording.samplerate() != SampleRate) {
        std::cerr << in_szRecording << ": not a mono recording of 8000 samples a second\n";
        return EXIT_FAILURE;
    }

    // The evaluator ahead of the computers: it must outlive them.
    Xpr::Evaluator evaluator;
    Xpr::FeatureComputer loudness("loudness");
    Xpr::FeatureComputer speech("speech");
    if (!configure(evaluator, in_szScripts) || !share(loudness, evaluator, "loudness") ||
        !share(speech, evaluator, "endpointer") || !evaluator.link(true) ||
        !evaluator.reconfigureExpressions()) {
        return EXIT_FAILURE;
    }
    const Handle<Xpr::Variable> pLoudnessFrame = evaluator.getVariable("loudness.frame");
    const Handle<Xpr::Variable> pSpeechFrame = evaluator.getVariable("endpointer.frame");
    if (pLoudnessFrame.isNull() || pSpeechFrame.isNull()) {
        return EXIT_FAILURE;
    }

    // The scripts read this vector in place.
    DoubleVector vFrame;
    vFrame.resize(FrameSize);
    DoubleVector vLoudness;
    DoubleVector vSpeech;
    std::cout << std::fixed << std::setprecision(2);
    for (int iFrame = 0; recording.read(vFrame.begin(), FrameSize) == FrameSize; ++iFrame) {
        pLoudnessFrame->setValue(vFrame);
        pSpeechFrame->setValue(vFrame);
        if (!loudness.computeFeatures(vLoudness) || !speech.computeFeatures(vSpeech)) {
            return EXIT_FAILURE;
        }
        if (vLoudness.empty() || vSpeech.empty()) {
            continue; // Something below has failed, which the log tells.
        }
        std::cout << iFrame * 0.02 << " s: " << vLoudness[0] << " dB"
                  << (vSpeech[0] != 0.0 ? ", speech\n" : "\n");
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int in_iArguments, char** in_pArguments) {
    if (in_iArguments != 3) {
        std::cerr << "Usage: host SCRIPTS RECORDING\n";
        return EXIT_FAILURE;
    }
    setUpLogging();
    return run(in_pArguments[1], in_pArguments[2]);
}
