// Recordings and tables, as `vxpr` reads them: all of them is read, or a Failure says what is
// wrong.
//
// The input is the file, of the kind that its first bytes tell; what is no sound and no array is a
// table of separated values, and with "raw " and a format up to a zero byte in front it is sound
// without a header. The last bytes of a sound steer how it is cut into frames.

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "fuzz/support/Input.h"
#include "fuzz/support/Result.h"
#include "fuzz/support/Target.h"
#include "tools/vxpr/CsvTable.h"
#include "tools/vxpr/Failure.h"
#include "tools/vxpr/FrameSize.h"
#include "tools/vxpr/NpyTable.h"
#include "tools/vxpr/RawFormat.h"
#include "tools/vxpr/RecordingFrames.h"

using namespace Velmora::Fuzz;

namespace {

constexpr std::size_t MaxFrames = 2000;
constexpr std::size_t SteeringBytes = 4;

/// A file in memory with a path.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& in_strContents) : m_iFile(memfd_create("fuzz", 0)) {
        check(m_iFile >= 0 && write(m_iFile, in_strContents.data(), in_strContents.size()) ==
                                  static_cast<ssize_t>(in_strContents.size()),
              "a file in memory can be made");
    }
    ~MemoryFile() { close(m_iFile); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string getPath() const { return "/proc/self/fd/" + std::to_string(m_iFile); }

private:
    int m_iFile;
};

bool startsWith(const std::string& in_strText, const char* in_szStart) {
    return in_strText.rfind(in_szStart, 0) == 0;
}

bool isSound(const std::string& in_strContents) {
    constexpr std::array<const char*, 9> Starts{"RIFF", "RIFX", "RF64", "FORM", "fLaC",
                                                "OggS", ".snd", "caff", "riff"};
    for (const char* szStart : Starts) {
        if (startsWith(in_strContents, szStart)) {
            return true;
        }
    }
    return false;
}

void readTable(Vxpr::InputTable&& inout_Table) {
    std::vector<double> vRow;
    for (std::size_t uiRow = 0; uiRow != MaxFrames && inout_Table.next(vRow); ++uiRow) {
    }
}

void readSound(const std::string& in_strContents, const std::optional<Vxpr::RawFormat>& in_Raw) {
    const MemoryFile file(in_strContents);
    const std::size_t uiSteering = std::min(SteeringBytes, in_strContents.size());
    Input steering(reinterpret_cast<const std::uint8_t*>(in_strContents.data()) +
                       (in_strContents.size() - uiSteering),
                   uiSteering);
    constexpr std::array<int, 4> Rates{0, 8000, 11025, 48000};
    constexpr std::array<const char*, 4> Sizes{"160", "1", "20ms", "0.1s"};
    Vxpr::RecordingFrames::Options options;
    options.m_Recording.m_strPath = file.getPath();
    options.m_Recording.m_RawFormat = in_Raw;
    options.m_Recording.m_iChannel = static_cast<int>(steering.takeBelow(4)) / 2;
    options.m_iSampleRate = Rates[steering.takeBelow(Rates.size())];
    options.m_FrameSize = Vxpr::FrameSize::parse("--frame", Sizes[steering.takeBelow(4)]);
    const std::uint8_t uiCut = steering.takeByte();
    if ((uiCut & 1U) != 0) {
        options.m_HopSize = Vxpr::FrameSize::parse("--hop", Sizes[(uiCut >> 2U) % Sizes.size()]);
    }
    options.m_bPad = (uiCut & 2U) != 0;

    Vxpr::RecordingFrames frames(options);
    std::size_t uiFrames = 0;
    double dSum = 0.0;
    while (uiFrames != MaxFrames && frames.next()) {
        ++uiFrames;
        dSum += frames.getTime();
        for (std::size_t ui = 0; ui != frames.getFrameSize(); ++ui) {
            dSum += frames.getSamples()[ui];
        }
    }
    static_cast<void>(dSum);
    static_cast<void>(frames.getLength());
    static_cast<void>(frames.describeTruncation());
    frames.checkEnd(uiFrames);
}

void readFile(const std::string& in_strContents) {
    if (isSound(in_strContents)) {
        readSound(in_strContents, std::nullopt);
    } else if (startsWith(in_strContents, "raw ")) {
        const std::size_t uiEnd = std::min(in_strContents.find('\0'), in_strContents.size());
        const auto format = Vxpr::RawFormat::parse(in_strContents.substr(4, uiEnd - 4));
        readSound(in_strContents.substr(std::min(uiEnd + 1, in_strContents.size())), format);
    } else if (startsWith(in_strContents, "\x93NUMPY")) {
        readTable(Vxpr::NpyTable(MemoryFile(in_strContents).getPath()));
    } else {
        readTable(Vxpr::CsvTable("bands", MemoryFile(in_strContents).getPath()));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    try {
        readFile(std::string(in_pData, in_pData + in_uiSize));
    } catch (const Vxpr::Failure& failure) {
        check(*failure.what() != '\0', "a failure says what is wrong");
    }
    return 0;
}
