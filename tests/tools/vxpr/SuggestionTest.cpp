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

} // namespace Vxpr
