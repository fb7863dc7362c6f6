#include "QuadratureFilters.h"

#include <cmath>

#include "Sinusoid.h"

namespace Velmora::Math {

namespace {

constexpr std::size_t maxFunctions = 4;

// Below this share of its own energy what a function adds to those before it is no more than noise.
constexpr double smallestShare = 1e-6;

/// The functions of one symmetry, in the order in which they claim their share, at one instant.
struct Functions {
    double values[maxFunctions];
};

struct Instant {
    Functions even; // cosine, constant, u sine, u^2 cosine
    Functions odd;  // sine, u cosine, u^2 sine, nothing
    double weight;
    double multiplicity;
};

Instant instantAt(const Sinusoid& in_carrier, std::size_t in_uiWindow, std::size_t in_uiIndex) {
    const std::size_t halfSamples = 2 * in_uiIndex + (in_uiWindow % 2 == 0 ? 1 : 0);
    const double u = static_cast<double>(halfSamples) / static_cast<double>(in_uiWindow + 1);
    const auto [cosine, sine] = in_carrier.at(halfSamples);
    return {{{cosine, 1.0, u * sine, u * u * cosine}},
            {{sine, u * cosine, u * u * sine, 0.0}},
            1.0 - u * u,
            halfSamples == 0 ? 1.0 : 2.0};
}

/// The inverse of the matrix of inner products of the functions: the coefficients of the fit are
/// the inverse times the inner products of functions and samples.
class InverseGram {
public:
    void add(const Functions& in_functions, double in_dWeight) {
        for (std::size_t i = 0; i < maxFunctions; ++i) {
            for (std::size_t j = 0; j < maxFunctions; ++j) {
                m_values[i][j] += in_dWeight * in_functions.values[i] * in_functions.values[j];
            }
        }
    }

    /// Inverts in place for the functions that take part, by Gauss and Jordan. No pivoting: the
    /// matrix is positive semidefinite, and a function that depends on those before it is left out.
    void invert(const bool (&in_takesPart)[maxFunctions]) {
        double norms[maxFunctions];
        bool kept[maxFunctions] = {};
        for (std::size_t i = 0; i < maxFunctions; ++i) {
            norms[i] = std::sqrt(m_values[i][i]);
        }
        for (std::size_t k = 0; k < maxFunctions; ++k) {
            kept[k] = in_takesPart[k] && norms[k] > 0.0 &&
                      m_values[k][k] > smallestShare * norms[k] * norms[k];
            if (kept[k]) {
                eliminate(k);
            }
        }
        for (std::size_t i = 0; i < maxFunctions; ++i) {
            for (std::size_t j = 0; j < maxFunctions; ++j) {
                if (!kept[i] || !kept[j]) {
                    m_values[i][j] = 0.0;
                }
            }
        }
    }

    double weightOf(std::size_t in_uiCoefficient, const Functions& in_functions) const {
        double result = 0.0;
        for (std::size_t j = 0; j < maxFunctions; ++j) {
            result += m_values[in_uiCoefficient][j] * in_functions.values[j];
        }
        return result;
    }

private:
    void eliminate(std::size_t in_uiPivot) {
        const std::size_t k = in_uiPivot;
        const double reciprocal = 1.0 / m_values[k][k];
        m_values[k][k] = 1.0;
        for (double& value : m_values[k]) {
            value *= reciprocal;
        }
        for (std::size_t i = 0; i < maxFunctions; ++i) {
            if (i == k) {
                continue;
            }
            const double factor = m_values[i][k];
            m_values[i][k] = 0.0;
            for (std::size_t j = 0; j < maxFunctions; ++j) {
                m_values[i][j] -= factor * m_values[k][j];
            }
        }
    }

    double m_values[maxFunctions][maxFunctions] = {};
};

} // namespace

void makeQuadratureFilters(const Sinusoid& in_carrier, std::size_t in_uiWindow, bool in_bParabolas,
                           DoubleVector& out_vRows) {
    const std::size_t size = quadratureRowSize(in_uiWindow);
    out_vRows.resize(QuadratureRows * size);

    InverseGram even;
    InverseGram odd;
    for (std::size_t i = 0; i < size; ++i) {
        const Instant instant = instantAt(in_carrier, in_uiWindow, i);
        even.add(instant.even, instant.multiplicity * instant.weight);
        odd.add(instant.odd, instant.multiplicity * instant.weight);
    }
    even.invert({true, in_bParabolas, in_bParabolas, in_bParabolas});
    odd.invert({true, in_bParabolas, in_bParabolas, false});

    for (std::size_t i = 0; i < size; ++i) {
        const Instant instant = instantAt(in_carrier, in_uiWindow, i);
        const double weight = 0.5 * instant.multiplicity * instant.weight;
        const auto set = [&](QuadratureRow row, const InverseGram& inverse, std::size_t coefficient,
                             const Functions& functions) {
            out_vRows[row * size + i] = weight * inverse.weightOf(coefficient, functions);
        };
        set(CosineConstant, even, 0, instant.even);
        set(SineLinear, even, 2, instant.even);
        set(CosineSquare, even, 3, instant.even);
        set(SineConstant, odd, 0, instant.odd);
        set(CosineLinear, odd, 1, instant.odd);
        set(SineSquare, odd, 2, instant.odd);
    }
}

} // namespace Velmora::Math
