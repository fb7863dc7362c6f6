#include "RecordingFrames.h"

#include "Failure.h"
#include "NumberText.h"
#include "TextList.h"

namespace Vxpr {

namespace {

/// A frame is held in memory, a hop isn't.
constexpr std::size_t LARGEST_FRAME = std::size_t(1) << 24;
constexpr std::size_t LARGEST_HOP = std::size_t(1) << 48;

std::unique_ptr<Resampler> makeResampler(Recording& in_Recording, int in_iSampleRate) {
    if (in_iSampleRate == 0 || in_iSampleRate == in_Recording.getSampleRate()) {
        return nullptr;
    }
    return std::make_unique<Resampler>(in_Recording, in_iSampleRate);
}

FrameCutter::Layout makeLayout(const RecordingFrames::Options& in_Options, int in_iSampleRate) {
    FrameCutter::Layout layout;
    layout.m_uiFrame = in_Options.m_FrameSize.getSamples(in_iSampleRate, LARGEST_FRAME);
    layout.m_uiHop = in_Options.m_HopSize
                         ? in_Options.m_HopSize->getSamples(in_iSampleRate, LARGEST_HOP)
                         : layout.m_uiFrame;
    layout.m_bPad = in_Options.m_bPad;
    return layout;
}

} // namespace

RecordingFrames::RecordingFrames(const Options& in_Options)
    : m_Recording(in_Options.m_Recording),
      m_pResampler(makeResampler(m_Recording, in_Options.m_iSampleRate)),
      m_Source(m_pResampler ? static_cast<SampleSource&>(*m_pResampler) : m_Recording),
      m_Layout(makeLayout(in_Options, m_Source.getSampleRate())),
      m_Cutter(m_Source, m_Layout),
      m_vFrame(m_Layout.m_uiFrame) {}

bool RecordingFrames::next() {
    return m_Cutter.next(m_vFrame.data());
}

double RecordingFrames::getTime() const {
    const std::uint64_t uiStart = (m_Cutter.getCount() - 1) * m_Layout.m_uiHop;
    return static_cast<double>(uiStart) / m_Source.getSampleRate();
}

std::optional<double> RecordingFrames::getLength() const {
    const auto samples = m_Source.getLength();
    if (!samples) {
        return std::nullopt;
    }
    return static_cast<double>(*samples) / m_Source.getSampleRate();
}

void RecordingFrames::checkEnd(std::uint64_t in_uiFrames) const {
    if (in_uiFrames > 0) {
        return;
    }
    const std::uint64_t uiSamples = m_Cutter.getSampleCount();
    if (uiSamples == 0) {
        throw Failure::ofData(m_Recording.getName() +
                              " holds no samples; check how it was recorded");
    }
    throw Failure::ofData(m_Recording.getName() + " has " + count(uiSamples, "sample") +
                          ", fewer than a frame of " + std::to_string(m_vFrame.size()) +
                          "; choose a smaller --frame, or --pad to fill up the frame with silence");
}

} // namespace Vxpr
