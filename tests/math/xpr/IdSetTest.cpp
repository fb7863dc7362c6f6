#include "math/xpr/src/IdSet.h"

#include <random>
#include <set>

#include <gtest/gtest.h>

namespace Velmora::Math::Xpr {

namespace {

TEST(IdSetTest, HoldsWhatCameInAndNothingElse) {
    IdSet ids;
    std::set<unsigned long> expected;
    std::mt19937 generator(3);
    // From one page to another and back, with numbers at both ends of pages.
    for (int i = 0; i != 2000; ++i) {
        const unsigned long uiId =
            (generator() % 3) * 4096UL * 1000UL + (4090UL + generator() % 20UL);
        EXPECT_EQ(ids.contains(uiId), expected.count(uiId) != 0) << uiId;
        ids.insert(uiId);
        expected.insert(uiId);
    }
    for (unsigned long uiId = 4000; uiId != 4200; ++uiId) {
        EXPECT_EQ(ids.contains(uiId), expected.count(uiId) != 0) << uiId;
    }
}

TEST(IdSetTest, AnEmptyOneHoldsNothing) {
    const IdSet ids;
    EXPECT_FALSE(ids.contains(0));
    EXPECT_FALSE(ids.contains(~0UL));
}

} // namespace

} // namespace Velmora::Math::Xpr
