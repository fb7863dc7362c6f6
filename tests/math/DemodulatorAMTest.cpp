#include <velmora/math/DemodulatorAM.h>

#include <velmora/MemAccounts.h>

#include <algorithm>
#include <cmath>

#include "math/FeatureTesting.h"
#include "support/AllocationCounter.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr double pi = 3.14159265358979323846;
constexpr std::size_t sampleRate = 8000;

/// A carrier of amplitude 1 + depth cos(...), with its true envelope.
struct Modulated {
    Values samples;
    Values envelope;
};

struct Modulation {
    double period; // of the carrier, in samples
    double rate;   // of the modulation, as a share of the carrier's frequency
    double depth;
    double phase;
    double amplitude = 1.0;
};

Modulated modulated(std::size_t in_uiSize, const Modulation& in_modulation) {
    Modulated result;
    for (std::size_t i = 0; i < in_uiSize; ++i) {
        const double turns = static_cast<double>(i) / in_modulation.period;
        const double envelope =
            in_modulation.amplitude *
            (1.0 + in_modulation.depth *
                       std::cos(2 * pi * in_modulation.rate * turns + 3.7 * in_modulation.phase));
        result.envelope.push_back(envelope);
        result.samples.push_back(envelope * std::cos(2 * pi * turns + in_modulation.phase));
    }
    return result;
}

DemodulatorAM demodulatorOf(double in_dPeriod) {
    DemodulatorAM demodulator;
    EXPECT_TRUE(demodulator.configure(sampleRate, static_cast<double>(sampleRate) / in_dPeriod));
    return demodulator;
}

Values envelopeOf(DemodulatorAM& inout_demodulator, const Values& in_samples) {
    Values result(in_samples.size(), -1.0);
    EXPECT_TRUE(inout_demodulator.compute(in_samples.data(), in_samples.data() + in_samples.size(),
                                          result.data(), result.data() + result.size()));
    return result;
}

/// RMS over the frame without its first and last carrier period.
double errorOf(const Values& in_envelope, const Values& in_expected, double in_dPeriod) {
    const auto margin = static_cast<std::size_t>(std::ceil(in_dPeriod));
    double sum = 0.0;
    for (std::size_t i = margin; i + margin < in_expected.size(); ++i) {
        sum += (in_envelope[i] - in_expected[i]) * (in_envelope[i] - in_expected[i]);
    }
    return std::sqrt(sum / static_cast<double>(in_expected.size() - 2 * margin));
}

TEST(DemodulatorAMTest, RefusesRatesAndFrequenciesThatCannotBe) {
    DemodulatorAM demodulator;
    EXPECT_FALSE(demodulator.configure(0, 100.0));
    EXPECT_FALSE(demodulator.configure(0, 0.0));
    for (const double frequency : {0.0, -0.0, -1.0, 4000.0000001, infinity, -infinity, nan}) {
        EXPECT_FALSE(demodulator.configure(8000, frequency)) << frequency;
    }
    for (const double frequency : {4000.0, 1.0, 1e-9, 5e-324}) {
        EXPECT_TRUE(demodulator.configure(8000, frequency)) << frequency;
    }
    EXPECT_TRUE(demodulator.configure(8001, 4000.5));
}

TEST(DemodulatorAMTest, ComputesNothingBeforeItIsConfiguredNorIntoAnotherSize) {
    DemodulatorAM demodulator;
    const Values in(10, 1.0);
    Values out(11, 42.0);
    EXPECT_FALSE(demodulator.compute(in.data(), in.data() + 10, out.data(), out.data() + 10));
    ASSERT_TRUE(demodulator.configure(8000, 1000.0));
    EXPECT_FALSE(demodulator.compute(in.data(), in.data() + 10, out.data(), out.data() + 9));
    EXPECT_FALSE(demodulator.compute(in.data(), in.data() + 10, out.data(), out.data() + 11));
    EXPECT_EQ(out, Values(11, 42.0));
}

TEST(DemodulatorAMTest, FailedConfigurationKeepsTheOneBefore) {
    DemodulatorAM demodulator = demodulatorOf(10.0);
    const Modulated frame = modulated(100, {10.0, 0.05, 0.5, 0.3});
    const Values expected = envelopeOf(demodulator, frame.samples);
    EXPECT_FALSE(demodulator.configure(sampleRate, 5000.0));
    EXPECT_FALSE(demodulator.configure(0, 500.0));
    EXPECT_EQ(envelopeOf(demodulator, frame.samples), expected);
}

TEST(DemodulatorAMTest, EmptyFrameGivesAnEmptyEnvelope) {
    DemodulatorAM demodulator = demodulatorOf(10.0);
    EXPECT_TRUE(demodulator.compute(nullptr, nullptr, nullptr, nullptr));
}

