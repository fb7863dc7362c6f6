#pragma once

#include <cstddef>

namespace Velmora::Math {

/// A value of the cosine and of the sine.
struct SinusoidValue {
    double cosine;
    double sine;
};

/// The cosine and the sine of a frequency, sampled at instants that are counted in halves of a
/// sample from the middle of a frame. A frame of n samples has the instants 1 - n, 3 - n, ...,
/// n - 1: all even or all odd, and symmetric, so that the cosine is even and the sine odd about the
/// middle and the two are orthogonal over every frame.
///
/// Each value has a relative error of a few units in the last place, the tiny ones next to a zero
/// of the function too, and a zero at exactly a quarter turn is exactly 0: the phase is reduced
/// before anything is rounded. Additions, multiplications, divisions and exact remainders only, in
/// fixed order: the same bits on every processor.
class Sinusoid {
public:
    Sinusoid() = default;

    /// The frequency is above 0 and not above half the sample rate. One below 2^-64 of the sample
    /// rate is taken as that: the plane that its cosine and sine span over any frame is the same in
    /// double precision, and nothing can underflow.
    Sinusoid(std::size_t in_uiSampleRate, double in_dFrequency);

    SinusoidValue at(std::size_t in_uiHalfSamples) const;

private:
    double m_dSampleRate = 1.0;
    double m_dFrequencyHigh = 0.0;
    double m_dFrequencyLow = 0.0;
};

} // namespace Velmora::Math
