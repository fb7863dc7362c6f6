#include "math/xpr/src/AddressSet.h"

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Velmora::Math::Xpr::AddressSet;

TEST(AddressSetTest, HoldsWhatWasInsertedAndNothingBesides) {
    const std::vector<int> vObjects(1000);
    for (std::size_t uiStep : {1, 2, 7, 64, 333}) {
        AddressSet set;
        set.reserve(vObjects.size() / uiStep + 1);
        for (std::size_t ui = 0; ui < vObjects.size(); ui += uiStep) {
            set.insert(&vObjects[ui]);
        }
        for (std::size_t ui = 0; ui != vObjects.size(); ++ui) {
            EXPECT_EQ(set.contains(&vObjects[ui]), ui % uiStep == 0) << uiStep << ' ' << ui;
        }
    }
}

TEST(AddressSetTest, HoldsWhatIsInsertedTwiceOnce) {
    const int iFirst = 1;
    const int iSecond = 2;
    const int iThird = 3;
    AddressSet set;
    set.reserve(1);
    for (int i = 0; i != 10; ++i) {
        set.insert(&iFirst);
    }
    EXPECT_TRUE(set.contains(&iFirst));
    EXPECT_FALSE(set.contains(&iSecond));
    EXPECT_FALSE(set.contains(&iThird));
}

TEST(AddressSetTest, IsEmptyAtFirstAndOnceCleared) {
    const int iObject = 1;
    AddressSet set;
    EXPECT_FALSE(set.contains(&iObject));
    set.reserve(1);
    EXPECT_FALSE(set.contains(&iObject));
    set.insert(&iObject);
    set.clear();
    EXPECT_FALSE(set.contains(&iObject));
}

} // namespace
