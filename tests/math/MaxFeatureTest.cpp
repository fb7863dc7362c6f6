#include <velmora/math/MaxFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

TEST(MaxFeatureTest, LargestElementOrNaN) {
    const struct {
        Values input;
        Values result;
    } cases[] = {{{3.0}, {3.0}},
                 {{-3.0, -1.0, -2.0}, {-1.0}},
                 {{1.0, infinity, -infinity}, {infinity}},
                 {{-infinity, -infinity}, {-infinity}},
                 {{nan, 1.0}, {nan}},
                 {{1.0, nan}, {nan}},
                 {{infinity, nan, 3.0}, {nan}},
                 {{0.0, -0.0}, {0.0}},
                 {{-0.0, 0.0}, {0.0}},
                 {{-0.0, -0.0}, {-0.0}}};
    MaxFeature feature;
    for (const auto& each : cases) {
        EXPECT_THAT(resultOf(feature, each.input), HasValues(each.result))
            << ::testing::PrintToString(each.input);
    }
}

TEST(MaxFeatureTest, EmptyVectorIsRefused) {
    MaxFeature feature;
    expectRefuses(feature, {});
}

} // namespace
} // namespace Velmora::Math
