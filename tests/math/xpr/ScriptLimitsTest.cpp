#include <velmora/math/xpr/ScriptParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <streambuf>
#include <string>
#include <utility>

#include "math/xpr/ParsedScript.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"
#include "support/StackThread.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;
using namespace Velmora::Testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The thread sanitizer keeps every call stack that allocates, and these nest by the thousand;
/// there is but one thread.
class ScriptLimitsTest : public ::testing::Test {
protected:
    void SetUp() override {
#if defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "takes gigabytes under the thread sanitizer";
#endif
    }
};

template <class T>
class ScriptLimitsTestOf : public ScriptLimitsTest, public ::testing::WithParamInterface<T> {};

std::string repeated(const std::string& in_strText, std::size_t in_uiCount) {
    std::string strResult;
    for (std::size_t ui = 0; ui < in_uiCount; ++ui) {
        strResult += in_strText;
    }
    return strResult;
}

/// A construct that goes into itself: "x = " opening... core closing...
struct Nesting {
    const char* m_szName;
    const char* m_szOpening;
    const char* m_szClosing;
    /// How far behind the start of the opening the first expression inside begins.
    std::size_t m_uiInside;

    std::string script(std::size_t in_uiLevels) const {
        return open(in_uiLevels) + repeated(m_szClosing, in_uiLevels) + "\n";
    }
    std::string open(std::size_t in_uiLevels) const {
        return "x = " + repeated(m_szOpening, in_uiLevels) + "v";
    }
};

using NestingTest = ScriptLimitsTestOf<Nesting>;

TEST_P(NestingTest, GoesUpToTheLimit) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const ParsedScript script(GetParam().script(ScriptParser::MaxNesting));
    EXPECT_EQ(script.expressions.size(), 1U);
    EXPECT_FALSE(script.failed);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_P(NestingTest, IsRefusedBeyondTheLimitWithItsPlace) {
    for (const std::size_t uiLevels : {ScriptParser::MaxNesting + 1, std::size_t{100000}}) {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const ParsedScript script("\n" + GetParam().script(uiLevels));
        EXPECT_TRUE(script.failed);
        const std::size_t uiColumn =
            5 + ScriptParser::MaxNesting * std::string(GetParam().m_szOpening).size() +
            GetParam().m_uiInside;
        EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                    ElementsAre("syntax error:" + position(2, static_cast<int>(uiColumn)) +
                                " Expressions are nested more than 1000 levels deep."));
    }
}

TEST_P(NestingTest, GoesOnOnASmallStack) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    runOnStack(SmallStack, [] {
        EXPECT_FALSE(ParsedScript(GetParam().script(ScriptParser::MaxNesting)).failed);
        EXPECT_TRUE(ParsedScript(GetParam().script(ScriptParser::MaxNesting + 1)).failed);
    });
}

