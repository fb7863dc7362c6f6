#pragma once

#include <cstddef>

namespace Velmora::Math {

/// The loops over vectors that a frame consists of, in the form that suits the processor.
///
/// All forms give the same bits: each element is computed on its own, and sums have a fixed number
/// of partial sums (see Summation.h).
struct Kernels {
    using OfTwo = void (*)(const double* in_pA, const double* in_pB, double* out_pResult,
                           std::size_t in_uiCount);
    using OfOne = void (*)(const double* in_pA, double in_dB, double* out_pResult,
                           std::size_t in_uiCount);
    using OfAll = double (*)(const double* in_pFirst, const double* in_pLast);

    OfTwo m_Add;
    OfTwo m_Subtract;
    OfOne m_Multiply;
    OfOne m_Divide;
    OfAll m_Sum;
    OfAll m_SumOfSquares;
};

/// The best form for this processor, found once.
const Kernels& kernels();

} // namespace Velmora::Math
