#pragma once

#include <cstddef>

namespace Velmora::Benchmarks {

/// The plain loop that engineers write to find a tone: one multiplication and two additions a
/// sample, each of which waits for the one before.
///
/// Returns the squared magnitude of the frame's Fourier sum at the frequency that the coefficient,
/// twice the cosine of the turn from sample to sample, stands for.
double computeGoertzel(double in_dCoefficient, const double* in_pX, std::size_t in_uiCount);

} // namespace Velmora::Benchmarks
