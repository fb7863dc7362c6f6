#include <velmora/math/SinusCorrelator.h>

#include <velmora/math/SinusSynchronizer.h>

#include <cmath>
#include <random>
#include <type_traits>

#include "math/FeatureTesting.h"
#include "support/AllocationCounter.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr long double pi = 3.141592653589793238462643383279502884L;
constexpr std::size_t sampleRate = 8000;

Values sinusoidOf(std::size_t in_uiSize, double in_dFrequency, double in_dPhase,
                  double in_dAmplitude = 1.0) {
    Values result;
    for (std::size_t i = 0; i < in_uiSize; ++i) {
        const long double angle = 2 * pi * static_cast<long double>(in_dFrequency) *
                                  static_cast<long double>(i) / sampleRate;
        result.push_back(in_dAmplitude * static_cast<double>(std::sin(angle + in_dPhase)));
    }
    return result;
}

Values noiseOf(std::size_t in_uiSize, double in_dAmplitude = 1.0) {
    std::mt19937 random(static_cast<unsigned>(in_uiSize));
    Values result;
    for (std::size_t i = 0; i < in_uiSize; ++i) {
        result.push_back(in_dAmplitude * (static_cast<double>(random()) / 2147483648.0 - 1.0));
    }
    return result;
}

double correlationOf(SinusCorrelator& inout_correlator, const Values& in_frame) {
    const double* const first = in_frame.data();
    const double* const last = first + in_frame.size();
    double result = 42.0;
    EXPECT_TRUE(inout_correlator.compute(first, last, result));
    return result;
}

double correlationOf(double in_dFrequency, const Values& in_frame) {
    SinusCorrelator correlator;
    EXPECT_TRUE(correlator.configure(sampleRate, in_dFrequency));
    return correlationOf(correlator, in_frame);
}

/// The least-squares fit in the plain way: cosine and sine from the start of the frame, made
/// orthogonal by Gram and Schmidt. The sine is divided by its rate at zero, since over a fraction
/// of a period it would vanish next to the cosine.
double referenceOf(double in_dFrequency, const Values& in_frame) {
    const long double step = 2 * pi * static_cast<long double>(in_dFrequency) / sampleRate;
    std::vector<long double> cosine;
    std::vector<long double> sine;
    for (std::size_t i = 0; i < in_frame.size(); ++i) {
        cosine.push_back(std::cos(step * static_cast<long double>(i)));
        sine.push_back(std::sin(step * static_cast<long double>(i)) / step);
    }
    const auto product = [](const auto& a, const auto& b) {
        long double sum = 0;
        for (std::size_t i = 0; i < a.size(); ++i) {
            sum += static_cast<long double>(a[i]) * b[i];
        }
        return sum;
    };
    const long double before = product(sine, sine);
    for (int pass = 0; pass < 3; ++pass) {
        const long double share = product(sine, cosine) / product(cosine, cosine);
        for (std::size_t i = 0; i < sine.size(); ++i) {
            sine[i] -= share * cosine[i];
        }
    }
    const long double along = product(cosine, in_frame);
    const long double across = product(sine, in_frame);
    long double energy = along * along / product(cosine, cosine);
    if (product(sine, sine) > 1e-25L * before) {
        energy += across * across / product(sine, sine);
    }
    return static_cast<double>(std::sqrt(energy / product(in_frame, in_frame)));
}

TEST(SinusCorrelatorTest, RefusesRatesAndFrequenciesThatCannotBe) {
    SinusCorrelator correlator;
    EXPECT_FALSE(correlator.configure(0, 100.0));
    EXPECT_FALSE(correlator.configure(0, 0.0));
    for (const double frequency : {0.0, -0.0, -1.0, 4000.0000001, infinity, -infinity, nan}) {
        EXPECT_FALSE(correlator.configure(8000, frequency)) << frequency;
    }
    for (const double frequency : {4000.0, 1.0, 1e-9, 5e-324}) {
        EXPECT_TRUE(correlator.configure(8000, frequency)) << frequency;
    }
    EXPECT_TRUE(correlator.configure(1, 0.5));
    EXPECT_TRUE(correlator.configure(8001, 4000.5));
    EXPECT_FALSE(correlator.configure(8001, 4000.6));
}

TEST(SinusCorrelatorTest, ComputesNothingBeforeItIsConfigured) {
    SinusCorrelator correlator;
    const Values frame{1.0, 2.0};
    const double* const first = frame.data();
    const double* const last = first + 2;
    double result = 42.0;
    EXPECT_FALSE(correlator.compute(first, last, result));
    EXPECT_FALSE(correlator.configure(0, 100.0));
    EXPECT_FALSE(correlator.compute(first, last, result));
    EXPECT_EQ(result, 42.0);
}

