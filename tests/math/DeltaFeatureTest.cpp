#include <velmora/math/DeltaFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

struct Step {
    Values input;
    Values result;
};

void expectSteps(DeltaFeature& inout_feature, const std::vector<Step>& in_steps) {
    for (const Step& step : in_steps) {
        EXPECT_THAT(resultOf(inout_feature, step.input), HasValues(step.result))
            << ::testing::PrintToString(step.input);
    }
}

TEST(DeltaFeatureTest, FirstFrameGivesZerosAndEachOtherTheDifferenceToTheOneBefore) {
    DeltaFeature feature;
    expectSteps(feature, {{{1.0, 2.0}, {0.0, 0.0}},
                          {{1.5, -2.0}, {0.5, -4.0}},
                          {{1.5, -2.0}, {0.0, 0.0}},
                          {{0.0, 0.0}, {-1.5, 2.0}}});
}

TEST(DeltaFeatureTest, ChangeOfSizeGivesZeros) {
    DeltaFeature feature;
    expectSteps(feature, {{{1.0, 2.0}, {0.0, 0.0}},
                          {{5.0}, {0.0}},
                          {{6.0}, {1.0}},
                          {{7.0, 7.0, 7.0}, {0.0, 0.0, 0.0}},
                          {{8.0, 8.0, 8.0}, {1.0, 1.0, 1.0}}});
}

TEST(DeltaFeatureTest, EmptyFrameIsAFrameLikeAnyOther) {
    DeltaFeature feature;
    expectSteps(feature, {{{}, {}}, {{1.0}, {0.0}}, {{}, {}}, {{3.0}, {0.0}}, {{4.0}, {1.0}}});
}

TEST(DeltaFeatureTest, NaNPropagatesIntoItsFrameAndTheNext) {
    DeltaFeature feature;
    expectSteps(feature, {{{nan, 1.0}, {0.0, 0.0}},
                          {{1.0, nan}, {nan, nan}},
                          {{2.0, 2.0}, {1.0, nan}},
                          {{3.0, infinity}, {1.0, infinity}},
                          {{3.0, infinity}, {0.0, nan}}});
}

TEST(DeltaFeatureTest, ResetMakesTheNextFrameTheFirst) {
    DeltaFeature feature;
    expectSteps(feature, {{{1.0}, {0.0}}});
    EXPECT_TRUE(feature.reset());
    expectSteps(feature, {{{5.0}, {0.0}}, {{6.0}, {1.0}}});
}

} // namespace
} // namespace Velmora::Math
