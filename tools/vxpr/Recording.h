#pragma once

#include "RawFormat.h"
#include "SampleSource.h"

#include <memory>
#include <string>
#include <vector>

struct sf_private_tag;

namespace Vxpr {

/// A sound file, or a sound that comes through a pipe, as one channel of samples from -1 to 1.
///
/// Several channels are mixed down to their mean unless one is chosen. Memory doesn't depend on the
/// length of the sound.
class Recording : public SampleSource {
public:
    struct Options {
        std::string m_strPath;                ///< "-" is the standard input
        std::optional<RawFormat> m_RawFormat; ///< of a sound without a header
        int m_iChannel = 0;                   ///< from 1; 0 mixes all of them
    };

    /// Throws a Failure that says what is wrong with the file and what helps.
    explicit Recording(const Options& in_Options);
    ~Recording() override;
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    std::size_t read(double* out_pSamples, std::size_t in_uiCount) override;
    int getSampleRate() const override { return m_iSampleRate; }
    std::optional<std::uint64_t> getLength() const override;
    bool isLive() const override { return m_bLive; }

    /// What it is read from.
    int getDescriptor() const { return m_iFile; }

    /// The samples read so far.
    std::uint64_t getPosition() const { return m_uiPosition; }

    /// What is wrong with the end of the sound once all of it has been read: empty if the sound is
    /// as long as its header promises, and has no part of a sample at its end.
    std::string describeTruncation() const;

    /// The name to call the recording by in messages.
    const std::string& getName() const { return m_strName; }

private:
    void openFile(const Options& in_Options);
    void readHeader(const Options& in_Options);
    void chooseChannel(int in_iChannel);
    std::size_t readBlock(double* out_pSamples, std::size_t in_uiCount);
    void mixDown(double* out_pSamples, std::size_t in_uiCount) const;

    std::string m_strName;
    int m_iFile = -1;
    sf_private_tag* m_pSound = nullptr;
    int m_iSampleRate = 0;
    std::size_t m_uiChannels = 0;
    int m_iChannel = 0;
    bool m_bLive = false;
    bool m_bLengthKnown = false;
    std::uint64_t m_uiFileSize = 0; ///< 0 if it is live
    std::uint64_t m_uiLength = 0;   ///< the length that the header promises
    std::uint64_t m_uiPosition = 0;
    std::size_t m_uiBytesLeftOver = 0; ///< of a sound without a header, behind its last sample
    std::vector<double> m_vInterleaved;
};

} // namespace Vxpr
