#include "tools/vxpr/PowerSpectrum.h"

#include "WaveFile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>

namespace Vxpr {

namespace {

/// The definition, term by term.
std::vector<double> transformSlowly(const std::vector<double>& in_vFrame) {
    const std::size_t uiFrame = in_vFrame.size();
    const double dTurn = 2.0 * std::acos(-1.0) / static_cast<double>(uiFrame);
    std::vector<double> vWindow(uiFrame, 1.0);
    double dSum = uiFrame == 1 ? 1.0 : 0.0;
    for (std::size_t uiSample = 0; uiSample < uiFrame && uiFrame > 1; ++uiSample) {
        vWindow[uiSample] = (1.0 - std::cos(dTurn * static_cast<double>(uiSample))) / 2.0;
        dSum += vWindow[uiSample];
    }
    std::vector<double> vPower;
    for (std::size_t uiBin = 0; uiBin <= uiFrame / 2; ++uiBin) {
        std::complex<double> sum;
        for (std::size_t uiSample = 0; uiSample < uiFrame; ++uiSample) {
            sum += in_vFrame[uiSample] * vWindow[uiSample] *
                   std::polar(1.0, -dTurn * static_cast<double>(uiBin * uiSample % uiFrame));
        }
        const bool bAlone = uiBin == 0 || 2 * uiBin == uiFrame;
        vPower.push_back((bAlone ? 1.0 : 2.0) * std::norm(sum) / (dSum * dSum));
    }
    return vPower;
}

} // namespace

TEST(PowerSpectrumTest, FramesOfAnySizeAgreeWithTheDefinition) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> samples(-1.0, 1.0);
    for (const std::size_t uiFrame : {1U, 2U, 3U, 4U, 5U, 8U, 97U, 160U, 221U, 225U, 254U, 512U}) {
        std::vector<double> vFrame(uiFrame);
        for (double& dSample : vFrame) {
            dSample = samples(random);
        }
        PowerSpectrum spectrum(uiFrame);
        ASSERT_EQ(spectrum.getSize(), uiFrame / 2 + 1);
        std::vector<double> vPower(spectrum.getSize());
        spectrum.compute(vFrame.data(), vPower.data());
        const std::vector<double> vExpected = transformSlowly(vFrame);
        for (std::size_t uiBin = 0; uiBin < vPower.size(); ++uiBin) {
            EXPECT_NEAR(vPower[uiBin], vExpected[uiBin], 1e-12) << uiFrame << ", " << uiBin;
        }
    }
}

TEST(PowerSpectrumTest, ASinusoidShowsHalfItsSquaredAmplitudeWhateverTheSizeOfTheFrame) {
    for (const std::size_t uiFrame : {160U, 320U, 400U}) {
        const std::vector<double> vFrame = TestSupport::makeTone(1000.0, 0.5, 8000, uiFrame);
        PowerSpectrum spectrum(uiFrame);
        std::vector<double> vPower(spectrum.getSize());
        spectrum.compute(vFrame.data(), vPower.data());
        EXPECT_NEAR(vPower[uiFrame / 8], 0.125, 1e-12);
    }
}

TEST(PowerSpectrumTest, AConstantShowsItsSquareAtZero) {
    const std::vector<double> vFrame(160, -0.5);
    PowerSpectrum spectrum(160);
    std::vector<double> vPower(spectrum.getSize());
    spectrum.compute(vFrame.data(), vPower.data());
    EXPECT_NEAR(vPower[0], 0.25, 1e-12);
    EXPECT_NEAR(vPower[2], 0.0, 1e-12);
}

} // namespace Vxpr
