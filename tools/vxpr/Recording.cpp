#include "Recording.h"

#include "Failure.h"
#include "TextList.h"

#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace Vxpr {

namespace {

/// Writers that can't go back to correct the header of a pipe put the largest numbers there.
constexpr std::uint64_t LARGEST_HONEST_SIZE = 0x7fff0000;

/// How many values of several channels are held at a time: a header may claim a thousand channels.
constexpr std::size_t INTERLEAVED_BLOCK = 65536;

/// What libsndfile reports where a header leaves the length open is near the largest number.
constexpr std::uint64_t LONGEST_SOUND = std::uint64_t(1) << 60;

std::string quote(const std::string& in_strText) {
    return "'" + in_strText + "'";
}

/// What libsndfile noted while it read the header.
std::string readLog(SNDFILE* in_pSound) {
    std::array<char, 4096> log{};
    sf_command(in_pSound, SFC_GET_LOG_INFO, log.data(), static_cast<int>(log.size()));
    return log.data();
}

/// The bytes of sound that the header promises where the file has fewer, 0 where it has them all.
/// libsndfile corrects the length without an error and only notes it.
std::uint64_t findMissingBytes(const std::string& in_strLog) {
    for (const char* szChunk : {"\ndata :", "\n SSND :", "\n  Data Size   :"}) {
        const std::size_t uiChunk = in_strLog.find(szChunk);
        if (uiChunk == std::string::npos) {
            continue;
        }
        char* pEnd = nullptr;
        const char* pNumber = in_strLog.c_str() + uiChunk + std::strlen(szChunk);
        const std::uint64_t uiPromised = std::strtoull(pNumber, &pEnd, 10);
        constexpr char CORRECTION[] = " (should be ";
        if (std::strncmp(pEnd, CORRECTION, sizeof CORRECTION - 1) != 0) {
            continue;
        }
        const std::uint64_t uiThere = std::strtoull(pEnd + sizeof CORRECTION - 1, nullptr, 10);
        if (uiPromised > uiThere && uiPromised < LARGEST_HONEST_SIZE) {
            return uiPromised - uiThere;
        }
    }
    return 0;
}

std::size_t countBytesPerFrame(const SF_INFO& in_Info) {
    std::size_t uiBytes = 0;
    switch (in_Info.format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
        uiBytes = 1;
        break;
    case SF_FORMAT_PCM_16:
        uiBytes = 2;
        break;
    case SF_FORMAT_PCM_24:
        uiBytes = 3;
        break;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_FLOAT:
        uiBytes = 4;
        break;
    case SF_FORMAT_DOUBLE:
        uiBytes = 8;
        break;
    default:
        return 0;
    }
    return uiBytes * static_cast<std::size_t>(in_Info.channels);
}

} // namespace

Recording::Recording(const Options& in_Options)
    : m_strName(in_Options.m_strPath == "-" ? "the standard input" : quote(in_Options.m_strPath)) {
    openFile(in_Options);
    try {
        readHeader(in_Options);
        chooseChannel(in_Options.m_iChannel);
    } catch (...) {
        sf_close(m_pSound);
        close(m_iFile);
        throw;
    }
}

Recording::~Recording() {
    sf_close(m_pSound);
    close(m_iFile);
}

