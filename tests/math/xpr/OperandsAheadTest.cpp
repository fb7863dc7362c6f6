#include "math/xpr/src/OperandsAhead.h"

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/math/xpr/ScriptParser.h>

#include "math/xpr/ParsedScript.h"
#include "support/LogCapture.h"

namespace Velmora::Math::Xpr {

namespace {

std::optional<ScriptIterator> findBeyond(std::size_t in_uiLimit, const std::string& in_strText) {
    return findOperandsBeyond(
        in_uiLimit, ScriptIterator(in_strText.data(), in_strText.data() + in_strText.size(), "s"));
}

std::size_t count(const std::string& in_strText) {
    std::size_t uiCount = 0;
    while (findBeyond(uiCount, in_strText)) {
        ++uiCount;
    }
    return uiCount;
}

TEST(OperandsAheadTest, CountsCommasAndDefinitions) {
    EXPECT_EQ(count(""), 0U);
    EXPECT_EQ(count("x = {1,2,3}"), 3U);
    EXPECT_EQ(count("x = {1,2,3}\ny = {1,2}"), 5U);
    EXPECT_EQ(count("inputvar a; f<p,q>(b,c) = f<1,2>(b,c[0,1]); y = f<1,2>(a,a)"), 9U);
}

TEST(OperandsAheadTest, CountsNothingInCommentsAndGoesOnBehindThem) {
    EXPECT_EQ(count("/*,=*/{1,/*,;\n,*/2,3}"), 2U);
    EXPECT_EQ(count("{1,//,,\n2,3}\n,"), 3U);
    EXPECT_EQ(count("{1,#,,\n2,3}\n,"), 3U);
    EXPECT_EQ(count("{1,\\\n2,3}"), 2U);
    // What isn't closed is no comment.
    EXPECT_EQ(count("{1,/*,;,"), 3U);
}

TEST(OperandsAheadTest, CountsNothingInTexts) {
    EXPECT_EQ(count("f<\"a,b=;\n,\",2>(a,b)"), 2U);
    // A quote in a comment is none.
    EXPECT_EQ(count("f<\"a,/*\"*/,\",2>(a,b)"), 2U);
    EXPECT_EQ(count("f<\"a,b=1"), 0U);
}

TEST(OperandsAheadTest, TellsWhereTheStatementBegins) {
    const std::string strScript = " x = {1,\\\n2}\n\n\ty = \"\n\"; /*\n*/ z = {1,2}";
    const auto placeBeyond = [&](std::size_t in_uiLimit) {
        return positionText(findBeyond(in_uiLimit, strScript).value());
    };
    EXPECT_EQ(placeBeyond(0), Testing::position(1, 2));
    EXPECT_EQ(placeBeyond(1), Testing::position(1, 2));
    EXPECT_EQ(placeBeyond(2), Testing::position(4, 5));
    EXPECT_EQ(placeBeyond(3), Testing::position(6, 4));
    EXPECT_EQ(placeBeyond(4), Testing::position(6, 4));
    EXPECT_FALSE(findBeyond(5, strScript).has_value());
}

/// The errors of a definition and of a second one of nothing but that many commas.
std::vector<std::string> errorsOf(std::size_t in_uiCommas) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    EXPECT_TRUE(
        Testing::ParsedScript("y = 1\nx = {" + std::string(in_uiCommas, ',') + "\n").failed);
    return log.messages(log4cplus::ERROR_LOG_LEVEL);
}

TEST(OperandsAheadTest, ANodeIsMadeOfNoneThatAreTooMany) {
    // There are two definitions as well.
    const std::size_t uiMost = ScriptParser::MaxOperands - 2;
    const std::string strTooMany = "syntax error:" + Testing::position(2, 1) +
                                   " The script has more than 1048576 definitions and operands.";
    EXPECT_THAT(errorsOf(uiMost), ::testing::Not(::testing::Contains(strTooMany)));
    EXPECT_THAT(errorsOf(uiMost + 1), ::testing::ElementsAre(strTooMany));
}

} // namespace

} // namespace Velmora::Math::Xpr
