// How much faster than real time is `vxpr run`, from a sound file to a table on the disk?
//
// Three of the example scripts go over an hour of sound at 8 kHz, on one core, and the best of
// several runs counts. The hour is the example recording over and over, so every repetition of it
// must give the same rows; a run that doesn't is a failure, and so is one that is too slow.

#include <fcntl.h>
#include <sched.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int SAMPLE_RATE = 8000;
constexpr std::size_t FRAME = 160;
constexpr double HOUR = 3600.0;
constexpr double LEAST_SPEED = 1000.0;
constexpr int RUNS = 5;

/// The scripts remember a few frames at most, so a repetition begins with so many rows that the one
/// before it has a part in.
constexpr std::size_t REMEMBERED_ROWS = 20;

const std::string EXAMPLES = std::string(VELMORA_SOURCE_DIR) + "/examples/";

/// The recording in whole frames, its end filled up with silence.
std::vector<short> readRecording() {
    SF_INFO info{};
    SNDFILE* pFile = sf_open((EXAMPLES + "audio/prompt.wav").c_str(), SFM_READ, &info);
    if (pFile == nullptr || info.samplerate != SAMPLE_RATE || info.channels != 1) {
        throw std::runtime_error("the example recording can't be read");
    }
    std::vector<short> vSamples(static_cast<std::size_t>(info.frames));
    sf_read_short(pFile, vSamples.data(), info.frames);
    sf_close(pFile);
    vSamples.resize((vSamples.size() + FRAME - 1) / FRAME * FRAME, 0);
    return vSamples;
}

/// Writes an hour of sound and returns how many rows one repetition has.
std::size_t writeHour(const std::string& in_strPath) {
    const std::vector<short> vRecording = readRecording();
    SF_INFO info{};
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    info.samplerate = SAMPLE_RATE;
    info.channels = 1;
    SNDFILE* pFile = sf_open(in_strPath.c_str(), SFM_WRITE, &info);
    if (pFile == nullptr) {
        throw std::runtime_error("the hour of sound can't be written");
    }
    for (std::size_t uiWritten = 0; uiWritten < static_cast<std::size_t>(HOUR * SAMPLE_RATE);
         uiWritten += vRecording.size()) {
        sf_write_short(pFile, vRecording.data(), static_cast<sf_count_t>(vRecording.size()));
    }
    sf_close(pFile);
    return vRecording.size() / FRAME;
}

struct Seconds {
    double m_dElapsed = 0.0;
    double m_dProcessor = 0.0;
};

double toSeconds(const timeval& in_Time) {
    return static_cast<double>(in_Time.tv_sec) + 1e-6 * static_cast<double>(in_Time.tv_usec);
}

Seconds run(const std::string& in_strScript, const std::string& in_strSound,
            const std::string& in_strTable) {
    const auto start = std::chrono::steady_clock::now();
    const pid_t process = fork();
    if (process == 0) {
        cpu_set_t core;
        CPU_ZERO(&core);
        CPU_SET(0, &core);
        sched_setaffinity(0, sizeof core, &core);
        execl(VXPR_PROGRAM, "vxpr", "run", in_strScript.c_str(), "-q", "-i", in_strSound.c_str(),
              "-o", in_strTable.c_str(), nullptr);
        _exit(127);
    }
    int iStatus = 0;
    rusage usage{};
    wait4(process, &iStatus, 0, &usage);
    if (!WIFEXITED(iStatus) || WEXITSTATUS(iStatus) != 0) {
        throw std::runtime_error("vxpr failed over " + in_strScript);
    }
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return {elapsed.count(), toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime)};
}

/// The values of a row, without its time.
std::string takeValues(const std::string& in_strRow) {
    return in_strRow.substr(in_strRow.find(',') + 1);
}

void checkTable(const std::string& in_strTable, std::size_t in_uiPeriod) {
    std::ifstream file(in_strTable);
    std::string strRow;
    std::getline(file, strRow);
    std::vector<std::string> vRepetition;
    std::size_t uiRows = 0;
    for (; std::getline(file, strRow); ++uiRows) {
        const std::size_t uiPlace = uiRows % in_uiPeriod;
        if (uiRows < in_uiPeriod) {
            vRepetition.push_back(takeValues(strRow));
        } else if (uiPlace >= REMEMBERED_ROWS && takeValues(strRow) != vRepetition[uiPlace]) {
            throw std::runtime_error("row " + std::to_string(uiRows) +
                                     " differs from that of the first repetition");
        }
    }
    if (static_cast<double>(uiRows * FRAME) < HOUR * SAMPLE_RATE) {
        throw std::runtime_error("the table has only " + std::to_string(uiRows) + " rows");
    }
}

int measure(const std::filesystem::path& in_Scratch) {
    const std::string strSound = in_Scratch / "hour.wav";
    const std::string strTable = in_Scratch / "table.csv";
    const std::size_t uiPeriod = writeHour(strSound);
    bool bFastEnough = true;
    std::printf("%-16s %10s %10s %18s\n", "script", "elapsed s", "cpu s", "times real time");
    for (const char* szScript : {"loudness.xpr", "endpointer.xpr", "peak.xpr"}) {
        Seconds best{1e9, 1e9};
        for (int iRun = 0; iRun < RUNS; ++iRun) {
            const Seconds seconds = run(EXAMPLES + "scripts/" + szScript, strSound, strTable);
            best = seconds.m_dElapsed < best.m_dElapsed ? seconds : best;
        }
        checkTable(strTable, uiPeriod);
        const double dSpeed = HOUR / best.m_dElapsed;
        std::printf("%-16s %10.3f %10.3f %18.0f\n", szScript, best.m_dElapsed, best.m_dProcessor,
                    dSpeed);
        bFastEnough = bFastEnough && dSpeed >= LEAST_SPEED;
    }
    if (!bFastEnough) {
        std::fprintf(stderr, "slower than %.0f times real time\n", LEAST_SPEED);
    }
    return bFastEnough ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main() {
    std::string strScratch =
        (std::filesystem::temp_directory_path() / "hour-of-sound-XXXXXX").string();
    if (mkdtemp(strScratch.data()) == nullptr) {
        return EXIT_FAILURE;
    }
    int iStatus = EXIT_FAILURE;
    try {
        iStatus = measure(strScratch);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    std::filesystem::remove_all(strScratch);
    return iStatus;
}