TEST_P(NestingTest, EndsSoonWhenNothingIsClosed) {
    for (const std::size_t uiLevels : {std::size_t{30}, ScriptParser::MaxNesting}) {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const bool bFailed = ParsedScript(GetParam().open(uiLevels)).failed;
        EXPECT_EQ(bFailed, *GetParam().m_szClosing != '\0');
        // A few reports for each level, and not twice those of the level below.
        EXPECT_LE(log.count(log4cplus::ERROR_LOG_LEVEL), 6 * uiLevels + 6);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Constructs, NestingTest,
    ::testing::Values(Nesting{"Parentheses", "(", ")", 1}, Nesting{"Calls", "f(", ")", 2},
                      Nesting{"CallsWithParameters", "f<1>(", ")", 5},
                      Nesting{"Concatenations", "{", "}", 1}, Nesting{"Slices", "a[", "]", 2},
                      Nesting{"Conditions", "if(", ",a,b)", 3},
                      Nesting{"ElseBranches", "if(a,b,", ")", 3},
                      Nesting{"CallsOfIf", "if(", ",a)", 3}, Nesting{"UnaryPlus", "+", "", 1}),
    [](const auto& in_Info) { return std::string(in_Info.param.m_szName); });

/// The reports of one mistake behind a token below so many levels of conditions.
std::size_t reports(std::size_t in_uiLevels, const std::string& in_strToken = "1") {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    EXPECT_TRUE(ParsedScript("x = " + repeated("if(", in_uiLevels) + in_strToken).failed);
    return log.count(log4cplus::ERROR_LOG_LEVEL);
}

TEST_F(ScriptLimitsTest, EachAlternativeReportsUpToTheLevelOfRepetition) {
    // Two guards miss the end of the innermost call, one that of the statement; each level above
    // reads all that once as an operator and once as a call.
    for (std::size_t uiLevels = 1; uiLevels <= 12; ++uiLevels) {
        EXPECT_EQ(reports(uiLevels), std::size_t{2} << uiLevels) << uiLevels;
    }
    EXPECT_GT(reports(ScriptParser::MaxRepeatedNesting),
              std::size_t{1} << ScriptParser::MaxRepeatedNesting);
    EXPECT_LT(reports(ScriptParser::MaxRepeatedNesting + 1), 6 * ScriptParser::MaxRepeatedNesting);
}

TEST_F(ScriptLimitsTest, LongTokensAreNotReadAgainForEveryWayToReadConditions) {
    constexpr std::size_t Levels = 12;
    constexpr std::size_t Length = 256 * 1024;
    EXPECT_EQ(reports(Levels, "n"), std::size_t{2} << Levels);
    for (const char* szOpening : {"n", "1.0", "f<0x0", "f<\"a", "n/**/.n"}) {
        const std::string strOpening = szOpening;
        EXPECT_LT(reports(Levels, strOpening + std::string(Length, strOpening.back())),
                  std::size_t{1} << (Levels - 1))
            << strOpening;
    }
}

/// So many conditions, one inside the other, that turn out to be calls of a function.
std::pair<std::string, std::string> nestedCalls(std::size_t in_uiLevels, std::string in_strInner,
                                                std::string in_strDescription) {
    for (std::size_t ui = 0; ui < in_uiLevels; ++ui) {
        in_strInner = "if(" + in_strInner + ", b)";
        in_strDescription = "?s.if(" + in_strDescription + ", ?s.b)";
    }
    return {in_strInner, in_strDescription};
}

TEST_F(ScriptLimitsTest, RememberedResultsMakeTheSameGraph) {
    const std::string strLong(1024 * 1024, 'n');
    for (const auto& [strCalls, strDescription] :
         {nestedCalls(2 * ScriptParser::MaxRepeatedNesting, "g(1)[a]", "Slice(?s.g([1]), ?s.a)"),
          nestedCalls(10, "g(1)[" + strLong + "]", "Slice(?s.g([1]), ?s." + strLong + ")")}) {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const ParsedScript script("x = " + strCalls + " + c\ny = b\n");
        EXPECT_THAT(script.descriptions(),
                    ElementsAre("s.x = add(" + strDescription + ", ?s.c)", "s.y = ?s.b"));
        EXPECT_THAT(log.lines(), IsEmpty());
    }
}

TEST_F(ScriptLimitsTest, ErrorIsBehindTheLastNameWhereverResultsAreRemembered) {
    const AssertionCapture assertions;
    for (const std::size_t uiLevels : {3U, 12U, 17U, 20U, 30U}) {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const std::string strName(20, 'y');
        EXPECT_TRUE(ParsedScript("x = if(" + repeated("(", uiLevels) + "f(" + strName + ")" +
                                 repeated(")", uiLevels) + ") ^ 2\n")
                        .failed);
        EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL).back(),
                    ::testing::HasSubstr("expression error:" +
                                         position(1, static_cast<int>(uiLevels) + 30)));
    }
}

TEST_F(ScriptLimitsTest, ManyNestedStatementsDoNotAddUp) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    std::string strInner = "a";
    for (std::size_t ui = 0; ui < ScriptParser::MaxRepeatedNesting; ++ui) {
        strInner = "if(" + strInner + ", b)";
    }
    const ParsedScript script(repeated("x = " + strInner + "\n", 500));
    EXPECT_EQ(script.expressions.size(), 500U);
    EXPECT_FALSE(script.failed);
}

TEST_F(ScriptLimitsTest, WideConditionsDoNotMultiply) {
    std::string strInner = "a";
    for (int i = 0; i < 12; ++i) {
        strInner = "if(" + strInner + ", " + strInner + ")";
    }
    EXPECT_FALSE(ParsedScript("x = " + strInner).failed);
}

/// A chain of operators: "x = a" and links.
using ChainTest = ScriptLimitsTestOf<const char*>;

