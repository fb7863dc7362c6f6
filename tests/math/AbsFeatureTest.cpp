#include <velmora/math/AbsFeature.h>

#include "math/FeatureTesting.h"

namespace Velmora::Math {
namespace {

using namespace Testing;

TEST(AbsFeatureTest, AbsoluteValueOfEachElement) {
    const struct {
        Values input;
        Values result;
    } cases[] = {{{}, {}},
                 {{1.5, -2.5, 0.0, -0.0}, {1.5, 2.5, 0.0, 0.0}},
                 {{infinity, -infinity, nan, -nan}, {infinity, infinity, nan, nan}},
                 {{-5e-324}, {5e-324}}};
    AbsFeature feature;
    for (const auto& each : cases) {
        EXPECT_THAT(resultOf(feature, each.input), HasValues(each.result))
            << ::testing::PrintToString(each.input);
    }
}

} // namespace
} // namespace Velmora::Math
