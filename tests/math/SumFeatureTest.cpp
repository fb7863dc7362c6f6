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
    // 8 additions in a lane, 4 over the lanes, 13 over the blocks, and one rounding unit each.
    EXPECT_LT(errorOf(resultOf(feature, input).front()), 25 * 1.2e-16);
}

TEST(SumFeatureTest, BitsAreThoseOfTheOrderInWhichSumsAreDefined) {
    Values input;
    for (int i = 0; i < 1000; ++i) {
        input.push_back(1.0 / (i + 1));
    }
    // Sixteen lanes over blocks of 128, pairs of lanes, pairs of blocks.
    Values partials;
    for (std::size_t block = 0; block < input.size(); block += 128) {
        Values lanes(16, 0.0);
        for (std::size_t i = block; i < std::min(block + 128, input.size()); ++i) {
            lanes[(i - block) % 16] += input[i];
        }
        while (lanes.size() > 1) {
            for (std::size_t i = 0; i < lanes.size() / 2; ++i) {
                lanes[i] = lanes[2 * i] + lanes[2 * i + 1];
            }
            lanes.resize(lanes.size() / 2);
        }
        partials.push_back(lanes.front());
    }
    ASSERT_EQ(partials.size(), 8u);
    const double expected = ((partials[0] + partials[1]) + (partials[2] + partials[3])) +
                            ((partials[4] + partials[5]) + (partials[6] + partials[7]));
    SumFeature feature;
    EXPECT_THAT(resultOf(feature, input), HasValues(Values{expected}));
}

} // namespace
} // namespace Velmora::Math
