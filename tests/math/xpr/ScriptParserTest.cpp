#include <velmora/math/xpr/ScriptParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <velmora/math/xpr/VariableImpl.h>

#include "math/xpr/ParsedScript.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;
using namespace Velmora::Testing;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* Parsed = "successfuly parsed a new expression";

std::vector<std::string> errors(const LogCapture& in_Log) {
    return in_Log.messages(log4cplus::ERROR_LOG_LEVEL);
}

/// A parser that makes its macro replacement public.
class MacroParser : public ScriptParser {
public:
    using ScriptParser::replaceMacros;
};

/// Initialized with a text, as script "s".
template <class ParserT>
bool initialize(ParserT& inout_Parser, const std::string& in_strText,
                const char* in_szDirectory = "dir") {
    std::istringstream stream(in_strText);
    return inout_Parser.initialize(stream, "s.xpr", in_szDirectory);
}

TEST(ScriptParserTest, EmptyStreamIsAnEmptyScript) {
    const LogCapture log;
    ScriptParser parser;
    EXPECT_TRUE(initialize(parser, ""));
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_FALSE(parser.failed());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ScriptParserTest, BlankLinesAndCommentsAreOneCall) {
    const LogCapture log;
    ScriptParser parser;
    EXPECT_TRUE(initialize(parser, "\n\n# note\n/* more\n*/\n\t\n"));
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_FALSE(parser.failed());
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, Parsed), 1U);
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, Parsed), 1U);
}

TEST(ScriptParserTest, DefinitionsComeOneByOne) {
    const LogCapture log;
    ScriptParser parser;
    EXPECT_TRUE(initialize(parser, "a = 1\nb = 2\n  "));
    EXPECT_EQ(describe(parser.getExpression()), "s.a = [1]");
    EXPECT_EQ(describe(parser.getExpression()), "s.b = [2]");
    // What can be skipped behind the last definition is no further call.
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_FALSE(parser.failed());
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, Parsed), 2U);
}

TEST(ScriptParserTest, ErrorEndsTheScript) {
    const LogCapture log;
    ScriptParser parser;
    EXPECT_TRUE(initialize(parser, "a = 1\n)\nb = 2\n"));
    const Handle<Expression> pFirst = parser.getExpression();
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_TRUE(parser.failed());
    EXPECT_THAT(errors(log), ElementsAre("syntax error:" + position(2, 1)));
    EXPECT_EQ(log.count(log4cplus::DEBUG_LOG_LEVEL, Parsed), 1U);
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_TRUE(parser.failed());
    EXPECT_EQ(errors(log).size(), 1U);
    EXPECT_EQ(describe(pFirst), "s.a = [1]");
}

TEST(ScriptParserTest, CallAheadOfInitializeIsAProgrammingError) {
    const AssertionCapture assertions;
    ScriptParser parser;
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_FALSE(parser.failed());
    EXPECT_THAT(assertions.expressions(), ElementsAre("m_bInitialized"));
}

TEST(ScriptParserTest, NameWithoutAStemIsAProgrammingError) {
    for (const char* szName : {"", "dir/", static_cast<const char*>(nullptr)}) {
        const AssertionCapture assertions;
        ScriptParser parser;
        std::istringstream stream("a = 1");
        EXPECT_FALSE(parser.initialize(stream, szName, ""));
        EXPECT_TRUE(parser.getExpression().isNull());
        EXPECT_THAT(assertions.expressions(),
                    ElementsAre("OS::stripPathAndExtension( in_szScriptName, m_strScriptName )",
                                "m_bInitialized"));
    }
}

TEST(ScriptParserTest, NameIsTheStemOfTheFile) {
    ScriptParser parser;
    std::istringstream stream("a = 1");
    EXPECT_TRUE(parser.initialize(stream, "dir/script.xpr", nullptr));
    EXPECT_STREQ(parser.getScriptName(), "script");
    EXPECT_EQ(describe(parser.getExpression()), "script.a = [1]");
}