// The promised range, carriers whose period is no whole number of samples included.
TEST(DemodulatorAMTest, ErrorStaysBelowOnePercentOverTheWholeRange) {
    double worst = 0.0;
    for (double period = 4.0; period < 50.001; period += period < 8.0 ? 0.23 : 2.1) {
        DemodulatorAM demodulator = demodulatorOf(period);
        for (const double periods : {3.3, 5.0, 16.0, 40.0}) {
            const auto size = static_cast<std::size_t>(std::ceil(periods * period)) + 1;
            for (const double rate : {0.01, 0.03, 0.06, 0.0999}) {
                for (const double depth : {0.2, 0.6, 1.0}) {
                    for (double phase = 0.0; phase < 6.0; phase += 0.9) {
                        const Modulated frame = modulated(size, {period, rate, depth, phase});
                        worst = std::max(worst, errorOf(envelopeOf(demodulator, frame.samples),
                                                        frame.envelope, period));
                    }
                }
            }
        }
    }
    EXPECT_LT(worst, 0.01);
    EXPECT_GT(worst, 0.0);
}

TEST(DemodulatorAMTest, ErrorStaysBelowOnePercentForSeveralModulatingTones) {
    constexpr double period = 7.3;
    Values samples;
    Values envelope;
    for (int i = 0; i < 700; ++i) {
        const double turns = i / period;
        envelope.push_back(1.0 + 0.4 * std::cos(2 * pi * 0.099 * turns) +
                           0.3 * std::cos(2 * pi * 0.07 * turns + 1.0) +
                           0.3 * std::sin(2 * pi * 0.013 * turns));
        samples.push_back(envelope.back() * std::sin(2 * pi * turns));
    }
    DemodulatorAM demodulator = demodulatorOf(period);
    EXPECT_LT(errorOf(envelopeOf(demodulator, samples), envelope, period), 0.01);
}

TEST(DemodulatorAMTest, UnmodulatedCarrierGivesItsAmplitudeUpToTheEnds) {
    for (const double period : {2.3, 3.0, 4.0, 4.7, 10.0, 33.3, 50.0, 80.0}) {
        DemodulatorAM demodulator = demodulatorOf(period);
        for (const std::size_t size : {200u, 201u, 1000u}) {
            const Modulated frame = modulated(size, {period, 0.0, 0.0, 0.6, 0.25});
            for (const double value : envelopeOf(demodulator, frame.samples)) {
                ASSERT_NEAR(value, 0.25, 1e-12) << period << ", " << size;
            }
        }
    }
}

TEST(DemodulatorAMTest, CarriersAboveAQuarterOfTheRateBehaveAsTheirMirrorImages) {
    for (const double frequency : {0.26, 0.31, 0.4, 0.46}) {
        const double mirrored = 0.5 - frequency;
        DemodulatorAM demodulator = demodulatorOf(1.0 / frequency);
        for (double phase = 0.0; phase < 6.0; phase += 0.9) {
            const Modulated frame =
                modulated(600, {1.0 / frequency, 0.0999 * mirrored / frequency, 1.0, phase});
            EXPECT_LT(
                errorOf(envelopeOf(demodulator, frame.samples), frame.envelope, 1.0 / mirrored),
                0.01)
                << frequency;
        }
    }
}

TEST(DemodulatorAMTest, OffsetOfTheSamplesDoesNotMatter) {
    DemodulatorAM demodulator = demodulatorOf(10.3);
    const Modulated frame = modulated(300, {10.3, 0.05, 0.8, 0.2});
    Values shifted = frame.samples;
    for (double& value : shifted) {
        value += 5.0;
    }
    EXPECT_LT(errorOf(envelopeOf(demodulator, shifted), frame.envelope, 10.3), 0.01);
}

TEST(DemodulatorAMTest, EnvelopeScalesWithTheSamplesAtAnyAmplitude) {
    DemodulatorAM demodulator = demodulatorOf(9.5);
    const Modulated frame = modulated(100, {9.5, 0.05, 0.9, 0.2});
    const Values expected = envelopeOf(demodulator, frame.samples);
    for (const int exponent : {-950, -520, -300, 40, 300, 520, 1000}) {
        Values scaled = frame.samples;
        for (double& value : scaled) {
            value = std::ldexp(value, exponent);
        }
        const Values envelope = envelopeOf(demodulator, scaled);
        for (std::size_t i = 0; i < envelope.size(); ++i) {
            ASSERT_NEAR(std::ldexp(envelope[i], -exponent), expected[i], 1e-12) << exponent;
        }
    }
}

TEST(DemodulatorAMTest, SilenceHasNoEnvelope) {
    DemodulatorAM demodulator = demodulatorOf(10.0);
    EXPECT_EQ(envelopeOf(demodulator, Values(100, 0.0)), Values(100, 0.0));
}

TEST(DemodulatorAMTest, FrameBelowHalfAPeriodGivesAbsoluteValues) {
    DemodulatorAM demodulator = demodulatorOf(20.0);
    EXPECT_EQ(envelopeOf(demodulator, {1.0, -2.0, 0.5, -0.0, 3.0}),
              (Values{1.0, 2.0, 0.5, 0.0, 3.0}));
    EXPECT_EQ(envelopeOf(demodulator, {-0.7}), (Values{0.7}));
}

