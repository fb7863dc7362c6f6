// Do the detectors run for days?
//
//     velmora-soak HOURS
//
// HOURS of sound go through the detectors of the examples, in one evaluator. The resident memory
// of the process must stay within 1 MB from the first minute to the end. Then everything is reset,
// the first hour is heard once more, and each of its minutes must give the same bits as before.
//
// A second process makes the sound, so that this one holds the detectors alone.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>
#include <vector>

#include "Host.h"
#include "SoakDetectors.h"
#include "SoakSound.h"

namespace {

using namespace Velmora::Benchmarks;

constexpr int HOUR_MINUTES = 60;
constexpr std::size_t STEPS_A_MINUTE =
    SoakSound::MinuteSeconds * Recordings::Signal::SampleRate / SoakDetectors::Hop;
constexpr double MOST_GROWTH_KB = 1024.0;

double readResidentKb() {
    std::ifstream file("/proc/self/statm");
    double dTotal = 0.0;
    double dResident = 0.0;
    if (!(file >> dTotal >> dResident)) {
        throw WrongResult("/proc/self/statm can't be read");
    }
    return dResident * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1024.0;
}

/// In the second process: the minutes of all hours, then those of the first hour again.
int makeSound(int in_iHours, std::FILE* in_pPipe) {
    const SoakSound sound;
    const int iMinutes = in_iHours * HOUR_MINUTES;
    for (int iMinute = 0; iMinute < iMinutes + HOUR_MINUTES; ++iMinute) {
        const std::vector<short> vSamples = sound.makeMinute(iMinute % iMinutes).quantized();
        if (std::fwrite(vSamples.data(), sizeof(short), vSamples.size(), in_pPipe) !=
            vSamples.size()) {
            return EXIT_FAILURE;
        }
    }
    return std::fclose(in_pPipe) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

std::uint64_t hearMinute(SoakDetectors& inout_Detectors, std::FILE* in_pPipe) {
    std::array<short, SoakDetectors::Hop> vSamples{};
    for (std::size_t i = 0; i < STEPS_A_MINUTE; ++i) {
        if (std::fread(vSamples.data(), sizeof(short), vSamples.size(), in_pPipe) !=
            vSamples.size()) {
            throw WrongResult("the sound ends early");
        }
        inout_Detectors.step(vSamples.data());
    }
    return inout_Detectors.takeDigest();
}

/// Returns whether memory was flat and the first hour the same.
bool soak(int in_iHours, std::FILE* in_pPipe) {
    SoakDetectors detectors;
    std::array<std::uint64_t, HOUR_MINUTES> vFirstHour{};
    double dFirst = 0.0;
    double dLeast = 0.0;
    double dMost = 0.0;
    for (int iMinute = 0; iMinute < in_iHours * HOUR_MINUTES; ++iMinute) {
        const std::uint64_t uiDigest = hearMinute(detectors, in_pPipe);
        const double dNow = readResidentKb();
        if (iMinute == 0) {
            dFirst = dLeast = dMost = dNow;
        }
        dLeast = std::min(dLeast, dNow);
        dMost = std::max(dMost, dNow);
        if (iMinute < HOUR_MINUTES) {
            vFirstHour[static_cast<std::size_t>(iMinute)] = uiDigest;
        }
        if (iMinute == 0 || (iMinute + 1) % HOUR_MINUTES == 0) {
            std::printf("after %4d min: %.0f kB resident\n", iMinute + 1, dNow);
            std::fflush(stdout);
        }
    }
    std::printf("resident from minute one on: %.0f to %.0f kB\n", dLeast, dMost);
    std::printf("frames that aren't zero: %s\n", detectors.describeActivity().c_str());

    detectors.reset();
    int iDifferent = 0;
    for (const std::uint64_t uiDigest : vFirstHour) {
        iDifferent += hearMinute(detectors, in_pPipe) != uiDigest ? 1 : 0;
    }
    std::printf("first hour repeated: %d of %d minutes differ\n", iDifferent, HOUR_MINUTES);
    const bool bFlat = dMost - dFirst <= MOST_GROWTH_KB && dFirst - dLeast <= MOST_GROWTH_KB;
    if (!bFlat) {
        std::fprintf(stderr, "the resident memory moved by more than %.0f kB\n", MOST_GROWTH_KB);
    }
    return bFlat && iDifferent == 0;
}

int run(int in_iHours) {
    int aPipe[2];
    if (pipe(aPipe) != 0) {
        throw WrongResult("no pipe for the sound");
    }
    const pid_t process = fork();
    if (process == 0) {
        close(aPipe[0]);
        _exit(makeSound(in_iHours, fdopen(aPipe[1], "w")));
    }
    close(aPipe[1]);
    const bool bGood = soak(in_iHours, fdopen(aPipe[0], "r"));
    int iStatus = 0;
    waitpid(process, &iStatus, 0);
    return bGood && iStatus == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int in_iArguments, char** in_pArguments) {
    const int iHours = in_iArguments == 2 ? std::atoi(in_pArguments[1]) : 0;
    if (iHours <= 0) {
        std::fprintf(stderr, "Usage: velmora-soak HOURS\n");
        return 2;
    }
    showErrors();
    try {
        return run(iHours);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "velmora-soak: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
