#include "References.h"

#include <algorithm>
#include <limits>

#include "WideDouble.h"

namespace Velmora::Benchmarks {

namespace {

/// So many independent chains of additions hide the time that each takes.
constexpr std::size_t CHAINS = 4;
constexpr std::size_t BLOCK = CHAINS * WIDTH;

double largestOf(const Wide& in_Value) {
    double dLargest = in_Value[0];
    for (std::size_t i = 1; i != WIDTH; ++i) {
        dLargest = std::max(dLargest, in_Value[i]);
    }
    return dLargest;
}

Wide larger(const Wide& in_A, const Wide& in_B) {
    return in_A > in_B ? in_A : in_B;
}

/// The sum of what the function makes of each element. It is called with vectors and with doubles.
template <class Function>
double sumOf(const double* in_pX, std::size_t in_uiCount, Function in_Function) {
    Wide chains[CHAINS] = {};
    std::size_t i = 0;
    for (; i + BLOCK <= in_uiCount; i += BLOCK) {
        for (std::size_t chain = 0; chain != CHAINS; ++chain) {
            chains[chain] += in_Function(load(in_pX + i + chain * WIDTH));
        }
    }
    double dSum = addUp((chains[0] + chains[1]) + (chains[2] + chains[3]));
    for (; i != in_uiCount; ++i) {
        dSum += in_Function(in_pX[i]);
    }
    return dSum;
}

constexpr auto Itself = [](const auto& in_X) { return in_X; };
constexpr auto Square = [](const auto& in_X) { return in_X * in_X; };

template <class Last>
void computeElements(const Scalars& in_Scalars, const double* __restrict in_pX,
                     std::size_t in_uiCount, double* __restrict out_pY, Last in_Last) {
    const Scalars scalars = in_Scalars;
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        const double x = in_pX[i];
        out_pY[i] =
            in_Last(((scalars.m_dA * x + scalars.m_dB * x) - scalars.m_dC * x), scalars.m_dD);
    }
}

/// One operator: a loop that is called for itself, as a library of vector operations has it.
template <class Operator>
[[gnu::noinline]] void applyToTwo(const double* __restrict in_pA, const double* __restrict in_pB,
                                  std::size_t in_uiCount, double* __restrict out_pResult,
                                  Operator in_Operator) {
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        out_pResult[i] = in_Operator(in_pA[i], in_pB[i]);
    }
}

/// The same in place: the result replaces the first side.
template <class Operator>
[[gnu::noinline]] void applyInPlace(double* __restrict inout_pA, const double* __restrict in_pB,
                                    std::size_t in_uiCount, Operator in_Operator) {
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        inout_pA[i] = in_Operator(inout_pA[i], in_pB[i]);
    }
}

template <class Operator>
[[gnu::noinline]] void applyScalar(const double* __restrict in_pA, double in_dB,
                                   std::size_t in_uiCount, double* __restrict out_pResult,
                                   Operator in_Operator) {
    for (std::size_t i = 0; i < in_uiCount; ++i) {
        out_pResult[i] = in_Operator(in_pA[i], in_dB);
    }
}

constexpr auto Plus = [](double in_dA, double in_dB) { return in_dA + in_dB; };
constexpr auto Minus = [](double in_dA, double in_dB) { return in_dA - in_dB; };
constexpr auto Times = [](double in_dA, double in_dB) { return in_dA * in_dB; };
constexpr auto Over = [](double in_dA, double in_dB) { return in_dA / in_dB; };

void scaleAll(double in_dSum, SharedFeatures& out_Features) {
    for (std::size_t i = 0; i != SHARING_FEATURES; ++i) {
        out_Features[i] = in_dSum * static_cast<double>(i + 1);
    }
}

} // namespace

void computeElementsFused(Ending in_eEnding, const Scalars& in_Scalars, const double* in_pX,
                          std::size_t in_uiCount, double* out_pY) {
    if (in_eEnding == Ending::Divide) {
        computeElements(in_Scalars, in_pX, in_uiCount, out_pY, Over);
    } else {
        computeElements(in_Scalars, in_pX, in_uiCount, out_pY, Times);
    }
}