TEST(ScriptParserTest, StreamIsReadWholeAndNoLongerSkipsWhiteSpace) {
    std::string strText = "# ";
    for (int i = 0; i < 100000; ++i) {
        strText += "0123456789";
    }
    std::istringstream stream(strText + "\n \n x = 1");
    ScriptParser parser;
    EXPECT_TRUE(parser.initialize(stream, "s", ""));
    EXPECT_FALSE(stream.good());
    EXPECT_FALSE(stream.flags() & std::ios::skipws);
    EXPECT_EQ(describe(parser.getExpression()), "s.x = [1]");
}

TEST(ScriptParserTest, UnreadableStreamIsAnEmptyScript) {
    std::istringstream stream("x = 1");
    stream.setstate(std::ios::failbit);
    ScriptParser parser;
    EXPECT_TRUE(parser.initialize(stream, "s", ""));
    EXPECT_TRUE(parser.getExpression().isNull());
    EXPECT_FALSE(parser.failed());
}

TEST(ScriptParserTest, AnyByteIsRead) {
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    EXPECT_TRUE(ParsedScript(std::string("x = 1\0", 6)).failed);
    EXPECT_TRUE(ParsedScript("\xff = 1").failed);
    EXPECT_EQ(ParsedScript("# \xc3\xa9\nx = f<\"\xc3\xa9\">(a)").descriptions(),
              std::vector<std::string>{"s.x = ?s.f<\"\xc3\xa9\">(?s.a)"});
}

/// The place that a faulty last line is reported at, behind lines of all kinds.
struct Place {
    const char* m_szScript;
    int m_iLine;
    int m_iColumn;
};

class PositionTest : public ::testing::TestWithParam<Place> {};

TEST_P(PositionTest, IsWhereTheFaultIs) {
    const LogCapture log;
    EXPECT_TRUE(ParsedScript(GetParam().m_szScript).failed);
    EXPECT_THAT(errors(log),
                ElementsAre("syntax error:" + position(GetParam().m_iLine, GetParam().m_iColumn)));
}

INSTANTIATE_TEST_SUITE_P(
    All, PositionTest,
    ::testing::Values(Place{")", 1, 1}, Place{"\t)", 1, 5}, Place{" \t)", 1, 5},
                      Place{"   \t)", 1, 5}, Place{"    \t)", 1, 9}, Place{"\t\t)", 1, 9},
                      Place{"a = 1\n)", 2, 1}, Place{"a = 1\r)", 2, 1}, Place{"a = 1\r\n)", 2, 1},
                      Place{"a = 1\n\r)", 2, 1}, Place{"a = 1\n\n)", 3, 1},
                      Place{"a = 1\r\r)", 3, 1}, Place{"a = 1\r\n\r\n )", 3, 2},
                      Place{"a = 1\r\n\n)", 3, 1}, Place{"a = 1 /* \r\n\t*/; )", 2, 9},
                      Place{"a = 1 # \r\n\r\n)", 3, 1}, Place{"a = f<\"\n\n\t\">(1);)", 3, 11},
                      Place{"a = 1 \\\r\n+ 1;)", 2, 5}));

TEST(ScriptParserTest, GuardReportsItsPlaceAheadOfWhiteSpace) {
    const LogCapture log;
    EXPECT_TRUE(ParsedScript("\n\nx = (1 \t /* */").failed);
    EXPECT_THAT(errors(log),
                ElementsAre("syntax error:<file_position fileName=\"s\" line=\"3\" column=\"7\"/> "
                            "Expecting ')', but found something else.",
                            "syntax error:" + position(3, 1)));
}

TEST(ScriptParserTest, MacroStandsForTheDirectoryEverywhereInAText) {
    const LogCapture log;
    MacroParser parser;
    EXPECT_TRUE(initialize(parser, "", "some/dir"));
    std::string strText;
    EXPECT_TRUE(parser.replaceMacros("$FILE_DIR/a;$FILE_DIR $FILE", strText));
    EXPECT_EQ(strText, "some/dir/a;some/dir $FILE");
    EXPECT_THAT(log.messages(log4cplus::DEBUG_LOG_LEVEL),
                ElementsAre("replacing macros in: $FILE_DIR/a;$FILE_DIR $FILE",
                            "replacing: $FILE_DIR...",
                            "replaced macros in: \nbefore: $FILE_DIR/a;$FILE_DIR $FILE\nafter: "
                            "some/dir/a;some/dir $FILE"));
}

