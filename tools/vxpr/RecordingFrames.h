#pragma once

#include "FrameCutter.h"
#include "FrameSize.h"
#include "FrameSource.h"
#include "Recording.h"
#include "Resampler.h"

#include <memory>
#include <vector>

namespace Vxpr {

/// The frames of a recording.
class RecordingFrames : public FrameSource {
public:
    struct Options {
        Recording::Options m_Recording;
        int m_iSampleRate = 0; ///< to resample to; 0 leaves the recording's
        FrameSize m_FrameSize;
        std::optional<FrameSize> m_HopSize; ///< the frame's size if it isn't given
        bool m_bPad = false;
    };

    explicit RecordingFrames(const Options& in_Options);

    bool next() override;
    double getTime() const override;
    const double* getSamples() const override { return m_vFrame.data(); }
    std::size_t getFrameSize() const override { return m_vFrame.size(); }
    std::optional<double> getLength() const override;
    bool isLive() const override { return m_Recording.isLive(); }
    void checkEnd(std::uint64_t in_uiFrames) const override;

    /// As Recording::getDescriptor.
    int getDescriptor() const { return m_Recording.getDescriptor(); }

    /// As Recording::describeTruncation.
    std::string describeTruncation() const { return m_Recording.describeTruncation(); }

private:
    Recording m_Recording;
    std::unique_ptr<Resampler> m_pResampler;
    SampleSource& m_Source;
    FrameCutter::Layout m_Layout;
    FrameCutter m_Cutter;
    std::vector<double> m_vFrame;
};

} // namespace Vxpr