TEST(DemodulatorAMTest, ShortFramesOfASteadyCarrierGiveItsAmplitude) {
    for (const double period : {4.0, 4.6, 11.0, 30.0}) {
        DemodulatorAM demodulator = demodulatorOf(period);
        const auto least = static_cast<std::size_t>(std::ceil(period / 2));
        for (std::size_t size = least; size < 4 * least + 20; ++size) {
            const Modulated frame = modulated(size, {period, 0.0, 0.0, 0.4, 2.0});
            for (const double value : envelopeOf(demodulator, frame.samples)) {
                ASSERT_NEAR(value, 2.0, 1e-9) << period << ", " << size;
            }
        }
    }
}

TEST(DemodulatorAMTest, HalfTheSampleRateGivesTheMagnitudeOfTheAlternation) {
    DemodulatorAM demodulator = demodulatorOf(2.0);
    Values samples;
    for (int i = 0; i < 200; ++i) {
        samples.push_back(i % 2 == 0 ? 0.5 : -0.5);
    }
    for (const double value : envelopeOf(demodulator, samples)) {
        EXPECT_NEAR(value, 0.5, 1e-12);
    }
}

// Above this period the envelope is computed at fewer places, with parabolas between them.
TEST(DemodulatorAMTest, SlowCarriersStayWithinTheBound) {
    for (const double period : {150.0, 210.5, 500.0, 999.9}) {
        DemodulatorAM demodulator = demodulatorOf(period);
        const Modulated frame = modulated(20000, {period, 0.0999, 1.0, 0.7});
        EXPECT_LT(errorOf(envelopeOf(demodulator, frame.samples), frame.envelope, period), 0.01)
            << period;
    }
}

TEST(DemodulatorAMTest, VerySlowCarrierTakesNoRoomBeyondTheFrame) {
    const std::size_t before = MemAccounts::get("\"DoubleVector\"").liveBytes;
    DemodulatorAM demodulator;
    ASSERT_TRUE(demodulator.configure(1000000000, 1e-3));
    EXPECT_EQ(envelopeOf(demodulator, Values(100, -1.0)), Values(100, 1.0));
    DemodulatorAM slow;
    ASSERT_TRUE(slow.configure(1000000, 10000.0));
    envelopeOf(slow, Values(100, -1.0));
    EXPECT_LT(MemAccounts::get("\"DoubleVector\"").liveBytes - before, 6 * 50 * 8 + 100u);
}

TEST(DemodulatorAMTest, SameFrameGivesTheSameBitsWhateverCameBefore) {
    DemodulatorAM demodulator = demodulatorOf(10.7);
    const Modulated frame = modulated(160, {10.7, 0.05, 0.9, 0.2});
    const Values expected = envelopeOf(demodulator, frame.samples);
    for (const std::size_t size : {1000u, 17u, 12u, 3u, 1u, 20u, 160u}) {
        envelopeOf(demodulator, modulated(size, {10.7, 0.02, 1.0, 2.0}).samples);
        EXPECT_EQ(envelopeOf(demodulator, frame.samples), expected) << size;
    }
}

TEST(DemodulatorAMTest, NaNSpoilsOnlyTheValuesWhoseWindowHoldsIt) {
    constexpr std::size_t place = 250;
    DemodulatorAM demodulator = demodulatorOf(10.0);
    Values samples = modulated(500, {10.0, 0.05, 0.5, 0.3}).samples;
    const Values clean = envelopeOf(demodulator, samples);
    samples[place] = nan;
    const Values envelope = envelopeOf(demodulator, samples);
    for (std::size_t i = 0; i < envelope.size(); ++i) {
        const std::size_t distance = i > place ? i - place : place - i;
        EXPECT_EQ(std::isnan(envelope[i]), distance <= 12) << i;
        if (distance > 12) {
            EXPECT_EQ(envelope[i], clean[i]) << i;
        }
    }
}

TEST(DemodulatorAMTest, CopyCarriesTheConfiguration) {
    DemodulatorAM demodulator = demodulatorOf(10.7);
    const Modulated frame = modulated(160, {10.7, 0.05, 0.9, 0.2});
    const Values expected = envelopeOf(demodulator, frame.samples);
    DemodulatorAM copy(demodulator);
    ASSERT_TRUE(demodulator.configure(sampleRate, 100.0));
    EXPECT_EQ(envelopeOf(copy, frame.samples), expected);
}

TEST(DemodulatorAMTest, NothingIsAllocatedOnceWarm) {
    DemodulatorAM demodulator = demodulatorOf(10.7);
    const Values samples = modulated(512, {10.7, 0.05, 0.9, 0.2}).samples;
    Values envelope = envelopeOf(demodulator, samples);
    const Velmora::Testing::AllocationCounter counter;
    for (std::size_t size = 512; size > 0; --size) {
        demodulator.compute(samples.data(), samples.data() + size, envelope.data(),
                            envelope.data() + size);
    }
    EXPECT_EQ(counter.allocations(), 0u);
}

} // namespace
} // namespace Velmora::Math
