#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "Correlation.h"
#include "ReductionLoop.h"
#include "ScaledSumLoop.h"

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
    using OfTones = void (*)(const double* in_pFirst, std::size_t in_uiCount,
                             const ToneTables* in_pTables, std::size_t in_uiTones,
                             Correlation* out_pCorrelations);
    using OfScaledSum = void (*)(const ScaledSum::Operands&);
    using OfReductions = void (*)(const double* in_pFirst, const double* in_pLast,
                                  Reductions::Results& out_Results);

    OfTwo m_Add;
    OfTwo m_Subtract;
    OfOne m_Multiply;
    OfOne m_Divide;
    OfAll m_Sum;
    OfAll m_SumOfSquares;
    OfAll m_Max;
    OfAll m_Min;
    OfTones m_Correlate;
    /// By the number of the form.
    std::array<OfScaledSum, ScaledSumForms> m_ScaledSums;
    /// By the set of kinds.
    std::array<OfReductions, ReductionSets> m_Reductions;
};

/// The forms that this processor can run, the best one last.
std::vector<const Kernels*> listKernels();

/// The best form for this processor, once the library is loaded.
extern const Kernels* g_pKernels;
inline const Kernels& kernels() {
    return *g_pKernels;
}

} // namespace Velmora::Math