TEST(SinusCorrelatorTest, FailedConfigurationKeepsTheOneBefore) {
    SinusCorrelator correlator;
    ASSERT_TRUE(correlator.configure(sampleRate, 1000.0));
    EXPECT_FALSE(correlator.configure(sampleRate, 5000.0));
    EXPECT_FALSE(correlator.configure(0, 500.0));
    EXPECT_NEAR(correlationOf(correlator, sinusoidOf(100, 1000.0, 1.0)), 1.0, 1e-12);
}

TEST(SinusCorrelatorTest, NewConfigurationReplacesTheTables) {
    SinusCorrelator correlator;
    for (const double frequency : {1000.0, 1500.0, 10.0}) {
        ASSERT_TRUE(correlator.configure(sampleRate, frequency));
        EXPECT_NEAR(correlationOf(correlator, sinusoidOf(100, frequency, 1.0)), 1.0, 1e-12);
    }
    ASSERT_TRUE(correlator.configure(16000, 20.0));
    EXPECT_NEAR(correlationOf(correlator, sinusoidOf(100, 10.0, 1.0)), 1.0, 1e-12);
}

TEST(SinusCorrelatorTest, SilenceAndAnEmptyFrameGiveZero) {
    EXPECT_EQ(correlationOf(1000.0, {}), 0.0);
    EXPECT_EQ(correlationOf(1000.0, {0.0}), 0.0);
    EXPECT_EQ(correlationOf(1000.0, {0.0, -0.0, 0.0, 0.0}), 0.0);
    SinusCorrelator correlator;
    ASSERT_TRUE(correlator.configure(sampleRate, 1000.0));
    const double* const none = nullptr;
    double result = 42.0;
    EXPECT_TRUE(correlator.compute(none, none, result));
    EXPECT_EQ(result, 0.0);
}

TEST(SinusCorrelatorTest, NaNAndInfinityGiveNaN) {
    for (const double bad : {nan, infinity, -infinity}) {
        for (std::size_t place = 0; place < 21; ++place) {
            Values frame = sinusoidOf(21, 1000.0, 0.3);
            frame[place] = bad;
            EXPECT_TRUE(std::isnan(correlationOf(1000.0, frame))) << bad << " at " << place;
        }
    }
}

TEST(SinusCorrelatorTest, SinusoidOfTheFrequencyGivesOneWhateverItsAmplitudeAndPhase) {
    for (const double frequency : {0.001, 1.0, 33.3, 440.0, 1000.0, 2000.0, 3999.0}) {
        for (const std::size_t size : {3u, 7u, 100u, 160u, 4096u}) {
            for (const double amplitude : {1e-12, 1.0, 1e12}) {
                for (double phase = 0.0; phase < 6.3; phase += 0.7) {
                    const double result =
                        correlationOf(frequency, sinusoidOf(size, frequency, phase, amplitude));
                    EXPECT_NEAR(result, 1.0, 1e-9) << frequency << ", " << size << ", " << phase;
                    EXPECT_LE(result, 1.0);
                }
            }
        }
    }
}

TEST(SinusCorrelatorTest, SinusoidOrthogonalToTheFrequencyGivesZero) {
    // Whole numbers of periods in the frame.
    EXPECT_NEAR(correlationOf(1000.0, sinusoidOf(160, 1500.0, 0.4)), 0.0, 1e-12);
    EXPECT_NEAR(correlationOf(1000.0, Values(160, 3.0)), 0.0, 1e-12);
}

TEST(SinusCorrelatorTest, ShareOfAMixtureIsThatOfItsEnergy) {
    Values frame = sinusoidOf(160, 1000.0, 0.4, 3.0);
    const Values other = sinusoidOf(160, 2000.0, 1.4, 4.0);
    for (std::size_t i = 0; i < frame.size(); ++i) {
        frame[i] += other[i];
    }
    EXPECT_NEAR(correlationOf(1000.0, frame), 0.6, 1e-12);
    EXPECT_NEAR(correlationOf(2000.0, frame), 0.8, 1e-12);
}

TEST(SinusCorrelatorTest, AgreesWithThePlainLeastSquaresFit) {
    for (const double frequency :
         {1e-4, 0.01, 0.3, 1.0, 50.0, 123.456, 999.9, 2000.0, 2666.7, 3999.0, 3999.999}) {
        for (const std::size_t size : {3u, 4u, 5u, 8u, 31u, 160u, 161u, 512u, 4095u, 4096u}) {
            Values frame = noiseOf(size);
            EXPECT_NEAR(correlationOf(frequency, frame), referenceOf(frequency, frame), 1e-9)
                << frequency << ", " << size;
            const Values tone = sinusoidOf(size, frequency * 0.99, 0.5, 3.0);
            for (std::size_t i = 0; i < size; ++i) {
                frame[i] = 0.2 * frame[i] + tone[i] + 0.1;
            }
            EXPECT_NEAR(correlationOf(frequency, frame), referenceOf(frequency, frame), 1e-9)
                << frequency << ", " << size;
        }
    }
}