TEST(ScriptParserTest, EmptyDirectoryRemovesTheMacro) {
    MacroParser parser;
    EXPECT_TRUE(initialize(parser, "", ""));
    std::string strText;
    EXPECT_TRUE(parser.replaceMacros("$FILE_DIR/a", strText));
    EXPECT_EQ(strText, "/a");
}

TEST(ScriptParserTest, CopyGoesOnFromTheSamePosition) {
    const LogCapture log("quillmark.math.xpr.ScriptParser", log4cplus::TRACE_LOG_LEVEL);
    ScriptParser parser;
    EXPECT_TRUE(initialize(parser, "a = 1\nb = 2\nc = 3\n"));
    EXPECT_EQ(describe(parser.getExpression()), "s.a = [1]");
    ScriptParser copy(parser);
    EXPECT_STREQ(copy.getScriptName(), "s");
    ScriptParser assigned;
    assigned = copy;
    EXPECT_FALSE(assigned.failed());
    EXPECT_EQ(log.count(log4cplus::TRACE_LOG_LEVEL, "ScriptParser::ScriptParser copy"), 2U);
    EXPECT_EQ(describe(parser.getExpression()), "s.b = [2]");
}

TEST(ScriptParserTest, OperationsAreTraced) {
    const LogCapture log("quillmark.math.xpr.ScriptParser", log4cplus::TRACE_LOG_LEVEL);
    {
        MacroParser parser;
        initialize(parser, "");
        parser.getExpression();
        std::string strText;
        parser.replaceMacros("", strText);
    }
    const auto count = [&](const char* in_szName) {
        return log.count(log4cplus::TRACE_LOG_LEVEL, in_szName);
    };
    EXPECT_EQ(count("ScriptParser::ScriptParser"), 2U);
    EXPECT_EQ(count("ScriptParser::initialize"), 2U);
    // The replacement of macros bears this name, too.
    EXPECT_EQ(count("ScriptParser::getExpression"), 4U);
    EXPECT_EQ(count("ScriptParser::~ScriptParser"), 2U);
}

TEST(ScriptParserTest, HasItsAccount) {
    EXPECT_STREQ(ScriptParser::getMemAccountName(), "ScriptParser");
}

TEST(ScriptParserTest, EachThreadReadsItsOwnScript) {
    std::string strText;
    for (int i = 0; i < 200; ++i) {
        strText += "f<p>(x, y) = if(x, {y, 1.5}, g<p, \"t\">(x[0..2, 1]))\nv = a + -1 * (b / 2)\n";
    }
    const std::vector<std::string> vExpected = ParsedScript(strText).descriptions();
    std::vector<std::vector<std::string>> vResults(4);
    std::vector<std::thread> vThreads;
    for (std::vector<std::string>& vResult : vResults) {
        vThreads.emplace_back([&] {
            for (int i = 0; i < 5; ++i) {
                vResult = ParsedScript(strText).descriptions();
            }
        });
    }
    for (std::thread& thread : vThreads) {
        thread.join();
    }
    EXPECT_EQ(vExpected.size(), 400U);
    for (const std::vector<std::string>& vResult : vResults) {
        EXPECT_EQ(vResult, vExpected);
    }
}

TEST(ScriptParserTest, ScriptGoesOnOnAnotherThread) {
    ScriptParser parser;
    EXPECT_TRUE(initialize(parser, "a = 1\nb = 2\n"));
    Handle<Expression> pFirst;
    std::thread([&] { pFirst = parser.getExpression(); }).join();
    EXPECT_EQ(describe(pFirst), "s.a = [1]");
    EXPECT_EQ(describe(parser.getExpression()), "s.b = [2]");
}

TEST(ScriptParserTest, ParserReadsOnBehindAnErrorOfAnother) {
    const LogCapture log;
    const AssertionCapture assertions;
    EXPECT_TRUE(ParsedScript("x = ((a ^ 2))").failed);
    EXPECT_EQ(ParsedScript("x = ((a))").descriptions(), std::vector<std::string>{"s.x = ?s.a"});
}

} // namespace
