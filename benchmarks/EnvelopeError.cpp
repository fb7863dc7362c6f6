// How far is the envelope that `DemodulatorAM` computes from the true one?
//
// Prints a table of the error over the range that is promised: the worst over the phases of the
// carrier and of the modulation and over short and long frames, in percent of the unmodulated
// amplitude, root of the mean square over the frame without its first and last carrier period.
// Fails where it is above the bound.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <velmora/math/DemodulatorAM.h>

namespace {

constexpr std::size_t SAMPLE_RATE = 8000;
constexpr double BOUND = 0.01;
constexpr int PHASES = 8;

/// Samples in a carrier period: from 1/50 to 1/4 of the sample rate.
const std::vector<double> PERIODS = {50.0, 40.0, 27.3, 20.0, 16.0, 12.7, 10.0, 8.0, 6.3, 5.0, 4.0};
/// Lengths of frames, in carrier periods.
const std::vector<double> LENGTHS = {3.3, 5.0, 16.0, 40.0};
/// Of the modulation, as shares of the carrier.
const std::vector<double> RATES = {0.01, 0.03, 0.06, 0.0999};
const std::vector<double> DEPTHS = {0.1, 0.3, 0.6, 0.9, 1.0};

struct Signal {
    double m_dPeriod;
    double m_dLength;
    double m_dRate;
    double m_dDepth;
    double m_dCarrierPhase;    // in turns
    double m_dModulationPhase; // in turns
};

double cosineOf(double in_dTurns) {
    static const double dTurn = 2.0 * std::acos(-1.0);
    return std::cos(dTurn * in_dTurns);
}

double measureError(Velmora::Math::DemodulatorAM& inout_Demodulator, const Signal& in_Signal) {
    const auto uiSize =
        static_cast<std::size_t>(std::ceil(in_Signal.m_dLength * in_Signal.m_dPeriod)) + 1;
    std::vector<double> vTrue(uiSize);
    std::vector<double> vSamples(uiSize);
    std::vector<double> vFound(uiSize);
    for (std::size_t i = 0; i != uiSize; ++i) {
        const double dTurns = static_cast<double>(i) / in_Signal.m_dPeriod;
        vTrue[i] = 1.0 + in_Signal.m_dDepth *
                             cosineOf(in_Signal.m_dRate * dTurns + in_Signal.m_dModulationPhase);
        vSamples[i] = vTrue[i] * cosineOf(dTurns + in_Signal.m_dCarrierPhase);
    }
    if (!inout_Demodulator.compute(vSamples.data(), vSamples.data() + uiSize, vFound.data(),
                                   vFound.data() + uiSize)) {
        return HUGE_VAL;
    }
    const auto uiEnd = static_cast<std::size_t>(std::ceil(in_Signal.m_dPeriod));
    double dSquares = 0.0;
    for (std::size_t i = uiEnd; i != uiSize - uiEnd; ++i) {
        dSquares += (vFound[i] - vTrue[i]) * (vFound[i] - vTrue[i]);
    }
    return std::sqrt(dSquares / static_cast<double>(uiSize - 2 * uiEnd));
}

double measureWorst(double in_dPeriod, double in_dRate, double in_dDepth) {
    Velmora::Math::DemodulatorAM demodulator;
    if (!demodulator.configure(SAMPLE_RATE, static_cast<double>(SAMPLE_RATE) / in_dPeriod)) {
        return HUGE_VAL;
    }
    double dWorst = 0.0;
    for (const double dLength : LENGTHS) {
        for (int iPhases = 0; iPhases != PHASES * PHASES; ++iPhases) {
            const double dCarrierPhase = static_cast<double>(iPhases / PHASES) / PHASES;
            const double dModulationPhase = static_cast<double>(iPhases % PHASES) / PHASES;
            dWorst = std::max(dWorst,
                              measureError(demodulator, {in_dPeriod, dLength, in_dRate, in_dDepth,
                                                         dCarrierPhase, dModulationPhase}));
        }
    }
    return dWorst;
}

} // namespace

int main() {
    std::printf("| carrier, Hz of %zu | modulation, Hz |", SAMPLE_RATE);
    for (const double dDepth : DEPTHS) {
        std::printf(" depth %.1f |", dDepth);
    }
    std::printf("\n|---|---|");
    for (std::size_t i = 0; i != DEPTHS.size(); ++i) {
        std::printf("---|");
    }
    double dWorst = 0.0;
    for (const double dPeriod : PERIODS) {
        for (const double dRate : RATES) {
            const double dCarrier = static_cast<double>(SAMPLE_RATE) / dPeriod;
            std::printf("\n| %.0f | %.1f |", dCarrier, dRate * dCarrier);
            for (const double dDepth : DEPTHS) {
                const double dError = measureWorst(dPeriod, dRate, dDepth);
                std::printf(" %.3f |", 100.0 * dError);
                dWorst = std::max(dWorst, dError);
            }
        }
    }
    std::printf("\n\nThe worst is %.3f %%.\n", 100.0 * dWorst);
    if (!(dWorst < BOUND)) {
        std::fprintf(stderr, "the error is above %.1f %%\n", 100.0 * BOUND);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
