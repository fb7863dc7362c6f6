#pragma once

#include <velmora/math/DoubleVector.h>

#include <cstddef>

namespace Velmora::Math {

class Sinusoid;

/// The filters that fit a window of n samples with A cos + B sin of a carrier plus a constant, by
/// least squares with the weight 1 - u^2. A and B are parabolas in u, the time from the middle of
/// the window in units of (n + 1) / 2 samples. One filter gives one coefficient.
///
/// Cosine and sine are symmetric about the middle, so that each filter is even or odd: it is kept
/// from the middle on, and works on the sums, or on the differences, of the samples at equal
/// distance from the middle. The middle sample of an odd window is its own partner.
enum QuadratureRow : std::size_t {
    CosineConstant = 0, // even
    SineConstant = 1,   // odd
    CosineLinear = 2,   // odd
    SineLinear = 3,     // even
    CosineSquare = 4,   // even
    SineSquare = 5,     // odd
    QuadratureRows = 6,
};

/// The number of weights of a row.
constexpr std::size_t quadratureRowSize(std::size_t in_uiWindow) {
    return (in_uiWindow + 1) / 2;
}

/// Replaces the vector by the rows for a window, one behind the other. Without parabolas A and B
/// are constant, there is no constant beside them, and the rows of the other coefficients are 0.
/// What the samples of the window can't tell apart gets a coefficient of 0.
void makeQuadratureFilters(const Sinusoid& in_carrier, std::size_t in_uiWindow, bool in_bParabolas,
                           DoubleVector& out_vRows);

} // namespace Velmora::Math
