#include <cmath>
#include <string>

#include <velmora/math/SinusCorrelator.h>

#include "Frames.h"
#include "GoertzelReference.h"
#include "Host.h"
#include "Workloads.h"

namespace Velmora::Benchmarks {

namespace {

constexpr std::size_t SIZES[] = {160, 512, 4096};
constexpr std::size_t SAMPLE_RATE = 8000;

/// Whole periods in each of the frames, so that the Fourier sum is the least-squares fit.
constexpr double PERIODS_IN_160 = 20.0;

class Correlators {
public:
    explicit Correlators(std::size_t in_uiSize) : m_Frames(in_uiSize) {
        const double dTurn = PERIODS_IN_160 / 160.0;
        m_dCoefficient = 2.0 * std::cos(2.0 * std::acos(-1.0) * dTurn);
        if (!m_Correlator.configure(SAMPLE_RATE, dTurn * static_cast<double>(SAMPLE_RATE))) {
            throw WrongResult("correlator: not configured");
        }
    }

    void check() {
        for (std::size_t uiFrame = 0; uiFrame != Frames::COUNT; ++uiFrame) {
            const double* const pX = m_Frames.getCopy(uiFrame);
            double dEnergy = 0.0;
            for (std::size_t i = 0; i != m_Frames.size(); ++i) {
                dEnergy += pX[i] * pX[i];
            }
            const double dPower = computeGoertzel(m_dCoefficient, pX, m_Frames.size());
            const double dExpected =
                std::sqrt(2.0 * dPower / (static_cast<double>(m_Frames.size()) * dEnergy));
            const double dMeasured = correlate(uiFrame);
            checkClose("correlator", &dMeasured, &dExpected, 1, 1e-9);
        }
    }

    Race::Times race() {
        Race race;
        race.add("SinusCorrelator", [this](std::size_t in_uiFrame) {
            benchmark::DoNotOptimize(correlate(in_uiFrame));
        });
        race.addReference("Goertzel", [this](std::size_t in_uiFrame) {
            benchmark::DoNotOptimize(
                computeGoertzel(m_dCoefficient, m_Frames.getCopy(in_uiFrame), m_Frames.size()));
        });
        return race.run();
    }

private:
    double correlate(std::size_t in_uiFrame) {
        const double* const pFirst = m_Frames.getCopy(in_uiFrame);
        const double* const pLast = pFirst + m_Frames.size();
        double dResult = 0.0;
        if (!m_Correlator.compute(pFirst, pLast, dResult)) {
            throw WrongResult("correlator: no result");
        }
        return dResult;
    }

    Frames m_Frames;
    Math::SinusCorrelator m_Correlator;
    double m_dCoefficient = 0.0;
};

} // namespace

void measureCorrelator(Report& inout_Report, Effort /*in_eEffort*/) {
    for (const std::size_t uiSize : SIZES) {
        const std::string strWhat = "sinusCorrelate, N = " + std::to_string(uiSize);
        Correlators correlators(uiSize);
        correlators.check();
        const Race::Times times = correlators.race();
        inout_Report.addTimes(strWhat, times);
        inout_Report.addTarget(strWhat, "", times.at("SinusCorrelator") / times.at("Goertzel"),
                               {1.5, 1.0}, "1.5 (aim: 1) x Goertzel");
    }
}

} // namespace Velmora::Benchmarks
