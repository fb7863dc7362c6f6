#include "Kernels.h"

#include <array>
#include <utility>

#include "Extremes.h"
#include "ReductionLoop.h"
#include "ScaledSumLoop.h"
#include "Summation.h"

namespace Velmora::Math {

namespace {

/// The loops themselves, compiled for the processor of the function that they are inlined into.
template <class Operation>
[[gnu::always_inline]] inline void forTwo(const double* in_pA, const double* in_pB,
                                          double* out_pResult, std::size_t in_uiCount,
                                          Operation in_Operation) {
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        out_pResult[i] = in_Operation(in_pA[i], in_pB[i]);
    }
}

template <class Operation>
[[gnu::always_inline]] inline void forOne(const double* in_pA, double in_dB, double* out_pResult,
                                          std::size_t in_uiCount, Operation in_Operation) {
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        out_pResult[i] = in_Operation(in_pA[i], in_dB);
    }
}

constexpr auto Plus = [](double in_dA, double in_dB) { return in_dA + in_dB; };
constexpr auto Minus = [](double in_dA, double in_dB) { return in_dA - in_dB; };
constexpr auto Times = [](double in_dA, double in_dB) { return in_dA * in_dB; };
constexpr auto Over = [](double in_dA, double in_dB) { return in_dA / in_dB; };

// One set of functions for a processor, and the width of its registers; the loops are the same in
// all.
// NOLINTBEGIN(bugprone-macro-parentheses)
#define VELMORA_KERNELS(name, attribute, bytes)                                                    \
    attribute void add##name(const double* in_pA, const double* in_pB, double* out_pResult,        \
                             std::size_t in_uiCount) {                                             \
        forTwo(in_pA, in_pB, out_pResult, in_uiCount, Plus);                                       \
    }                                                                                              \
    attribute void subtract##name(const double* in_pA, const double* in_pB, double* out_pResult,   \
                                  std::size_t in_uiCount) {                                        \
        forTwo(in_pA, in_pB, out_pResult, in_uiCount, Minus);                                      \
    }                                                                                              \
    attribute void multiply##name(const double* in_pA, double in_dB, double* out_pResult,          \
                                  std::size_t in_uiCount) {                                        \
        forOne(in_pA, in_dB, out_pResult, in_uiCount, Times);                                      \
    }                                                                                              \
    attribute void divide##name(const double* in_pA, double in_dB, double* out_pResult,            \
                                std::size_t in_uiCount) {                                          \
        forOne(in_pA, in_dB, out_pResult, in_uiCount, Over);                                       \
    }                                                                                              \
    attribute double sum##name(const double* in_pFirst, const double* in_pLast) {                  \
        return sumOf<Term::Value, bytes>(in_pFirst, in_pLast);                                     \
    }                                                                                              \
    attribute double sumOfSquares##name(const double* in_pFirst, const double* in_pLast) {         \
        return sumOf<Term::Square, bytes>(in_pFirst, in_pLast);                                    \
    }                                                                                              \
    attribute double max##name(const double* in_pFirst, const double* in_pLast) {                  \
        return extreme<Extreme::Largest, bytes>(in_pFirst, in_pLast);                              \
    }                                                                                              \
    attribute double min##name(const double* in_pFirst, const double* in_pLast) {                  \
        return extreme<Extreme::Smallest, bytes>(in_pFirst, in_pLast);                             \
    }                                                                                              \
    attribute void correlate##name(const double* in_pFirst, std::size_t in_uiCount,                \
                                   const ToneTables* in_pTables, std::size_t in_uiTones,           \
                                   Correlation* out_pCorrelations) {                               \
        correlateAll<bytes>(in_pFirst, in_uiCount, in_pTables, in_uiTones, Unscaled(),             \
                            out_pCorrelations);                                                    \
    }                                                                                              \
    template <std::size_t uiForm>                                                                  \
    attribute void scaledSum##name(const ScaledSum::Operands& in_Operands) {                       \
        computeScaledSums<uiForm, bytes>(in_Operands);                                             \
    }                                                                                              \
    template <std::size_t... uiForms>                                                              \
    constexpr auto scaledSums##name(std::index_sequence<uiForms...>) {                             \
        return std::array<Kernels::OfScaledSum, ScaledSumForms>{&scaledSum##name<uiForms>...};     \
    }                                                                                              \
    template <std::size_t uiSet>                                                                   \
    attribute void reduce##name(const double* in_pFirst, const double* in_pLast,                   \
                                Reductions::Results& out_Results) {                                \
        reduce<uiSet, bytes>(in_pFirst, in_pLast, out_Results);                                    \
    }                                                                                              \
    template <std::size_t... uiSets>                                                               \
    constexpr auto reductions##name(std::index_sequence<uiSets...>) {                              \
        return std::array<Kernels::OfReductions, ReductionSets>{&reduce##name<uiSets>...};         \
    }                                                                                              \
    constexpr Kernels name##Kernels{add##name,                                                     \
                                    subtract##name,                                                \
                                    multiply##name,                                                \
                                    divide##name,                                                  \
                                    sum##name,                                                     \
                                    sumOfSquares##name,                                            \
                                    max##name,                                                     \
                                    min##name,                                                     \
                                    correlate##name,                                               \
                                    scaledSums##name(std::make_index_sequence<ScaledSumForms>()),  \
                                    reductions##name(std::make_index_sequence<ReductionSets>())};

// NOLINTEND(bugprone-macro-parentheses)

VELMORA_KERNELS(Baseline, , 16)
#if defined(__x86_64__)
VELMORA_KERNELS(Avx2, __attribute__((target("avx2"))), 32)
VELMORA_KERNELS(Avx512, __attribute__((target("avx512f"))), 64)
#endif

#undef VELMORA_KERNELS

} // namespace

std::vector<const Kernels*> listKernels() {
    std::vector<const Kernels*> vKernels{&BaselineKernels};
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) {
        vKernels.push_back(&Avx2Kernels);
    }
    if (__builtin_cpu_supports("avx512f")) {
        vKernels.push_back(&Avx512Kernels);
    }
#endif
    return vKernels;
}

// The bits are the same in all forms: a static initialiser that computes before this one has run
// is served by the first.
const Kernels* g_pKernels = &BaselineKernels;

namespace {

[[maybe_unused]] const bool g_bChosen = (g_pKernels = listKernels().back(), true);

} // namespace

} // namespace Velmora::Math
