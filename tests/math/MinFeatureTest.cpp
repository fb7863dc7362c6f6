#include <velmora/math/MinFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

TEST(MinFeatureTest, SmallestElementOrNaN) {
    const struct {
        Values input;
        Values result;
    } cases[] = {{{3.0}, {3.0}},
                 {{3.0, -1.0, 2.0}, {-1.0}},
                 {{1.0, infinity, -infinity}, {-infinity}},
                 {{infinity, infinity}, {infinity}},
                 {{nan, 1.0}, {nan}},
                 {{1.0, nan}, {nan}},
                 {{-infinity, nan, 3.0}, {nan}},
                 {{0.0, -0.0}, {-0.0}},
                 {{-0.0, 0.0}, {-0.0}},
                 {{0.0, 0.0}, {0.0}}};
    MinFeature feature;
    for (const auto& each : cases) {
        EXPECT_THAT(resultOf(feature, each.input), HasValues(each.result))
            << ::testing::PrintToString(each.input);
    }
}

TEST(MinFeatureTest, EmptyVectorIsRefused) {
    MinFeature feature;
    expectRefuses(feature, {});
}

} // namespace
} // namespace Velmora::Math
