#include "tools/vxpr/Suggestion.h"

#include <gtest/gtest.h>

namespace Vxpr {

TEST(SuggestionTest, TheNearestNameIsSuggested) {
    const std::vector<std::string> vNames{"energy", "level", "slidingWindow", "max", "min"};
    EXPECT_EQ(suggest("enrgy", vNames), "energy");
    EXPECT_EQ(suggest("levle", vNames), "level");
    EXPECT_EQ(suggest("SlidingWindow", vNames), "slidingWindow");
    EXPECT_EQ(suggest("slidingwindow", vNames), "slidingWindow");
    EXPECT_EQ(suggest("mx", vNames), "max");
    EXPECT_EQ(suggest("mim", vNames), "min");
}

TEST(SuggestionTest, WhatIsFarFromEverythingGetsNoSuggestion) {
    const std::vector<std::string> vNames{"energy", "x", "level"};
    for (const char* szName : {"y", "q", "frame", "something", "enxxxx"}) {
        EXPECT_EQ(suggest(szName, vNames), std::nullopt) << szName;
    }
    EXPECT_EQ(suggest("energy", {}), std::nullopt);
    EXPECT_EQ(suggestInWords("y", vNames), "");
}

TEST(SuggestionTest, TheNearestOfManyIsSuggestedWhateverTheirOrder) {
    const std::vector<std::vector<std::string>> vOrders{
        {"bandLevels", "bandLevel", "bandlevle", "bandLevelOfNoise"},
        {"bandLevelOfNoise", "bandlevle", "bandLevel", "bandLevels"},
    };
    for (const auto& vNames : vOrders) {
        EXPECT_EQ(suggest("bandLevle", vNames), "bandlevle");
        EXPECT_EQ(suggest("bandLevl", vNames), "bandLevel");
        EXPECT_EQ(suggest("badLevels", vNames), "bandLevels");
    }
}

TEST(SuggestionTest, SwapsInARowAreFollowedToTheEnd) {
    EXPECT_EQ(suggest("abcdefghijkl", {"badcfeghijkl"}), "badcfeghijkl");
    EXPECT_EQ(suggest("ab", {"ba"}), "ba");
    EXPECT_EQ(suggest("abcdef", {"abcdfe", "abcde"}), "abcdfe");
}

TEST(SuggestionTest, LongNamesAreComparedUpToALimit) {
    const std::string strLong(127, 'x');
    EXPECT_EQ(suggest(strLong + "y", {strLong}), strLong);
    EXPECT_EQ(suggest(strLong + "yy", {strLong}), std::nullopt);
    EXPECT_EQ(suggest("x", {strLong}), std::nullopt);
}

} // namespace Vxpr
