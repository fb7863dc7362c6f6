#include <velmora/math/SignalEnergyFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr const char* key = "signalfeature.SampleRate";

TEST(SignalEnergyFeatureTest, SumOfSquaresOverTheSampleRate) {
    SignalEnergyFeature feature;
    ASSERT_TRUE(configure(feature, {{key, 8}}));
    EXPECT_THAT(resultOf(feature, {1.0, -2.0, 3.0}), HasValues(Values{14.0 / 8.0}));
    EXPECT_THAT(resultOf(feature, {}), HasValues(Values{0.0}));
    EXPECT_THAT(resultOf(feature, {1.0, nan}), HasValues(Values{nan}));
    EXPECT_THAT(resultOf(feature, {-infinity}), HasValues(Values{infinity}));
}

TEST(SignalEnergyFeatureTest, SampleRateIsAnIntegerOrAFloat) {
    SignalEnergyFeature feature;
    ASSERT_TRUE(configure(feature, {{key, 0.5f}}));
    EXPECT_THAT(resultOf(feature, {3.0}), HasValues(Values{18.0}));
    ASSERT_TRUE(configure(feature, {{key, 3}}));
    EXPECT_THAT(resultOf(feature, {3.0}), HasValues(Values{3.0}));
}

TEST(SignalEnergyFeatureTest, SampleRateThatCannotBeUsedKeepsTheOneBefore) {
    SignalEnergyFeature feature;
    ASSERT_TRUE(configure(feature, {{key, 2}}));
    for (const ParameterValue& value :
         {ParameterValue(0), ParameterValue(-1), ParameterValue(0.0f), ParameterValue(-0.5f),
          ParameterValue(static_cast<float>(nan)), ParameterValue(static_cast<float>(infinity)),
          ParameterValue("8000"), ParameterValue("")}) {
        EXPECT_FALSE(configure(feature, {{key, value}})) << value;
        EXPECT_THAT(resultOf(feature, {2.0}), HasValues(Values{2.0})) << value;
    }
    EXPECT_TRUE(configure(feature, {}));
    EXPECT_THAT(resultOf(feature, {2.0}), HasValues(Values{2.0}));
}

} // namespace
} // namespace Velmora::Math
