#include <velmora/math/LogFeature.h>

#include <cmath>
#include <random>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

TEST(LogFeatureTest, EdgesOfTheRange) {
    const struct {
        Values input;
        Values result;
    } cases[] = {{{}, {}},
                 {{1.0}, {0.0}},
                 {{infinity, -infinity, nan}, {infinity, nan, nan}},
                 {{-1.0, -5e-324, -1e308}, {nan, nan, nan}},
                 {{0.0, -0.0}, {-708.39641853226411, -708.39641853226411}},
                 {{2.2250738585072014e-308}, {-708.39641853226411}}};
    LogFeature feature;
    for (const auto& each : cases) {
        EXPECT_THAT(resultOf(feature, each.input), HasValues(each.result))
            << ::testing::PrintToString(each.input);
    }
}

TEST(LogFeatureTest, LogarithmIsWithinOneUnitInTheLastPlace) {
    LogFeature feature;
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> exponents(-744.0, 709.0);
    Values input{5e-324, 1e-310, 1.7976931348623157e308, 0.5, 2.0, 10.0, 2.718281828459045};
    for (int i = 0; i < 20000; ++i) {
        input.push_back(std::exp(exponents(random)));
        input.push_back(1.0 + 1e-3 * exponents(random) / 744.0);
        input.push_back(1.0 + std::ldexp(exponents(random), -i % 60));
    }
    const Values result = resultOf(feature, input);
    ASSERT_EQ(result.size(), input.size());
    for (std::size_t i = 0; i < input.size(); ++i) {
        if (input[i] > 0.0) {
            const long double exact = std::log(static_cast<long double>(input[i]));
            const double rounded = std::abs(static_cast<double>(exact));
            const double unit = std::nextafter(rounded, infinity) - rounded;
            ASSERT_LE(std::abs(static_cast<double>(result[i] - exact)), unit) << input[i];
        }
    }
}

TEST(LogFeatureTest, LogarithmsOfAFewNumbersAreRoundedCorrectly) {
    LogFeature feature;
    EXPECT_THAT(resultOf(feature, {2.0, 10.0, 0.1, 3.0, 1e-300, 1e300, 0.75, 1.5}),
                HasValues(Values{0x1.62e42fefa39efp-1, 0x1.26bb1bbb55516p+1, -0x1.26bb1bbb55515p+1,
                                 0x1.193ea7aad030bp+0, -0x1.5963447f87fb5p+9, 0x1.5963447f87fb5p+9,
                                 -0x1.269621134db92p-2, 0x1.9f323ecbf984cp-2}));
}

} // namespace
} // namespace Velmora::Math