void Recording::openFile(const Options& in_Options) {
    // Its own descriptor, so that closing it leaves the standard input alone.
    m_iFile = in_Options.m_strPath == "-"
                  ? dup(STDIN_FILENO)
                  : open(in_Options.m_strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (m_iFile < 0) {
        throw Failure::ofData("can't open the recording " + m_strName + ": " +
                              std::strerror(errno) + "; check the path after -i");
    }
    struct stat status {};
    if (fstat(m_iFile, &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            close(m_iFile);
            throw Failure::ofData(m_strName + " is a directory; name the recording in it");
        }
        m_bLive = !S_ISREG(status.st_mode);
        m_uiFileSize = m_bLive ? 0 : static_cast<std::uint64_t>(status.st_size);
    }
}

void Recording::readHeader(const Options& in_Options) {
    SF_INFO info{};
    if (in_Options.m_RawFormat) {
        info.format = SF_FORMAT_RAW | in_Options.m_RawFormat->m_iEncoding;
        info.samplerate = in_Options.m_RawFormat->m_iSampleRate;
        info.channels = in_Options.m_RawFormat->m_iChannels;
    }
    m_pSound = sf_open_fd(m_iFile, SFM_READ, &info, SF_FALSE);
    if (m_pSound == nullptr) {
        throw Failure::ofData(
            m_strName + " is no recording that can be read (" + sf_strerror(nullptr) + "); " +
            (m_bLive ? "a pipe must bring a WAV file, or samples without a header with --raw"
                     : "WAV, FLAC and Ogg files are understood, and samples without a header with "
                       "--raw"));
    }
    m_iSampleRate = info.samplerate;
    m_uiChannels = static_cast<std::size_t>(info.channels);
    const auto uiFrames = static_cast<std::uint64_t>(std::max<sf_count_t>(info.frames, 0));
    const std::size_t uiFrameSize = countBytesPerFrame(info);
    m_bLengthKnown = m_bLive ? !in_Options.m_RawFormat && uiFrameSize != 0 &&
                                   uiFrames < LARGEST_HONEST_SIZE / uiFrameSize
                             : uiFrames < LONGEST_SOUND;
    m_uiLength = uiFrames;
    if (in_Options.m_RawFormat && uiFrameSize != 0) {
        m_uiBytesLeftOver = static_cast<std::size_t>(m_uiFileSize % uiFrameSize);
    }
    if (m_bLengthKnown && uiFrameSize != 0) {
        // The last frame that is there may be there in part.
        m_uiLength += (findMissingBytes(readLog(m_pSound)) + uiFrameSize - 1) / uiFrameSize;
    }
}

void Recording::chooseChannel(int in_iChannel) {
    if (in_iChannel > static_cast<int>(m_uiChannels)) {
        throw Failure::ofData(m_strName + " has " + std::to_string(m_uiChannels) +
                              (m_uiChannels == 1 ? " channel" : " channels") +
                              ", so there is no --channel " + std::to_string(in_iChannel) +
                              "; channels count from 1");
    }
    m_iChannel = in_iChannel;
}

std::optional<std::uint64_t> Recording::getLength() const {
    return m_bLengthKnown ? std::optional<std::uint64_t>(m_uiLength) : std::nullopt;
}

std::size_t Recording::read(double* out_pSamples, std::size_t in_uiCount) {
    const std::size_t uiBlock =
        m_uiChannels > 1 ? std::max<std::size_t>(INTERLEAVED_BLOCK / m_uiChannels, 1) : in_uiCount;
    std::size_t uiTotal = 0;
    while (uiTotal < in_uiCount) {
        const std::size_t uiWanted = std::min(in_uiCount - uiTotal, uiBlock);
        const std::size_t uiRead = readBlock(out_pSamples + uiTotal, uiWanted);
        uiTotal += uiRead;
        if (uiRead < uiWanted) {
            break;
        }
    }
    return uiTotal;
}

std::size_t Recording::readBlock(double* out_pSamples, std::size_t in_uiCount) {
    double* pTarget = out_pSamples;
    if (m_uiChannels > 1) {
        m_vInterleaved.resize(in_uiCount * m_uiChannels);
        pTarget = m_vInterleaved.data();
    }
    const sf_count_t iRead =
        sf_readf_double(m_pSound, pTarget, static_cast<sf_count_t>(in_uiCount));
    const auto uiRead = static_cast<std::size_t>(std::max<sf_count_t>(iRead, 0));
    if (uiRead < in_uiCount && sf_error(m_pSound) != SF_ERR_NO_ERROR) {
        throw Failure::ofData("can't read " + m_strName + " any further (" + sf_strerror(m_pSound) +
                              "): the file is damaged");
    }
    if (m_uiChannels > 1) {
        mixDown(out_pSamples, uiRead);
    }
    m_uiPosition += uiRead;
    return uiRead;
}

void Recording::mixDown(double* out_pSamples, std::size_t in_uiCount) const {
    const double* pFrame = m_vInterleaved.data();
    for (std::size_t uiSample = 0; uiSample < in_uiCount; ++uiSample, pFrame += m_uiChannels) {
        if (m_iChannel > 0) {
            out_pSamples[uiSample] = pFrame[m_iChannel - 1];
            continue;
        }
        double dSum = 0.0;
        for (std::size_t uiChannel = 0; uiChannel < m_uiChannels; ++uiChannel) {
            dSum += pFrame[uiChannel];
        }
        out_pSamples[uiSample] = dSum / static_cast<double>(m_uiChannels);
    }
}

std::string Recording::describeTruncation() const {
    if (m_uiBytesLeftOver != 0) {
        return m_strName + " ends within a sample, of which there " +
               (m_uiBytesLeftOver == 1 ? "is " : "are ") + count(m_uiBytesLeftOver, "byte") +
               "; check the format after --raw";
    }
    if (!m_bLengthKnown || m_uiPosition >= m_uiLength) {
        return {};
    }
    return m_strName + " is truncated: its header promises " + std::to_string(m_uiLength) +
           " samples, but it ends after " + std::to_string(m_uiPosition);
}

} // namespace Vxpr
