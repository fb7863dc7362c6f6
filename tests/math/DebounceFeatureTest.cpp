#include <velmora/math/DebounceFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr const char* key = "debounce.DebounceValue";

DebounceFeature debounceOf(int in_iValue) {
    DebounceFeature feature;
    EXPECT_TRUE(configure(feature, {{key, in_iValue}}));
    return feature;
}

TEST(DebounceFeatureTest, NewValueComesOutOnceItHasLasted) {
    DebounceFeature feature = debounceOf(3);
    EXPECT_EQ(firstValuesOf(feature, {1, 2, 2, 2, 2, 1, 1, 1}), (Values{1, 1, 1, 2, 2, 2, 2, 1}));
}

TEST(DebounceFeatureTest, InterruptedChangeStartsAnew) {
    DebounceFeature feature = debounceOf(3);
    EXPECT_EQ(firstValuesOf(feature, {1, 2, 2, 1, 2, 2, 3, 3, 2, 2, 2}),
              (Values{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2}));
}

TEST(DebounceFeatureTest, ZeroAndOneLetEverythingThrough) {
    for (const int value : {0, 1}) {
        DebounceFeature feature = debounceOf(value);
        EXPECT_THAT(firstValuesOf(feature, {1, 2, 1, -0.0, 0.0, nan, 3}),
                    HasValues(Values{1, 2, 1, -0.0, 0.0, nan, 3}))
            << value;
    }
}

TEST(DebounceFeatureTest, FrameIsHeldBackAsAWhole) {
    DebounceFeature feature = debounceOf(2);
    EXPECT_THAT(resultsOf(feature, {{1, 1}, {2, 1}, {2, 3}, {2, 3}}),
                ::testing::ElementsAre(Values{1, 1}, Values{1, 1}, Values{1, 1}, Values{2, 3}));
}

TEST(DebounceFeatureTest, FrameOfAnotherSizeComesOutAtOnce) {
    DebounceFeature feature = debounceOf(2);
    EXPECT_THAT(resultsOf(feature, {{1}, {2}, {5, 6}, {2, 2}, {5, 6}, {1}, {}, {}, {4}}),
                ::testing::ElementsAre(Values{1}, Values{1}, Values{5, 6}, Values{5, 6},
                                       Values{5, 6}, Values{1}, Values{}, Values{}, Values{4}));
}

TEST(DebounceFeatureTest, ChangeOfSizeForgetsTheCandidate) {
    DebounceFeature feature = debounceOf(2);
    EXPECT_THAT(
        resultsOf(feature, {{1}, {2}, {}, {1}, {2}, {2}}),
        ::testing::ElementsAre(Values{1}, Values{1}, Values{}, Values{1}, Values{1}, Values{2}));
}

TEST(DebounceFeatureTest, NaNEqualsANaN) {
    DebounceFeature feature = debounceOf(2);
    EXPECT_THAT(firstValuesOf(feature, {1, nan, -nan, nan, 1, nan, 1, 1}),
                HasValues(Values{1, 1, nan, nan, nan, nan, nan, 1}));
}

TEST(DebounceFeatureTest, ResetMakesTheNextFrameTheFirst) {
    DebounceFeature feature = debounceOf(3);
    firstValuesOf(feature, {1, 2, 2});
    EXPECT_TRUE(feature.reset());
    EXPECT_EQ(firstValuesOf(feature, {2, 3, 3, 3}), (Values{2, 2, 2, 3}));
}

TEST(DebounceFeatureTest, NewDebounceValueKeepsTheMemory) {
    DebounceFeature feature = debounceOf(3);
    firstValuesOf(feature, {1, 2});
    EXPECT_TRUE(configure(feature, {{key, 2}}));
    EXPECT_EQ(firstValuesOf(feature, {2}), (Values{2}));
}

TEST(DebounceFeatureTest, ValueThatCannotBeUsedKeepsTheOneBefore) {
    DebounceFeature feature = debounceOf(2);
    for (const ParameterValue& value :
         {ParameterValue(-1), ParameterValue(1.0f), ParameterValue("1")}) {
        EXPECT_FALSE(configure(feature, {{key, value}})) << value;
        EXPECT_TRUE(feature.reset());
        EXPECT_EQ(firstValuesOf(feature, {1, 2, 2}), (Values{1, 1, 2})) << value;
    }
}

} // namespace
} // namespace Velmora::Math