// Sizes and frequencies over all their magnitudes: short frames of low frequencies are where sine
// and cosine are nearly one line.
TEST(SinusCorrelatorTest, AgreesWithThePlainLeastSquaresFitAnywhere) {
    std::mt19937 random(11);
    const auto between = [&random](double in_dFirst, double in_dLast) {
        return in_dFirst + (in_dLast - in_dFirst) * static_cast<double>(random()) / 4294967296.0;
    };
    for (int i = 0; i < 200; ++i) {
        const auto size = static_cast<std::size_t>(std::exp2(between(0.0, 12.0)));
        const double below = std::exp(between(std::log(1e-3), std::log(4000.0)));
        const double frequency = i % 2 == 0 ? below : 4000.0 - 0.999 * below;
        const double amplitude = std::pow(10.0, between(-12.0, 12.0));
        Values frame = noiseOf(size, between(0.0, 1.0) * amplitude);
        const Values tone = sinusoidOf(size, frequency, between(0.0, 6.3), amplitude);
        for (std::size_t k = 0; k < size; ++k) {
            frame[k] += tone[k];
        }
        EXPECT_NEAR(correlationOf(frequency, frame), referenceOf(frequency, frame), 1e-9)
            << frequency << ", " << size << ", " << amplitude;
    }
}

TEST(SinusCorrelatorTest, LongFramesLoseNoAccuracy) {
    constexpr std::size_t size = 100000;
    for (const double frequency : {0.7, 777.7, 3999.3}) {
        const Values tone = sinusoidOf(size, frequency, 0.9);
        EXPECT_NEAR(correlationOf(frequency, tone), 1.0, 1e-9) << frequency;
        const double other = frequency - 0.01;
        EXPECT_NEAR(correlationOf(other, tone), referenceOf(other, tone), 1e-9) << frequency;
    }
}

TEST(SinusCorrelatorTest, TinyFrequencySpansConstantAndSlope) {
    Values line;
    Values parabola;
    for (int i = 0; i < 101; ++i) {
        line.push_back(3.0 - 0.25 * i);
        parabola.push_back((i - 50) * (i - 50) - 850.0);
    }
    for (const double frequency : {1e-7, 1e-15, 1e-300, 5e-324}) {
        EXPECT_NEAR(correlationOf(frequency, line), 1.0, 1e-9) << frequency;
        EXPECT_NEAR(correlationOf(frequency, parabola), 0.0, 1e-9) << frequency;
    }
}

