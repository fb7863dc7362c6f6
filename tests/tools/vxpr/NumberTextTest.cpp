#include "tools/vxpr/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace Vxpr {

TEST(NumberTextTest, EveryDoubleReadsBackAsItself) {
    std::mt19937_64 random(1);
    for (int iRound = 0; iRound < 10000; ++iRound) {
        const std::uint64_t uiBits = random();
        double dValue = 0.0;
        std::memcpy(&dValue, &uiBits, sizeof dValue);
        if (!std::isfinite(dValue)) {
            continue;
        }
        const auto value = readNumber(toText(dValue));
        ASSERT_TRUE(value);
        EXPECT_EQ(std::memcmp(&*value, &dValue, sizeof dValue), 0) << toText(dValue);
    }
}

TEST(NumberTextTest, NumbersAreAsShortAsTheyCanBe) {
    EXPECT_EQ(toText(0.1), "0.1");
    EXPECT_EQ(toText(-0.0), "-0");
    EXPECT_EQ(toText(0.02), "0.02");
    EXPECT_EQ(toText(1e300), "1e+300");
}

TEST(NumberTextTest, NotANumberHasNoSign) {
    EXPECT_EQ(toText(-std::numeric_limits<double>::quiet_NaN()), "nan");
    EXPECT_EQ(toText(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(NumberTextTest, TextsThatAreNoNumbersAreRefused) {
    for (const char* szText : {"", "+", "1x", "x", "1 ", "+-1", "0x10", "1,5"}) {
        EXPECT_FALSE(readNumber(szText)) << szText;
    }
    for (const char* szText : {"", "-1", "1.0", "99999999999999999999"}) {
        EXPECT_FALSE(readWholeNumber(szText)) << szText;
    }
}

TEST(NumberTextTest, APlusSignIsRead) {
    EXPECT_EQ(readNumber("+1.5"), 1.5);
}

} // namespace Vxpr
