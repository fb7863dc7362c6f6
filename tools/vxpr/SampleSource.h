#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Vxpr {

/// One channel of sound, read once from its start to its end.
class SampleSource {
public:
    virtual ~SampleSource() = default;

    /// Fills out_pSamples and returns how many samples came, fewer than in_uiCount only at the end.
    /// Throws a Failure when the sound can't be read any further.
    virtual std::size_t read(double* out_pSamples, std::size_t in_uiCount) = 0;

    /// Samples a second.
    virtual int getSampleRate() const = 0;

    /// The number of samples as far as it is known beforehand; for showing progress only.
    virtual std::optional<std::uint64_t> getLength() const = 0;

    /// Whether samples may arrive as slowly as they are recorded, so that nobody should ask for
    /// more of them than the next result needs.
    virtual bool isLive() const = 0;
};

} // namespace Vxpr