TEST_P(ChainTest, IsRefusedBeyondTheLimitWithItsPlace) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const std::string strLink = GetParam();
    const std::string strTooLong =
        "x = a" + repeated(strLink, ScriptParser::MaxOperatorDepth + 1) + "\n";
    EXPECT_TRUE(ParsedScript(strTooLong).failed);
    const std::size_t uiColumn = 6 + ScriptParser::MaxOperatorDepth * strLink.size();
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("syntax error:" + position(1, static_cast<int>(uiColumn)) +
                            " Operators are chained more than 100000 levels deep."));
}

INSTANTIATE_TEST_SUITE_P(Operators, ChainTest, ::testing::Values("+a", "-1", "*a", "/a", "[0]"));

TEST_F(ScriptLimitsTest, ChainGoesUpToTheLimit) {
    const ParsedScript script("x = a" + repeated("+a", ScriptParser::MaxOperatorDepth));
    EXPECT_EQ(script.expressions.size(), 1U);
    EXPECT_FALSE(script.failed);
}

TEST_F(ScriptLimitsTest, IndicesOfASliceAreLimited) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const std::string strMost = "x = a[1" + repeated(",1", ScriptParser::MaxIndices - 1);
    EXPECT_FALSE(ParsedScript(strMost + "] + a[1,2]").failed);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_TRUE(ParsedScript(strMost + ",1]").failed);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("syntax error:" + position(1, static_cast<int>(strMost.size()) + 1) +
                            " A slice has more than 4096 indices."));
}

/// Half of a chain that is too long, inside something, and the other half behind it.
using SplitChainTest = ScriptLimitsTestOf<std::pair<const char*, const char*>>;

TEST_P(SplitChainTest, DepthAddsUpThroughTheConstruct) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const std::string strHalf = repeated("+a", ScriptParser::MaxOperatorDepth / 2);
    EXPECT_TRUE(ParsedScript("x = " + (GetParam().first + ("a" + strHalf)) + GetParam().second +
                             strHalf + "+a")
                    .failed);
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "Operators are chained more than"), 1U);
}

INSTANTIATE_TEST_SUITE_P(Constructs, SplitChainTest,
                         ::testing::Values(std::make_pair("(", ")"), std::make_pair("f(", ")"),
                                           std::make_pair("{1,", "}"),
                                           std::make_pair("if(1,2,", ")"),
                                           std::make_pair("b[", "]"), std::make_pair("b*(", ")")));

TEST_F(ScriptLimitsTest, WidthIsNotDepth) {
    const std::size_t uiCount = ScriptParser::MaxOperatorDepth + 1;
    EXPECT_FALSE(ParsedScript("x = f(1" + repeated(",1+1", uiCount) + ")").failed);
}

TEST_F(ScriptLimitsTest, RangeOfIndicesIsLimited) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    EXPECT_FALSE(ParsedScript("x = a[0..1048575]").failed);
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_TRUE(ParsedScript("x = a[b, 4294967295..0]").failed);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("syntax error:" + position(1, 10) +
                            " An index range lists more than 1048576 indices."));
}

TEST_F(ScriptLimitsTest, RangesOfAScriptAreLimitedTogether) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const std::string strFour = repeated("x = a[0..1048575]\n", 4);
    EXPECT_FALSE(ParsedScript(strFour).failed);
    EXPECT_THAT(log.lines(), IsEmpty());
    const ParsedScript script(strFour + "y = a[3..3]\nz = 1");
    EXPECT_TRUE(script.failed);
    EXPECT_EQ(script.expressions.size(), 4U);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("syntax error:" + position(5, 7) +
                            " The index ranges of the script list more than 4194304 indices "
                            "together."));
}

TEST_F(ScriptLimitsTest, LengthOfAScriptIsLimited) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const std::string strLine = "x = 1 // ";
    const std::string strMost =
        strLine + std::string(ScriptParser::MaxScriptSize - strLine.size(), '-');
    EXPECT_EQ(ParsedScript(strMost).expressions.size(), 1U);
    EXPECT_THAT(log.lines(), IsEmpty());
    const ParsedScript script(strMost + "-");
    EXPECT_TRUE(script.failed);
    EXPECT_TRUE(script.expressions.empty());
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("syntax error:" + position(1, 1) +
                            " The script has more than 33554432 bytes."));
}

