#pragma once

#include <velmora/Export.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/SignalFeatureWithMemory.h>
#include <velmora/math/SignalFeatureWithParameters.h>

#include <cstddef>

namespace Velmora::Math {

/// The last values that came in over all frames, oldest first, up to the size of the window.
///
/// The result has fewer values until the window is full. An empty frame gives the window as it
/// stands; a NaN is a value like any other. `compute` returns false before a size has been
/// configured.
///
/// The window is a ring in one block. It takes room only as values come in, and none at all once
/// it is full: a double-ended queue would free and allocate its pieces while it slides.
class VELMORA_EXPORT SlidingWindowFeature : public virtual SignalFeatureWithMemory,
                                            public virtual SignalFeatureWithParameters {
public:
    SlidingWindowFeature();
    Cloneable* clone() const override;
    bool compute(const DoubleVector& in_vInput, DoubleVector& out_vResult) override;

    /// Reads "slidingwindow.WindowSize": an integer above 0, the number of values. A new size
    /// empties the window.
    bool configure(const ROConfiguration& in_config) override;

    bool reset() override;

protected:
    /// Lets the values of a frame slide into the window.
    void slide_i(const DoubleVector& in_vInput);

    /// Writes the values of the window, oldest first, from the given place on.
    void copyWindow_i(double* out_pTo) const;

    /// Sets a size and empties the window, unless it has that size already.
    void setWindowSize_i(std::size_t in_uiWindowSize);

    /// 0 until a size has been configured.
    std::size_t m_windowSize = 0;

    /// The place of the oldest value in the ring; 0 until the window is full.
    std::size_t m_oldest = 0;

    /// The values; never more than the size of the window.
    DoubleVector m_window;
};

} // namespace Velmora::Math
