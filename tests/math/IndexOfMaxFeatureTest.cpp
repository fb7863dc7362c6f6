#include <velmora/math/IndexOfMaxFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

TEST(IndexOfMaxFeatureTest, FirstOfTheLargestOrTheFirstNaN) {
    const struct {
        Values input;
        Values result;
    } cases[] = {{{3.0}, {0.0}},
                 {{-3.0, -1.0, -2.0}, {1.0}},
                 {{1.0, 7.0, 7.0, 2.0}, {1.0}},
                 {{-infinity, -infinity}, {0.0}},
                 {{-infinity, infinity, infinity}, {1.0}},
                 {{-0.0, 0.0}, {0.0}},
                 {{9.0, nan, 10.0, nan}, {1.0}},
                 {{nan}, {0.0}}};
    IndexOfMaxFeature feature;
    for (const auto& each : cases) {
        EXPECT_THAT(resultOf(feature, each.input), HasValues(each.result))
            << ::testing::PrintToString(each.input);
    }
}

TEST(IndexOfMaxFeatureTest, EmptyVectorIsRefused) {
    IndexOfMaxFeature feature;
    expectRefuses(feature, {});
}

} // namespace
} // namespace Velmora::Math
