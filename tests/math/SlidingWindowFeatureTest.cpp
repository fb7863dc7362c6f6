#include <velmora/math/SlidingWindowFeature.h>

#include <velmora/MemAccounts.h>

#include <deque>
#include <limits>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

constexpr const char* key = "slidingwindow.WindowSize";

SlidingWindowFeature windowOf(int in_iSize) {
    SlidingWindowFeature feature;
    EXPECT_TRUE(configure(feature, {{key, in_iSize}}));
    return feature;
}

TEST(SlidingWindowFeatureTest, HoldsTheLastValuesOldestFirst) {
    SlidingWindowFeature feature = windowOf(4);
    EXPECT_THAT(resultsOf(feature, {{1.0}, {2.0, 3.0}, {4.0}, {5.0}, {6.0, 7.0, 8.0}, {9.0, 10.0}}),
                ::testing::ElementsAre(Values{1}, Values{1, 2, 3}, Values{1, 2, 3, 4},
                                       Values{2, 3, 4, 5}, Values{5, 6, 7, 8},
                                       Values{7, 8, 9, 10}));
}

TEST(SlidingWindowFeatureTest, FrameLongerThanTheWindowLeavesItsLastValues) {
    SlidingWindowFeature feature = windowOf(3);
    EXPECT_THAT(
        resultsOf(feature, {{1, 2, 3, 4, 5}, {6}, {7, 8, 9}, {1, 2, 3, 4}}),
        ::testing::ElementsAre(Values{3, 4, 5}, Values{4, 5, 6}, Values{7, 8, 9}, Values{2, 3, 4}));
}

TEST(SlidingWindowFeatureTest, EmptyFrameGivesTheWindowAsItStands) {
    SlidingWindowFeature feature = windowOf(2);
    EXPECT_THAT(resultsOf(feature, {{}, {1}, {}, {2, 3}, {}}),
                ::testing::ElementsAre(Values{}, Values{1}, Values{1}, Values{2, 3}, Values{2, 3}));
}

TEST(SlidingWindowFeatureTest, NaNIsAValueLikeAnyOther) {
    SlidingWindowFeature feature = windowOf(2);
    EXPECT_THAT(resultOf(feature, {1.0, nan}), HasValues(Values{1.0, nan}));
    EXPECT_THAT(resultOf(feature, {-0.0}), HasValues(Values{nan, -0.0}));
    EXPECT_THAT(resultOf(feature, {3.0}), HasValues(Values{-0.0, 3.0}));
}

// The plain way, for every size of window and many sizes of frames.
TEST(SlidingWindowFeatureTest, AgreesWithAQueueForEverySizeOfWindowAndFrame) {
    for (int size = 1; size <= 12; ++size) {
        SlidingWindowFeature feature = windowOf(size);
        std::deque<double> queue;
        double value = 0.0;
        for (std::size_t step = 0; step < 60; ++step) {
            Values frame(step * 7 % 15);
            for (double& each : frame) {
                each = ++value;
                queue.push_back(each);
            }
            while (queue.size() > static_cast<std::size_t>(size)) {
                queue.pop_front();
            }
            ASSERT_EQ(resultOf(feature, frame), Values(queue.begin(), queue.end()))
                << size << ", " << step;
        }
    }
}

TEST(SlidingWindowFeatureTest, ResetEmptiesTheWindowAndKeepsItsSize) {
    SlidingWindowFeature feature = windowOf(2);
    resultsOf(feature, {{1}, {2}, {3}});
    EXPECT_TRUE(feature.reset());
    EXPECT_THAT(resultsOf(feature, {{4}, {5}, {6}}),
                ::testing::ElementsAre(Values{4}, Values{4, 5}, Values{5, 6}));
}

TEST(SlidingWindowFeatureTest, NewSizeEmptiesTheWindowAndTheSameSizeKeepsIt) {
    SlidingWindowFeature feature = windowOf(2);
    resultsOf(feature, {{1}, {2}, {3}});
    EXPECT_TRUE(configure(feature, {{key, 2}}));
    EXPECT_TRUE(configure(feature, {}));
    EXPECT_EQ(resultOf(feature, {}), (Values{2, 3}));
    EXPECT_TRUE(configure(feature, {{key, 3}}));
    EXPECT_THAT(resultsOf(feature, {{}, {4}}), ::testing::ElementsAre(Values{}, Values{4}));
}

TEST(SlidingWindowFeatureTest, SizeThatCannotBeUsedKeepsTheOneBeforeAndTheWindow) {
    SlidingWindowFeature feature = windowOf(2);
    resultsOf(feature, {{1, 2}});
    for (const ParameterValue& value :
         {ParameterValue(0), ParameterValue(-3), ParameterValue(2.0f), ParameterValue("2")}) {
        EXPECT_FALSE(configure(feature, {{key, value}})) << value;
        EXPECT_EQ(resultOf(feature, {}), (Values{1, 2})) << value;
    }
}

TEST(SlidingWindowFeatureTest, HugeWindowTakesRoomForWhatCameInOnly) {
    const std::size_t before = MemAccounts::get("\"DoubleVector\"").liveBytes;
    SlidingWindowFeature feature = windowOf(std::numeric_limits<int>::max());
    EXPECT_EQ(resultOf(feature, {1, 2}), (Values{1, 2}));
    EXPECT_EQ(resultOf(feature, {3}), (Values{1, 2, 3}));
    EXPECT_LT(MemAccounts::get("\"DoubleVector\"").liveBytes - before, 200u);
}

TEST(SlidingWindowFeatureTest, CopyOfAFullRingSlidesOnByItself) {
    SlidingWindowFeature feature = windowOf(3);
    resultsOf(feature, {{1, 2}, {3, 4}});
    SlidingWindowFeature copy(feature);
    EXPECT_EQ(resultOf(copy, {5}), (Values{3, 4, 5}));
    EXPECT_EQ(resultOf(feature, {}), (Values{2, 3, 4}));
}

} // namespace
} // namespace Velmora::Math