TEST(SinusCorrelatorTest, HalfTheSampleRateProjectsOnALine) {
    const Values alternating{1.0, -1.0, 1.0, -1.0, 1.0};
    EXPECT_EQ(correlationOf(4000.0, alternating), 1.0);
    EXPECT_EQ(correlationOf(4000.0, {2.0, -2.0, 2.0, -2.0}), 1.0);
    EXPECT_EQ(correlationOf(4000.0, {1.0, 1.0, 1.0, 1.0}), 0.0);
    EXPECT_NEAR(correlationOf(4000.0, {1.0, 0.0}), std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(correlationOf(4000.0, {1.0, 0.0, 0.0}), std::sqrt(1.0 / 3.0), 1e-15);
}

TEST(SinusCorrelatorTest, OneSampleLiesOnItsLine) {
    for (const double frequency : {1e-9, 1000.0, 4000.0}) {
        EXPECT_EQ(correlationOf(frequency, {0.3}), 1.0);
        EXPECT_EQ(correlationOf(frequency, {-1e-200}), 1.0);
    }
}

TEST(SinusCorrelatorTest, TwoSamplesLieInThePlane) {
    EXPECT_NEAR(correlationOf(1000.0, {1.0, 0.7}), 1.0, 1e-12);
    EXPECT_NEAR(correlationOf(3999.9, {1.0, 1.0}), 1.0, 1e-9);
}

TEST(SinusCorrelatorTest, AmplitudesAtTheEndsOfTheRangeNeitherOverflowNorVanish) {
    const Values frame = noiseOf(100);
    const double expected = correlationOf(1000.0, frame);
    for (const int exponent : {-1000, -600, -400, 400, 600, 1023}) {
        Values scaled = frame;
        for (double& value : scaled) {
            value = std::ldexp(value, exponent);
        }
        EXPECT_NEAR(correlationOf(1000.0, scaled), expected, 1e-12) << exponent;
    }
    EXPECT_EQ(correlationOf(1000.0, {5e-324}), 1.0);
}

TEST(SinusCorrelatorTest, ResultNeverExceedsOne) {
    std::mt19937 random(5);
    for (int i = 0; i < 3000; ++i) {
        const double frequency = 1.0 + static_cast<double>(random() % 3999);
        const std::size_t size = 1 + random() % 40;
        const double phase = static_cast<double>(random() % 1000);
        EXPECT_LE(correlationOf(frequency, sinusoidOf(size, frequency, phase)), 1.0);
    }
}

TEST(SinusCorrelatorTest, FramesOfChangingSizesGiveTheSameBitsAsAlone) {
    SinusCorrelator correlator;
    ASSERT_TRUE(correlator.configure(sampleRate, 777.0));
    for (const std::size_t size : {10u, 11u, 3u, 100u, 8u, 101u, 1u, 64u, 2u, 10u}) {
        const Values frame = noiseOf(size);
        EXPECT_EQ(correlationOf(correlator, frame), correlationOf(777.0, frame)) << size;
    }
}

TEST(SinusCorrelatorTest, SeveralGiveTogetherWhatEachGivesAlone) {
    for (std::size_t count = 1; count != 20; ++count) {
        std::vector<SinusCorrelator> correlators(count);
        std::vector<SinusCorrelator*> pointers;
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_TRUE(
                correlators[i].configure(sampleRate, 100.0 + 150.0 * static_cast<double>(i)));
            pointers.push_back(&correlators[i]);
        }
        Values notNumber = noiseOf(50);
        notNumber[20] = nan;
        for (const Values& frame : {noiseOf(160), noiseOf(205), noiseOf(7), noiseOf(30, 1e-200),
                                    noiseOf(30, 1e200), notNumber, Values(9, 0.0), Values()}) {
            Values results(count, 42.0);
            ASSERT_TRUE(SinusCorrelator::computeTogether(
                pointers.data(), count, frame.data(), frame.data() + frame.size(), results.data()));
            Values expected;
            for (SinusCorrelator& correlator : correlators) {
                expected.push_back(correlationOf(correlator, frame));
            }
            EXPECT_THAT(results, HasValues(expected)) << count << ", " << frame.size();
        }
    }
}

TEST(SinusCorrelatorTest, OneWithoutAConfigurationStopsAll) {
    SinusCorrelator configured;
    SinusCorrelator other;
    ASSERT_TRUE(configured.configure(sampleRate, 777.0));
    SinusCorrelator* const pointers[] = {&configured, &other};
    const Values frame = noiseOf(50);
    double results[] = {1.0, 2.0};
    EXPECT_FALSE(
        SinusCorrelator::computeTogether(pointers, 2, frame.data(), frame.data() + 50, results));
    EXPECT_EQ(results[0], 1.0);
    EXPECT_EQ(results[1], 2.0);
}

TEST(SinusCorrelatorTest, CopyCarriesTheConfiguration) {
    SinusCorrelator correlator;
    ASSERT_TRUE(correlator.configure(sampleRate, 777.0));
    const Values frame = noiseOf(50);
    const double expected = correlationOf(correlator, frame);
    SinusCorrelator copy(correlator);
    ASSERT_TRUE(correlator.configure(sampleRate, 100.0));
    EXPECT_EQ(correlationOf(copy, frame), expected);
    SinusCorrelator assigned;
    assigned = copy;
    EXPECT_EQ(correlationOf(assigned, noiseOf(90)), correlationOf(777.0, noiseOf(90)));
}

TEST(SinusCorrelatorTest, NothingIsAllocatedOnceWarm) {
    SinusCorrelator correlator;
    ASSERT_TRUE(correlator.configure(sampleRate, 777.0));
    const Values frame = noiseOf(512);
    correlationOf(correlator, frame);
    const double* const first = frame.data();
    double result = 0.0;
    const Velmora::Testing::AllocationCounter counter;
    for (std::size_t size = 512; size > 0; size -= 2) {
        const double* const last = first + size;
        correlator.compute(first, last, result);
    }
    EXPECT_EQ(counter.allocations(), 0u);
}

TEST(SinusSynchronizerTest, IsASinusCorrelatorAndAddsNothing) {
    static_assert(std::is_base_of_v<SinusCorrelator, SinusSynchronizer>);
    static_assert(sizeof(SinusCorrelator) == sizeof(SinusSynchronizer));
    SinusSynchronizer synchronizer;
    ASSERT_TRUE(synchronizer.configure(sampleRate, 1000.0));
    EXPECT_NEAR(correlationOf(synchronizer, sinusoidOf(77, 1000.0, 0.1)), 1.0, 1e-12);
}

} // namespace
} // namespace Velmora::Math
