#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Vxpr {

/// What a run goes along: frames, one after the other, each with a time.
class FrameSource {
public:
    virtual ~FrameSource() = default;

    /// Moves to the next frame; false behind the last. Throws a Failure if it can't be had.
    virtual bool next() = 0;

    /// The start of the current frame in seconds.
    virtual double getTime() const = 0;

    /// The samples of the current frame, in the same place for every frame; null if there are no
    /// samples.
    virtual const double* getSamples() const = 0;

    /// Samples of a frame.
    virtual std::size_t getFrameSize() const = 0;

    /// The length of all of it in seconds, as far as it is known.
    virtual std::optional<double> getLength() const = 0;

    /// Whether the next frame may come as late as it happens.
    virtual bool isLive() const = 0;

    /// Told behind the last frame: throws a Failure if the whole of it gave nothing to evaluate.
    virtual void checkEnd(std::uint64_t in_uiFrames) const = 0;
};

} // namespace Vxpr
