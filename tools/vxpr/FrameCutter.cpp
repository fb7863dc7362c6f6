#include "FrameCutter.h"

#include <algorithm>
#include <cstring>

namespace Vxpr {

namespace {

/// Reading ahead saves calls; a sound that is being recorded must not be waited for.
constexpr std::size_t READ_AHEAD = 16384;

} // namespace

FrameCutter::FrameCutter(SampleSource& in_Source, const Layout& in_Layout)
    : m_Source(in_Source),
      m_Layout(in_Layout),
      m_vBuffer(in_Layout.m_uiFrame + (in_Source.isLive() ? 0 : READ_AHEAD)) {}

void FrameCutter::fill(std::size_t in_uiNeeded) {
    if (getAvailable() >= in_uiNeeded || m_bSourceEnded) {
        return;
    }
    std::memmove(m_vBuffer.data(), m_vBuffer.data() + m_uiBegin, getAvailable() * sizeof(double));
    m_uiEnd -= m_uiBegin;
    m_uiBegin = 0;
    const std::size_t uiWanted =
        m_Source.isLive() ? in_uiNeeded - m_uiEnd : m_vBuffer.size() - m_uiEnd;
    const std::size_t uiRead = m_Source.read(m_vBuffer.data() + m_uiEnd, uiWanted);
    m_bSourceEnded = uiRead < uiWanted;
    m_uiSamples += uiRead;
    m_uiEnd += uiRead;
}

/// Moves to the start of the next frame; false if the sound ends before it.
bool FrameCutter::skipHop() {
    std::size_t uiLeft = m_Layout.m_uiHop;
    while (uiLeft > 0) {
        fill(std::min(uiLeft, m_Layout.m_uiFrame));
        const std::size_t uiStep = std::min(uiLeft, getAvailable());
        if (uiStep == 0) {
            return false;
        }
        m_uiBegin += uiStep;
        uiLeft -= uiStep;
    }
    return true;
}

bool FrameCutter::next(double* out_pSamples) {
    const std::size_t uiFrame = m_Layout.m_uiFrame;
    if (m_bPadded || (m_uiCount > 0 && !skipHop())) {
        return false;
    }
    fill(uiFrame);
    const std::size_t uiAvailable = std::min(getAvailable(), uiFrame);
    if (uiAvailable < uiFrame) {
        // With frames that overlap, the frame before may have shown all of these samples.
        const std::size_t uiSeen =
            m_uiCount > 0 && uiFrame > m_Layout.m_uiHop ? uiFrame - m_Layout.m_uiHop : 0;
        if (!m_Layout.m_bPad || uiAvailable <= uiSeen) {
            return false;
        }
        m_bPadded = true;
    }
    std::memcpy(out_pSamples, m_vBuffer.data() + m_uiBegin, uiAvailable * sizeof(double));
    std::fill(out_pSamples + uiAvailable, out_pSamples + uiFrame, 0.0);
    ++m_uiCount;
    return true;
}

} // namespace Vxpr
