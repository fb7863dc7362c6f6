#include "math/xpr/src/OptimizerKeyTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "math/xpr/OptimizerGraphs.h"

namespace Velmora::Math::Xpr {

namespace {

using Testing::plainHash;
using Number = OptimizerKeyTable::Number;
using Numbers = std::vector<Number>;

/// Keys of a doubling: each is the head and twice the key before it.
Numbers doubled(OptimizerKeyTable& inout_Table, const std::string& in_strHead,
                std::size_t in_uiLevels) {
    Numbers vKeys{inout_Table.insert("#x", {})};
    for (std::size_t ui = 0; ui != in_uiLevels; ++ui) {
        vKeys.push_back(inout_Table.insert(in_strHead, {vKeys.back(), vKeys.back()}));
    }
    return vKeys;
}

TEST(OptimizerKeyTableTest, HashOfANumberSignAndAOneIs224) {
    OptimizerKeyTable table;
    EXPECT_EQ(table.hash(table.insert("#1", {})), 224u);
}

TEST(OptimizerKeyTableTest, EmptyKeyHasHashZeroAndNoText) {
    OptimizerKeyTable table;
    const Number uiKey = table.insert("", {});
    EXPECT_EQ(table.hash(uiKey), 0u);
    EXPECT_EQ(table.text(uiKey), "");
}

TEST(OptimizerKeyTableTest, CharactersCountAsSignedOnes) {
    OptimizerKeyTable table;
    EXPECT_EQ(table.hash(table.insert("\xff", {})), 0xffffffffffffffffULL);
    EXPECT_EQ(table.hash(table.insert("\x80", {})), 0xffffffffffffff80ULL);
    EXPECT_EQ(table.hash(table.insert("\xff\x05", {})), 0u);
}

TEST(OptimizerKeyTableTest, HashOfALongTextWrapsAround) {
    OptimizerKeyTable table;
    std::string strText;
    for (int i = 0; i != 200; ++i) {
        strText += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(table.hash(table.insert(strText, {})), plainHash(strText));
}

TEST(OptimizerKeyTableTest, TextAndHashAreThoseOfTheHeadAndTheOtherKeysBehindIt) {
    OptimizerKeyTable table;
    const Number uiLeft = table.insert("#12", {});
    const Number uiRight = table.insert("#frame", {});
    const Number uiInner = table.insert("#sub", {uiRight, uiLeft});
    const Number uiOuter = table.insert("#mult&p%3", {uiInner, uiLeft, uiInner});
    const std::string strText = "#mult&p%3#sub#frame#12#12#sub#frame#12";
    EXPECT_EQ(table.text(uiOuter), strText);
    EXPECT_EQ(table.hash(uiOuter), plainHash(strText));
    EXPECT_EQ(table.text(uiInner), "#sub#frame#12");
    EXPECT_EQ(table.hash(uiInner), plainHash("#sub#frame#12"));
}

TEST(OptimizerKeyTableTest, KeysBelowMayHaveNoText) {
    OptimizerKeyTable table;
    const Number uiEmpty = table.insert("", {});
    const Number uiKey = table.insert("#f", {uiEmpty, table.insert("#a", {}), uiEmpty});
    EXPECT_EQ(table.text(uiKey), "#f#a");
    EXPECT_EQ(table.insert("#f#a", {}), uiKey);
}

TEST(OptimizerKeyTableTest, EqualPiecesHaveOneNumber) {
    OptimizerKeyTable table;
    const Number uiA = table.insert("#a", {});
    const Number uiB = table.insert("#b", {});
    const Number uiSum = table.insert("#add", {uiA, uiB});
    EXPECT_EQ(table.insert("#a", {}), uiA);
    EXPECT_EQ(table.insert("#add", {uiA, uiB}), uiSum);
}

TEST(OptimizerKeyTableTest, OtherHeadsOrdersAndCountsHaveOtherNumbers) {
    OptimizerKeyTable table;
    const Number uiA = table.insert("#a", {});
    const Number uiB = table.insert("#b", {});
    const Numbers vNumbers{uiA,
                           uiB,
                           table.insert("#add", {uiA, uiB}),
                           table.insert("#add", {uiB, uiA}),
                           table.insert("#sub", {uiA, uiB}),
                           table.insert("#add", {uiA, uiA}),
                           table.insert("#add", {uiA}),
                           table.insert("#add", {uiA, uiB, uiB}),
                           table.insert("#add", {})};
    for (std::size_t ui = 0; ui != vNumbers.size(); ++ui) {
        for (std::size_t uiOther = 0; uiOther != ui; ++uiOther) {
            EXPECT_NE(vNumbers[ui], vNumbers[uiOther]) << ui << " and " << uiOther;
        }
    }
}

TEST(OptimizerKeyTableTest, TextsOfEqualHashHaveOtherNumbers) {
    // 'a' * 5 + 'f' is 'b' * 5 + 'a'.
    OptimizerKeyTable table;
    const Number uiOne = table.insert("#af", {});
    const Number uiOther = table.insert("#ba", {});
    EXPECT_EQ(table.hash(uiOne), table.hash(uiOther));
    EXPECT_NE(uiOne, uiOther);
}

TEST(OptimizerKeyTableTest, EqualTextsOfOtherPiecesHaveOneNumber) {
    OptimizerKeyTable table;
    const Number uiA = table.insert("#a", {});
    const Number uiB = table.insert("#b", {});
    // {{a}, b} and {{a, b}}.
    const Number uiFirst = table.insert("#unamed", {table.insert("#unamed", {uiA}), uiB});
    EXPECT_EQ(table.insert("#unamed", {table.insert("#unamed", {uiA, uiB})}), uiFirst);
    EXPECT_EQ(table.insert("#unamed#unamed#a", {uiB}), uiFirst);
    EXPECT_EQ(table.insert("#unamed#unamed#a#b", {}), uiFirst);
    EXPECT_NE(table.insert("#unamed", {uiA, uiB}), uiFirst);
}

TEST(OptimizerKeyTableTest, KeyOfAGreatTextIsFoundByItsPieces) {
    OptimizerKeyTable table;
    const Number uiFirst = doubled(table, "#add", 1000).back();
    EXPECT_EQ(doubled(table, "#add", 1000).back(), uiFirst);
    EXPECT_NE(doubled(table, "#sub", 1000).back(), uiFirst);
}

TEST(OptimizerKeyTableTest, GreatTextsOfOtherPiecesHaveOneNumberUnlessTextsAreShortened) {
    const std::string strGreat(std::size_t(1) << 20, 'x');
    for (const bool bShorten : {false, true}) {
        OptimizerKeyTable table;
        if (bShorten) {
            table.shortenTexts();
        }
        const Number uiInOne = table.insert("#f" + strGreat, {});
        const Number uiInTwo = table.insert("#f", {table.insert(strGreat, {})});
        EXPECT_EQ(uiInOne == uiInTwo, !bShorten);
        const Number uiOther = table.insert("#f", {table.insert(strGreat + 'y', {})});
        EXPECT_NE(uiOther, uiInOne);
    }
}

TEST(OptimizerKeyTableTest, HashesOfGreatTextsAreThoseOfTheWhole) {
    OptimizerKeyTable table;
    const Numbers vKeys = doubled(table, "#add", 16);
    std::string strText = "#x";
    for (std::size_t ui = 1; ui != vKeys.size(); ++ui) {
        strText = "#add" + strText + strText;
        EXPECT_EQ(table.hash(vKeys[ui]), plainHash(strText)) << ui;
    }
    EXPECT_EQ(table.text(vKeys.back()), strText);
    EXPECT_NE(table.insert(strText + "#", {}), vKeys.back());
    EXPECT_EQ(table.insert(strText, {}), vKeys.back());
}

TEST(OptimizerKeyTableTest, ShortenedTextsAreWrittenUpToTheLimit) {
    constexpr std::size_t Half = OptimizerKeyTable::MaxText / 2;
    OptimizerKeyTable table;
    const Number uiHalf = table.insert(std::string(Half, 'y'), {});
    const Number uiFull = table.insert("", {uiHalf, uiHalf});
    const Number uiLong = table.insert("#f", {uiHalf, uiHalf, uiHalf});
    EXPECT_EQ(table.text(uiLong), "#f" + std::string(3 * Half, 'y'));
    const std::uint64_t uiHash = table.hash(uiLong);
    table.shortenTexts();
    EXPECT_EQ(table.text(uiFull), std::string(2 * Half, 'y'));
    EXPECT_EQ(table.text(uiLong), "#f" + std::string(Half, 'y') + "...");
    EXPECT_EQ(table.hash(uiLong), uiHash);
}

TEST(OptimizerKeyTableTest, ShortenedTextOfADoublingEndsSoon) {
    OptimizerKeyTable table;
    table.shortenTexts();
    const std::string strText = table.text(doubled(table, "#add", 1000).back());
    EXPECT_LE(strText.size(), OptimizerKeyTable::MaxText + 3);
    EXPECT_EQ(strText.substr(0, 8), "#add#add");
    EXPECT_EQ(strText.substr(strText.size() - 3), "...");
}

TEST(OptimizerKeyTableTest, ManyShortenedTextsGetShorter) {
    OptimizerKeyTable table;
    table.shortenTexts();
    const Number uiKey = doubled(table, "#add", 1000).back();
    std::size_t uiWritten = 0;
    while (uiWritten < OptimizerKeyTable::MaxTexts) {
        const std::size_t uiSize = table.text(uiKey).size();
        ASSERT_GT(uiSize, OptimizerKeyTable::ShortText + 3);
        uiWritten += uiSize;
    }
    const std::string strText = table.text(uiKey);
    EXPECT_LE(strText.size(), OptimizerKeyTable::ShortText + 3);
    EXPECT_EQ(strText.substr(0, 8), "#add#add");
    EXPECT_EQ(table.text(table.insert("#a", {})), "#a");
}

} // namespace

} // namespace Velmora::Math::Xpr
