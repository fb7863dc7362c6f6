#include <velmora/math/DebounceOnOffFeature.h>

#include <limits>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr const char* onKey = "debounceonoff.DebounceOnValue";
constexpr const char* offKey = "debounceonoff.DebounceOffValue";

DebounceOnOffFeature switchOf(int in_iOn, int in_iOff) {
    DebounceOnOffFeature feature;
    EXPECT_TRUE(configure(feature, {{onKey, in_iOn}, {offKey, in_iOff}}));
    return feature;
}

TEST(DebounceOnOffFeatureTest, SwitchesAfterARunOfFrames) {
    DebounceOnOffFeature feature = switchOf(2, 3);
    EXPECT_EQ(firstValuesOf(feature, {1, 0, 1, 1, 0, 0, 1, 0, 0, 0, 1, 1}),
              (Values{0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 1}));
}

TEST(DebounceOnOffFeatureTest, ZeroCountsAsOne) {
    for (const int value : {0, 1}) {
        DebounceOnOffFeature feature = switchOf(value, value);
        EXPECT_EQ(firstValuesOf(feature, {0, 1, 0, 1, 1, 0}), (Values{0, 1, 0, 1, 1, 0})) << value;
    }
}

TEST(DebounceOnOffFeatureTest, StartsAtZeroHoweverLongItTakes) {
    DebounceOnOffFeature feature = switchOf(std::numeric_limits<int>::max(), 1);
    EXPECT_EQ(firstValuesOf(feature, {1, 1, 1}), (Values{0, 0, 0}));
}

TEST(DebounceOnOffFeatureTest, OnlyTheFirstValueCountsAndOnlyZeroIsOff) {
    DebounceOnOffFeature feature = switchOf(1, 1);
    EXPECT_THAT(
        resultsOf(feature, {{0, 1}, {1, 0}, {-0.0, 5}, {nan}, {0}, {-5e-324}, {0}, {infinity}}),
        ::testing::ElementsAre(Values{0}, Values{1}, Values{0}, Values{1}, Values{0}, Values{1},
                               Values{0}, Values{1}));
}

TEST(DebounceOnOffFeatureTest, EmptyFrameIsRefusedAndDoesNotInterruptARun) {
    DebounceOnOffFeature feature = switchOf(2, 2);
    EXPECT_EQ(firstValuesOf(feature, {1}), (Values{0}));
    expectRefuses(feature, {});
    EXPECT_EQ(firstValuesOf(feature, {1}), (Values{1}));
}

TEST(DebounceOnOffFeatureTest, ResetSwitchesOffAndForgetsTheRun) {
    DebounceOnOffFeature feature = switchOf(2, 5);
    EXPECT_EQ(firstValuesOf(feature, {1, 1}), (Values{0, 1}));
    EXPECT_TRUE(feature.reset());
    EXPECT_EQ(firstValuesOf(feature, {0, 1}), (Values{0, 0}));
    EXPECT_TRUE(feature.reset());
    EXPECT_EQ(firstValuesOf(feature, {1, 1}), (Values{0, 1}));
}

TEST(DebounceOnOffFeatureTest, ComputesOnceBothValuesAreKnown) {
    DebounceOnOffFeature feature;
    EXPECT_TRUE(configure(feature, {{onKey, 1}}));
    expectRefuses(feature, {1.0});
    EXPECT_TRUE(configure(feature, {{offKey, 1}}));
    EXPECT_EQ(firstValuesOf(feature, {1}), (Values{1}));
}

TEST(DebounceOnOffFeatureTest, NewValuesKeepTheMemory) {
    DebounceOnOffFeature feature = switchOf(3, 3);
    firstValuesOf(feature, {1, 1});
    EXPECT_TRUE(configure(feature, {{onKey, 3}, {offKey, 1}}));
    EXPECT_EQ(firstValuesOf(feature, {1, 0}), (Values{1, 0}));
}

TEST(DebounceOnOffFeatureTest, ValueThatCannotBeUsedKeepsBothBefore) {
    DebounceOnOffFeature feature = switchOf(2, 1);
    for (const ParameterValue& value :
         {ParameterValue(-1), ParameterValue(1.0f), ParameterValue("1")}) {
        EXPECT_FALSE(configure(feature, {{onKey, 1}, {offKey, value}})) << value;
        EXPECT_FALSE(configure(feature, {{onKey, value}, {offKey, 5}})) << value;
        EXPECT_TRUE(feature.reset());
        EXPECT_EQ(firstValuesOf(feature, {1, 1, 0}), (Values{0, 1, 0})) << value;
    }
}

} // namespace
} // namespace Velmora::Math
