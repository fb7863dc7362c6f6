#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "DetectorReference.h"
#include "Frames.h"
#include "Host.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t SIZE = 160;

const char* const SCRIPT = "inputvar frame\n"
                           "power = averagePower(frame)\n"
                           "speech = debounceOnOff<3, 4>(vad<-40.0, 2>(power))\n"
                           "tone1 = sinusCorrelate<8000, 697>(frame)\n"
                           "tone2 = sinusCorrelate<8000, 770>(frame)\n"
                           "tone3 = sinusCorrelate<8000, 852>(frame)\n"
                           "tone4 = sinusCorrelate<8000, 941>(frame)\n"
                           "r = {log(power), speech, tone1, tone2, tone3, tone4}\n";

/// The same as in the script.
const DetectorReference::Settings SETTINGS{8000.0, {697.0, 770.0, 852.0, 941.0}, 1e-4, 0.9745, 3,
                                           4};

/// Eight loud frames with a tone, eight quiet ones, so that the decisions change.
constexpr std::size_t FRAMES = 16;

std::vector<Math::DoubleVector> makeFrames() {
    Numbers numbers(5);
    std::vector<Math::DoubleVector> vFrames(FRAMES);
    for (std::size_t uiFrame = 0; uiFrame != FRAMES; ++uiFrame) {
        const double dLoudness = uiFrame < FRAMES / 2 ? 0.5 : 0.001;
        const double dTone = SETTINGS.m_Frequencies[uiFrame % DetectorReference::TONES];
        vFrames[uiFrame].resize(SIZE);
        double dTime = numbers.between(0.0, 1.0);
        for (double& dValue : vFrames[uiFrame]) {
            dTime += 1.0 / SETTINGS.m_dSampleRate;
            dValue = dLoudness * (std::sin(2.0 * M_PI * dTone * dTime) + numbers.between(-1, 1));
        }
    }
    return vFrames;
}

class Detectors {
public:
    Detectors()
        : m_Copies(FRAMES, SIZE),
          m_Host(SCRIPT),
          m_pFrame(m_Host.getInput("frame")),
          m_pR(m_Host.getFeature("r")),
          m_Reference(SETTINGS, SIZE) {
        for (std::size_t uiFrame = 0; uiFrame != FRAMES; ++uiFrame) {
            std::copy(m_vFrames[uiFrame].begin(), m_vFrames[uiFrame].end(), m_Copies[uiFrame]);
        }
    }

    void check() {
        std::size_t uiSpeech = 0;
        constexpr std::size_t CHECKED = 64 * FRAMES;
        for (std::size_t uiFrame = 0; uiFrame != CHECKED; ++uiFrame) {
            m_pFrame->setValue(m_vFrames[uiFrame % FRAMES]);
            const Math::DoubleVector& vR = evaluateOrThrow(*m_pR);
            if (vR.size() != m_Results.size()) {
                throw WrongResult("detector: wrong size");
            }
            m_Reference.compute(m_Copies[uiFrame % FRAMES], m_Results);
            checkClose("detector", vR.begin(), m_Results.data(), vR.size(), 1e-10);
            uiSpeech += vR[1] != 0.0 ? 1 : 0;
        }
        if (uiSpeech == 0 || uiSpeech == CHECKED) {
            throw WrongResult("detector: never decides anything else");
        }
    }

    Race::Times race() {
        Race race;
        race.add("library", [this](std::size_t in_uiFrame) {
            m_pFrame->setValue(m_vFrames[in_uiFrame % FRAMES]);
            benchmark::DoNotOptimize(evaluate(*m_pR));
        });
        race.addReference("fused", [this](std::size_t in_uiFrame) {
            m_Reference.compute(m_Copies[in_uiFrame % FRAMES], m_Results);
            benchmark::DoNotOptimize(m_Results);
        });
        return race.run();
    }

private:
    std::vector<Math::DoubleVector> m_vFrames = makeFrames();
    ReferenceMemory m_Copies;
    Host m_Host;
    Handle<Math::Xpr::Variable> m_pFrame;
    Handle<Math::Xpr::Expression> m_pR;
    DetectorReference m_Reference;
    DetectorReference::Results m_Results{};
};

} // namespace

void measureDetector(Report& inout_Report, Effort /*in_eEffort*/) {
    Detectors detectors;
    detectors.check();
    const Race::Times times = detectors.race();
    const std::string strWhat = "W5, N = " + std::to_string(SIZE);
    inout_Report.addTimes(strWhat, times);
    const double dFused = times.at("fused");
    inout_Report.addTarget(strWhat, "ns", times.at("library"), {1.5 * dFused, 1.0 * dFused},
                           "1.5 (aim: 1.0) x fused");
}

} // namespace Velmora::Benchmarks
