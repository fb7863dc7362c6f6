#pragma once

#include "SampleSource.h"

#include <vector>

namespace Vxpr {

/// Cuts a sound into frames of one size whose starts lie one hop apart, over or under the size.
///
/// What the last whole frame leaves over is dropped, or with padding comes as one more frame whose
/// end is silence.
class FrameCutter {
public:
    struct Layout {
        std::size_t m_uiFrame = 0; ///< samples of a frame
        std::size_t m_uiHop = 0;   ///< samples from the start of a frame to the start of the next
        bool m_bPad = false;
    };

    /// in_Source must outlive the cutter.
    FrameCutter(SampleSource& in_Source, const Layout& in_Layout);

    /// Writes the next frame to out_pSamples, which has room for it; false if there is none.
    bool next(double* out_pSamples);

    /// The number of frames that next() has given.
    std::uint64_t getCount() const { return m_uiCount; }

    /// The samples that have come from the source.
    std::uint64_t getSampleCount() const { return m_uiSamples; }

private:
    std::size_t getAvailable() const { return m_uiEnd - m_uiBegin; }
    void fill(std::size_t in_uiNeeded);
    bool skipHop();

    SampleSource& m_Source;
    Layout m_Layout;
    std::vector<double> m_vBuffer;
    std::size_t m_uiBegin = 0;
    std::size_t m_uiEnd = 0;
    std::uint64_t m_uiCount = 0;
    std::uint64_t m_uiSamples = 0;
    bool m_bSourceEnded = false;
    bool m_bPadded = false;
};

} // namespace Vxpr
