#pragma once

#include "FrameSource.h"

namespace Vxpr {

/// Frames without a recording: they go on for as long as the tables of the inputs do.
class TableFrames : public FrameSource {
public:
    /// in_dHop is the time from a frame to the next in seconds.
    explicit TableFrames(double in_dHop) : m_dHop(in_dHop) {}

    bool next() override {
        ++m_uiCount;
        return true;
    }
    double getTime() const override { return static_cast<double>(m_uiCount - 1) * m_dHop; }
    const double* getSamples() const override { return nullptr; }
    std::size_t getFrameSize() const override { return 0; }
    std::optional<double> getLength() const override { return std::nullopt; }
    bool isLive() const override { return false; }
    void checkEnd(std::uint64_t in_uiFrames) const override;

private:
    double m_dHop;
    std::uint64_t m_uiCount = 0;
};

} // namespace Vxpr
