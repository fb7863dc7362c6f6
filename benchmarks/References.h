#pragma once

#include <array>
#include <cstddef>

/// The frames as an engineer would write them by hand.
///
/// Fused is one pass over the frame, unfused one loop an operator into a temporary. They are
/// compiled for the processor at hand, and sums run over several accumulators.
namespace Velmora::Benchmarks {

/// `((a*x + b*x) - c*x) / d`, and the same ending in `* d`.
struct Scalars {
    double m_dA;
    double m_dB;
    double m_dC;
    double m_dD;
};

/// Where the unfused loops leave what each operator computes. Both have room for the frame.
struct Temporaries {
    double* m_pFirst;
    double* m_pSecond;
};

enum class Ending { Divide, Multiply };

void computeElementsFused(Ending in_eEnding, const Scalars& in_Scalars, const double* in_pX,
                          std::size_t in_uiCount, double* out_pY);
void computeElementsUnfused(Ending in_eEnding, const Scalars& in_Scalars, const double* in_pX,
                            std::size_t in_uiCount, const Temporaries& in_Temporaries,
                            double* out_pY);
void computeElementsByEigen(Ending in_eEnding, const Scalars& in_Scalars, const double* in_pX,
                            std::size_t in_uiCount, double* out_pY);

/// `{sum(x), max(x), averagePower(x)}`
using Summary = std::array<double, 3>;

void summarizeFused(const double* in_pX, std::size_t in_uiCount, Summary& out_Summary);
void summarizeUnfused(const double* in_pX, std::size_t in_uiCount, Summary& out_Summary);
void summarizeByEigen(const double* in_pX, std::size_t in_uiCount, Summary& out_Summary);

/// `sum(x*2 + x) * k` for k from 1.
constexpr std::size_t SHARING_FEATURES = 32;
using SharedFeatures = std::array<double, SHARING_FEATURES>;

void computeSharedFused(const double* in_pX, std::size_t in_uiCount, SharedFeatures& out_Features);
void computeSharedUnfused(const double* in_pX, std::size_t in_uiCount,
                          const Temporaries& in_Temporaries, SharedFeatures& out_Features);

} // namespace Velmora::Benchmarks