/// A stream without an end.
class EndlessBuffer : public std::streambuf {
public:
    std::size_t m_uiRead = 0;

protected:
    int_type underflow() override {
        m_strChunk.assign(65536, ' ');
        m_uiRead += m_strChunk.size();
        setg(m_strChunk.data(), m_strChunk.data(), m_strChunk.data() + m_strChunk.size());
        return traits_type::to_int_type(' ');
    }

private:
    std::string m_strChunk;
};

TEST_F(ScriptLimitsTest, OfAStreamWithoutAnEndNoMoreIsReadThanAScriptMayHave) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    EndlessBuffer buffer;
    std::istream stream(&buffer);
    ScriptParser parser;
    ASSERT_TRUE(parser.initialize(stream, "s.xpr", "dir"));
    EXPECT_LE(buffer.m_uiRead, ScriptParser::MaxScriptSize + 2 * 65536);
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_TRUE(parser.failed());
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, "The script has more than"), 1U);
}

TEST_F(ScriptLimitsTest, CommentsOfAnyLengthAreRead) {
    const std::string strLong = repeated("0123456789", 1000000);
    EXPECT_THAT(ParsedScript("x = 1 /*" + strLong + "*/ + /*" + strLong + "*/ 2 //" + strLong)
                    .descriptions(),
                ElementsAre("s.x = add([1], [2])"));
}

TEST_F(ScriptLimitsTest, CommentsThatAreNeverClosedAreSoughtOnce) {
    const ParsedScript script("x = f<\"" + repeated("/*", 1000000) + "\">(1)");
    EXPECT_FALSE(script.failed);
}

/// What goes on to the end of the script because nothing closes it, behind one good definition.
struct Unclosed {
    const char* m_szName;
    std::string m_strStart;
    std::string m_strRepeated;
};

using UnclosedTest = ScriptLimitsTestOf<Unclosed>;

TEST_P(UnclosedTest, IsRefusedAtItsPlaceHoweverLongItIs) {
    for (const std::size_t uiSize : {std::size_t{100}, std::size_t{10000000}}) {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const std::string& strRepeated = GetParam().m_strRepeated;
        const ParsedScript script("y = 1\nx = " + GetParam().m_strStart +
                                  repeated(strRepeated, uiSize / strRepeated.size()));
        EXPECT_TRUE(script.failed);
        EXPECT_EQ(script.expressions.size(), 1U);
        const auto vErrors = log.messages(log4cplus::ERROR_LOG_LEVEL);
        ASSERT_GE(vErrors.size(), 1U);
        EXPECT_LE(vErrors.size(), 4U);
        EXPECT_EQ(vErrors.back(), "syntax error:" + position(2, 1));
        for (const std::string& strError : vErrors) {
            EXPECT_LT(strError.size(), 200U);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Constructs, UnclosedTest,
                         ::testing::Values(Unclosed{"Comment", "1 /*", "a"},
                                           Unclosed{"Comments", "1 ", "/*"},
                                           Unclosed{"Stars", "1 /*", "* "},
                                           Unclosed{"Text", "f<\"", "a"},
                                           Unclosed{"TextOfLines", "f<\"", "a\n"},
                                           Unclosed{"TextOfComments", "f<\"", "/**/"},
                                           Unclosed{"TextOfUnclosedComments", "f<\"", "/*"}),
                         [](const auto& in_Info) { return std::string(in_Info.param.m_szName); });

TEST_F(ScriptLimitsTest, NamesOfAnyLengthAreRead) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    const std::string strName(1000000, 'n');
    EXPECT_THAT(ParsedScript(strName + " = " + strName + "2").descriptions(),
                ElementsAre("s." + strName + " = ?s." + strName + "2"));
    EXPECT_THAT(ParsedScript("x = a" + repeated(".a", 500000)).descriptions(),
                ElementsAre("s.x = ?s.a" + repeated(".a", 500000)));
    EXPECT_FALSE(ParsedScript(strName + "(" + strName + ") = " + strName + "(1)").failed);
    EXPECT_FALSE(
        ParsedScript("x = " + std::string(1000000, '1') + "." + std::string(1000000, '1')).failed);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ScriptLimitsTest, LongScriptIsRead) {
    std::string strText;
    for (int i = 0; i < 10000; ++i) {
        strText += "x" + std::to_string(i) + " = a * 2 + f<3>(b, c[0..3]) - {a, b}\n";
    }
    EXPECT_EQ(ParsedScript(strText).expressions.size(), 10000U);
}

} // namespace
