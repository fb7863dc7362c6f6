#include <velmora/math/TappedDelayFeature.h>

#include "math/FeatureTesting.h"
#include "support/LogCapture.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr const char* sizeKey = "tappeddelay.TapeSize";
constexpr const char* includeKey = "tappeddelay.IncludeUsedTapeSizeInOutput";
constexpr const char* paddingKey = "tappeddelay.PaddingValues";

TEST(TappedDelayFeatureTest, WithoutPaddingTheUsedPartComesOut) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 3}}));
    EXPECT_THAT(resultsOf(feature, {{}, {1}, {2, 3}, {4}, {}}),
                ::testing::ElementsAre(Values{}, Values{1}, Values{1, 2, 3}, Values{2, 3, 4},
                                       Values{2, 3, 4}));
}

TEST(TappedDelayFeatureTest, UnfilledPlacesInFrontTakeThePaddingValueOfTheirIndex) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 5}, {paddingKey, "-1 -2 -3"}}));
    EXPECT_THAT(resultsOf(feature, {{}, {1}, {2, 3}, {4, 5}, {6}}),
                ::testing::ElementsAre(Values{-1, -2, -3, -1, -2}, Values{-1, -2, -3, -1, 1},
                                       Values{-1, -2, 1, 2, 3}, Values{1, 2, 3, 4, 5},
                                       Values{2, 3, 4, 5, 6}));
}

TEST(TappedDelayFeatureTest, NumberOfUsedPlacesComesFirst) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 2}, {includeKey, 1}}));
    EXPECT_THAT(resultsOf(feature, {{}, {7}, {8}, {9}}),
                ::testing::ElementsAre(Values{0}, Values{1, 7}, Values{2, 7, 8}, Values{2, 8, 9}));
}

TEST(TappedDelayFeatureTest, NumberOfUsedPlacesStandsAheadOfThePadding) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 3}, {includeKey, "true"}, {paddingKey, 0.5f}}));
    EXPECT_THAT(resultsOf(feature, {{}, {7}, {8, 9, 10}}),
                ::testing::ElementsAre(Values{0, 0.5, 0.5, 0.5}, Values{1, 0.5, 0.5, 7},
                                       Values{3, 8, 9, 10}));
}

TEST(TappedDelayFeatureTest, NaNIsAValueLikeAnyOther) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 2}, {paddingKey, "nan"}}));
    EXPECT_THAT(resultOf(feature, {1.0}), HasValues(Values{nan, 1.0}));
    EXPECT_THAT(resultOf(feature, {nan}), HasValues(Values{1.0, nan}));
}

TEST(TappedDelayFeatureTest, PaddingValuesAreReadFromNumbersAndTexts) {
    const struct {
        ParameterValue value;
        Values padding;
    } cases[] = {{-3, {-3}},
                 {0.25f, {0.25}},
                 {"1.5", {1.5}},
                 {"1,2", {1, 2}},
                 {" 1 ,,\t 2,3 ", {1, 2, 3}},
                 {"1\n2", {1, 2}},
                 {"+4 -5e-1 .5 6.", {4, -0.5, 0.5, 6}},
                 {"inf -inf", {infinity, -infinity}},
                 {"0.1", {0.1}}};
    for (const auto& each : cases) {
        TappedDelayFeature feature;
        ASSERT_TRUE(configure(
            feature, {{sizeKey, static_cast<int>(each.padding.size())}, {paddingKey, each.value}}))
            << each.value;
        EXPECT_EQ(resultOf(feature, {}), each.padding) << each.value;
    }
}

TEST(TappedDelayFeatureTest, TextWithoutNumbersTakesThePaddingAway) {
    for (const char* text : {"", " ", ", ,"}) {
        TappedDelayFeature feature;
        ASSERT_TRUE(configure(feature, {{sizeKey, 2}, {paddingKey, 1}}));
        ASSERT_TRUE(configure(feature, {{paddingKey, text}})) << text;
        EXPECT_EQ(resultOf(feature, {5}), (Values{5})) << text;
    }
}