void computeElementsUnfused(Ending in_eEnding, const Scalars& in_Scalars, const double* in_pX,
                            std::size_t in_uiCount, const Temporaries& in_Temporaries,
                            double* out_pY) {
    double* const pFirst = in_Temporaries.m_pFirst;
    double* const pSecond = in_Temporaries.m_pSecond;
    applyScalar(in_pX, in_Scalars.m_dA, in_uiCount, pFirst, Times);
    applyScalar(in_pX, in_Scalars.m_dB, in_uiCount, pSecond, Times);
    applyInPlace(pFirst, pSecond, in_uiCount, Plus);
    applyScalar(in_pX, in_Scalars.m_dC, in_uiCount, pSecond, Times);
    applyInPlace(pFirst, pSecond, in_uiCount, Minus);
    if (in_eEnding == Ending::Divide) {
        applyScalar(pFirst, in_Scalars.m_dD, in_uiCount, out_pY, Over);
    } else {
        applyScalar(pFirst, in_Scalars.m_dD, in_uiCount, out_pY, Times);
    }
}

void summarizeFused(const double* in_pX, std::size_t in_uiCount, Summary& out_Summary) {
    Wide sums[CHAINS] = {};
    Wide squares[CHAINS] = {};
    Wide largest[CHAINS];
    for (Wide& value : largest) {
        value = Wide{} - std::numeric_limits<double>::infinity();
    }
    std::size_t i = 0;
    for (; i + BLOCK <= in_uiCount; i += BLOCK) {
        for (std::size_t chain = 0; chain != CHAINS; ++chain) {
            const Wide x = load(in_pX + i + chain * WIDTH);
            sums[chain] += x;
            squares[chain] += x * x;
            largest[chain] = larger(largest[chain], x);
        }
    }
    double dSum = addUp((sums[0] + sums[1]) + (sums[2] + sums[3]));
    double dSquares = addUp((squares[0] + squares[1]) + (squares[2] + squares[3]));
    double dLargest =
        largestOf(larger(larger(largest[0], largest[1]), larger(largest[2], largest[3])));
    for (; i != in_uiCount; ++i) {
        dSum += in_pX[i];
        dSquares += in_pX[i] * in_pX[i];
        dLargest = std::max(dLargest, in_pX[i]);
    }
    out_Summary = {dSum, dLargest, dSquares / static_cast<double>(in_uiCount)};
}

void summarizeUnfused(const double* in_pX, std::size_t in_uiCount, Summary& out_Summary) {
    out_Summary[0] = sumOf(in_pX, in_uiCount, Itself);

    Wide largest[CHAINS];
    for (Wide& value : largest) {
        value = Wide{} - std::numeric_limits<double>::infinity();
    }
    std::size_t i = 0;
    for (; i + BLOCK <= in_uiCount; i += BLOCK) {
        for (std::size_t chain = 0; chain != CHAINS; ++chain) {
            largest[chain] = larger(largest[chain], load(in_pX + i + chain * WIDTH));
        }
    }
    out_Summary[1] =
        largestOf(larger(larger(largest[0], largest[1]), larger(largest[2], largest[3])));
    for (; i != in_uiCount; ++i) {
        out_Summary[1] = std::max(out_Summary[1], in_pX[i]);
    }

    out_Summary[2] = sumOf(in_pX, in_uiCount, Square) / static_cast<double>(in_uiCount);
}

void computeSharedFused(const double* in_pX, std::size_t in_uiCount, SharedFeatures& out_Features) {
    const double dSum =
        sumOf(in_pX, in_uiCount, [](const auto& in_X) { return in_X * 2.0 + in_X; });
    scaleAll(dSum, out_Features);
}

void computeSharedUnfused(const double* in_pX, std::size_t in_uiCount,
                          const Temporaries& in_Temporaries, SharedFeatures& out_Features) {
    double* const pFirst = in_Temporaries.m_pFirst;
    double* const pSecond = in_Temporaries.m_pSecond;
    applyScalar(in_pX, 2.0, in_uiCount, pFirst, Times);
    applyToTwo(pFirst, in_pX, in_uiCount, pSecond, Plus);
    scaleAll(sumOf(pSecond, in_uiCount, Itself), out_Features);
}

} // namespace Velmora::Benchmarks
