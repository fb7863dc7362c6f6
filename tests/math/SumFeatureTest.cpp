#include <velmora/math/SumFeature.h>

#include <algorithm>
#include <cmath>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

TEST(SumFeatureTest, OneValueAndZeroForNothing) {
    const struct {
        Values input;
        Values result;
    } cases[] = {{{}, {0.0}},
                 {{-0.0}, {0.0}},
                 {{1.0, 2.0, 3.5}, {6.5}},
                 {{infinity, 1.0}, {infinity}},
                 {{infinity, -infinity}, {nan}},
                 {{1.0, nan, 2.0}, {nan}}};
    SumFeature feature;
    for (const auto& each : cases) {
        EXPECT_THAT(resultOf(feature, each.input), HasValues(each.result))
            << ::testing::PrintToString(each.input);
    }
}

TEST(SumFeatureTest, EverySizeAroundTheBlocksIsSummedWhole) {
    SumFeature feature;
    Values input;
    double sum = 0.0;
    for (int size = 1; size <= 600; ++size) {
        input.push_back(size);
        sum += size;
        EXPECT_THAT(resultOf(feature, input), HasValues(Values{sum}));
    }
}

TEST(SumFeatureTest, NaNPropagatesFromEveryPlace) {
    SumFeature feature;
    for (std::size_t place = 0; place < 300; ++place) {
        Values input(300, 1.0);
        input[place] = nan;
        EXPECT_THAT(resultOf(feature, input), HasValues(Values{nan})) << place;
    }
}

TEST(SumFeatureTest, ErrorGrowsWithTheLogarithmOfTheSizeOnly) {
    // Added one after the other, a million tenths are off by more than a million units of rounding.
    constexpr std::size_t count = 1000000;
    const Values input(count, 0.1);
    double naive = 0.0;
    for (const double value : input) {
        naive += value;
    }
    const long double exact = static_cast<long double>(0.1) * count;
    const auto errorOf = [&](double sum) {
        return static_cast<double>(std::abs(static_cast<long double>(sum) - exact) / exact);
    };
    ASSERT_GT(errorOf(naive), 1e-12);
    SumFeature feature;
    // 16 additions a sum, 5 over the sums, one of the end, 11 over the blocks, a rounding unit
    // each.
    EXPECT_LT(errorOf(resultOf(feature, input).front()), 33 * 1.2e-16);
}

/// One block of at most 512 values, as sums are defined.
double sumOfBlock(const double* in_pFirst, const double* in_pLast) {
    Values sums(32, 0.0);
    for (const std::size_t width : {32, 16, 8}) {
        // Behind the rows of 32, one of 16 goes into the first half, and one of 8 into the third
        // quarter.
        const std::size_t first = width == 8 ? 16 : 0;
        while (static_cast<std::size_t>(in_pLast - in_pFirst) >= width) {
            for (std::size_t i = 0; i < width; ++i) {
                sums[first + i] += *in_pFirst++;
            }
        }
    }
    for (std::size_t i = 0; i < 8; ++i) {
        sums[i] = (sums[i] + sums[i + 8]) + (sums[i + 16] + sums[i + 24]);
    }
    for (const std::size_t half : {4, 2, 1}) {
        for (std::size_t i = 0; i < half; ++i) {
            sums[i] += sums[i + half];
        }
    }
    double end = 0.0;
    while (in_pFirst != in_pLast) {
        end += *in_pFirst++;
    }
    return sums[0] + end;
}

TEST(SumFeatureTest, BitsAreThoseOfTheOrderInWhichSumsAreDefined) {
    Values input;
    for (int i = 0; i < 1500; ++i) {
        input.push_back(1.0 / (i + 1));
    }
    SumFeature feature;
    for (const std::size_t size : {8u, 13u, 31u, 160u, 255u, 512u}) {
        const Values part(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(size));
        const double expected = sumOfBlock(part.data(), part.data() + size);
        EXPECT_THAT(resultOf(feature, part), HasValues(Values{expected})) << size;
    }
    const double* const first = input.data();
    const double expected =
        (sumOfBlock(first, first + 512) + sumOfBlock(first + 512, first + 1024)) +
        sumOfBlock(first + 1024, first + 1500);
    EXPECT_THAT(resultOf(feature, input), HasValues(Values{expected}));
}

} // namespace
} // namespace Velmora::Math
