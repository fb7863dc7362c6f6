#include "math/xpr/src/CandidateNames.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace Velmora::Math::Xpr {

namespace {

using Names = std::vector<std::string>;

Names listOf(const char* in_szName) {
    CandidateNames candidates(in_szName);
    Names names;
    std::string strName;
    while (candidates.next(strName)) {
        names.push_back(strName);
    }
    EXPECT_FALSE(candidates.next(strName)) << in_szName;
    return names;
}

TEST(CandidateNamesTest, OfANameWithoutAPoint) {
    EXPECT_EQ(listOf("sum"), (Names{"sum.sum", "sum"}));
    EXPECT_EQ(listOf(""), (Names{".", ""}));
}

TEST(CandidateNamesTest, OfTwoPartsTheWholeComesFirst) {
    EXPECT_EQ(listOf("tones.sum"), (Names{"tones.sum", "sum.sum", "sum"}));
    EXPECT_EQ(listOf(".sum"), (Names{".sum", "sum.sum", "sum"}));
    EXPECT_EQ(listOf("tones."), (Names{"tones.", ".", ""}));
}

TEST(CandidateNamesTest, OfMorePartsAllButTheFirst) {
    EXPECT_EQ(listOf("user.tones.sum"), Names{"tones.sum"});
    EXPECT_EQ(listOf("a.b.c.d"), Names{"b.c.d"});
}

} // namespace

} // namespace Velmora::Math::Xpr