TEST(TappedDelayFeatureTest, ValuesThatCannotBeUsedKeepTheWholeConfiguration) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 3}, {includeKey, 1}, {paddingKey, "8 9"}}));
    resultOf(feature, {1});
    const struct {
        const char* key;
        ParameterValue value;
    } cases[] = {{sizeKey, 0},        {sizeKey, -1},       {sizeKey, 3.0f},
                 {sizeKey, "3"},      {includeKey, 1.0f},  {includeKey, "yes"},
                 {includeKey, ""},    {paddingKey, "1 x"}, {paddingKey, "1;2"},
                 {paddingKey, "1-2"}, {paddingKey, "0x1"}, {paddingKey, "1e999"},
                 {paddingKey, "+-1"}, {paddingKey, "+"},   {paddingKey, "--1"}};
    for (const auto& each : cases) {
        ParameterTrie configuration;
        configuration.setParameter(sizeKey, 2);
        configuration.setParameter(includeKey, 0);
        configuration.setParameter(paddingKey, 5);
        configuration.setParameter(each.key, each.value);
        EXPECT_FALSE(feature.configure(configuration)) << each.key << each.value;
        EXPECT_EQ(resultOf(feature, {}), (Values{1, 8, 9, 1})) << each.key << each.value;
    }
}

TEST(TappedDelayFeatureTest, APaddedTapeBeyondTheLimitIsRefused) {
    constexpr int MaxSize = 1 << 22;
    const LogCapture log;
    TappedDelayFeature feature;
    EXPECT_FALSE(configure(feature, {{sizeKey, MaxSize + 1}, {paddingKey, 0}}));
    EXPECT_EQ(log.messages(log4cplus::ERROR_LOG_LEVEL),
              std::vector<std::string>{"a padded tape of 4194305 places is longer than the limit "
                                       "of 4194304"});
    EXPECT_TRUE(configure(feature, {{sizeKey, MaxSize}, {paddingKey, 0}}));
}

TEST(TappedDelayFeatureTest, ALongTapeWithoutPaddingTakesRoomOnlyAsValuesComeIn) {
    TappedDelayFeature feature;
    EXPECT_TRUE(configure(feature, {{sizeKey, std::numeric_limits<int>::max()}}));
    EXPECT_EQ(resultOf(feature, {1, 2}), (Values{1, 2}));
    EXPECT_FALSE(configure(feature, {{paddingKey, 0}}));
    EXPECT_EQ(resultOf(feature, {3}), (Values{1, 2, 3}));
}

TEST(TappedDelayFeatureTest, EachParameterCountsOnItsOwn) {
    TappedDelayFeature feature;
    EXPECT_TRUE(configure(feature, {{includeKey, 1}, {paddingKey, 9}}));
    expectRefuses(feature, {1.0});
    EXPECT_TRUE(configure(feature, {{sizeKey, 2}}));
    EXPECT_EQ(resultOf(feature, {5}), (Values{1, 9, 5}));
    EXPECT_TRUE(configure(feature, {{includeKey, "false"}}));
    EXPECT_EQ(resultOf(feature, {}), (Values{9, 5}));
    EXPECT_TRUE(configure(feature, {{paddingKey, ""}}));
    EXPECT_EQ(resultOf(feature, {}), (Values{5}));
}

TEST(TappedDelayFeatureTest, ResetEmptiesTheTapeAndKeepsTheConfiguration) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 3}, {includeKey, 1}, {paddingKey, "8 9"}}));
    resultsOf(feature, {{1, 2, 3}, {4}});
    EXPECT_TRUE(feature.reset());
    EXPECT_EQ(resultOf(feature, {5}), (Values{1, 8, 9, 5}));
}

TEST(TappedDelayFeatureTest, NewSizeEmptiesTheTape) {
    TappedDelayFeature feature;
    ASSERT_TRUE(configure(feature, {{sizeKey, 2}}));
    resultsOf(feature, {{1, 2}});
    ASSERT_TRUE(configure(feature, {{sizeKey, 2}, {includeKey, 1}}));
    EXPECT_EQ(resultOf(feature, {}), (Values{2, 1, 2}));
    ASSERT_TRUE(configure(feature, {{sizeKey, 4}}));
    EXPECT_EQ(resultOf(feature, {3}), (Values{1, 3}));
}

} // namespace
} // namespace Velmora::Math
