#include <velmora/math/xpr/ScriptParser.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "math/xpr/ParsedScript.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Testing;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Velmora::Math::DoubleVector;

/// A script that is accepted, and what it defines.
struct Accepted {
    const char* m_szScript;
    std::vector<std::string> m_vDefinitions;

    friend std::ostream& operator<<(std::ostream& out_Stream, const Accepted& in_Case) {
        return out_Stream << ::testing::PrintToString(in_Case.m_szScript);
    }
};

class AcceptedScriptTest : public ::testing::TestWithParam<Accepted> {};

TEST_P(AcceptedScriptTest, DefinesWhatItSaysAndReportsNothing) {
    const LogCapture log;
    const AssertionCapture assertions;
    const ParsedScript script(GetParam().m_szScript);
    EXPECT_FALSE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAreArray(GetParam().m_vDefinitions));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAre());
    EXPECT_THAT(assertions.expressions(), ElementsAre());
}

INSTANTIATE_TEST_SUITE_P(
    Constructs, AcceptedScriptTest,
    ::testing::Values(
        Accepted{"// a line comment\n", {}}, Accepted{"# so is this\n", {}},
        Accepted{"/* a block comment, which may run\n over lines */\n", {}},
        Accepted{"inputvar frame\n", {"input s.frame"}},
        Accepted{"level = 2.5\n", {"s.level = [2.5]"}},
        Accepted{"gain = level * frame\n", {"s.gain = mult(?s.level, ?s.frame)"}},
        Accepted{"a = 1; b = 2\n", {"s.a = [1]", "s.b = [2]"}},
        Accepted{"c = 3; // closed before the comment\n", {"s.c = [3]"}},
        Accepted{"d = 1 + \\\n2\n", {"s.d = add([1], [2])"}},
        Accepted{"e = (a + b) * 2 - -1\n", {"s.e = sub(mult(add(?s.a, ?s.b), [2]), [-1])"}},
        Accepted{"square(x) = x * x\n", {"s.square(x) = mult(x, x)"}},
        Accepted{"two() = 2\n", {"s.two() = [2]"}},
        Accepted{"mean3(a, b, c) = (a + b + c) / 3\n",
                 {"s.mean3(a, b, c) = div(add(add(a, b), c), [3])"}},
        Accepted{"smooth<n>(x) = slidingWindow<n>(x)\n",
                 {"s.smooth<n>(x) = ?s.slidingWindow<@n>(x)"}},
        Accepted{"ramp<n>() = tappedDelay<n>()\n", {"s.ramp<n>() = ?s.tappedDelay<@n>()"}},
        Accepted{"first = frame[0]\n", {"s.first = Slice(?s.frame, [0])"}},
        Accepted{"head = frame[0..3]\n", {"s.head = Slice(?s.frame, [0 1 2 3])"}},
        Accepted{"tail = frame[3..0]\n", {"s.tail = Slice(?s.frame, [3 2 1 0])"}},
        Accepted{"some = frame[0, 2..4, a]\n",
                 {"s.some = Slice(?s.frame, unamed(unamed([0], [2 3 4]), ?s.a))"}},
        Accepted{"both = {a, b, frame[0]}\n",
                 {"s.both = unamed(?s.a, ?s.b, Slice(?s.frame, [0]))"}},
        Accepted{"pick = if(isGreater(a, b), a, b)\n",
                 {"s.pick = if(?s.isGreater(?s.a, ?s.b), ?s.a, ?s.b)"}},
        Accepted{"o = other.level + other.twice(1)\n",
                 {"s.o = add(?s.other.level, ?s.other.twice([1]))"}},
        Accepted{"m = model<\"$FILE_DIR/table.txt\", 16, 0x10, -1, 2.5>(frame)\n",
                 {"s.m = ?s.model<\"dir/table.txt\", 16, 16, -1, 2.5f>(?s.frame)"}},
        Accepted{"p = + a\n", {"s.p = ?s.a"}},
        Accepted{"s = energy(frame)[0]\n", {"s.s = Slice(?s.energy(?s.frame), [0])"}}));

INSTANTIATE_TEST_SUITE_P(
    Precedence, AcceptedScriptTest,
    ::testing::Values(Accepted{"x = a * b[0]", {"s.x = Slice(mult(?s.a, ?s.b), [0])"}},
                      Accepted{"x = a + b[0]", {"s.x = add(?s.a, Slice(?s.b, [0]))"}},
                      Accepted{"x = a - b - c", {"s.x = sub(sub(?s.a, ?s.b), ?s.c)"}},
                      Accepted{"x = a / b * c", {"s.x = mult(div(?s.a, ?s.b), ?s.c)"}},
                      Accepted{"x = a - (b - c)", {"s.x = sub(?s.a, sub(?s.b, ?s.c))"}},
                      Accepted{"x = a + b * c", {"s.x = add(?s.a, mult(?s.b, ?s.c))"}},
                      Accepted{"x = 0 - y", {"s.x = sub([0], ?s.y)"}},
                      Accepted{"x = 3 * -1", {"s.x = mult([3], [-1])"}},
                      Accepted{"x = 1 - 2", {"s.x = sub([1], [2])"}},
                      Accepted{"x = 1 -2", {"s.x = sub([1], [2])"}},
                      Accepted{"x = 1-2", {"s.x = sub([1], [2])"}},
                      Accepted{"x = -2", {"s.x = [-2]"}}, Accepted{"x = ++ +a", {"s.x = ?s.a"}},
                      Accepted{"x = a[1][0]", {"s.x = Slice(Slice(?s.a, [1]), [0])"}},
                      Accepted{"x = a[b[0]]", {"s.x = Slice(?s.a, Slice(?s.b, [0]))"}}));

INSTANTIATE_TEST_SUITE_P(
    Words, AcceptedScriptTest,
    ::testing::Values(
        Accepted{"x = if(a, b)", {"s.x = ?s.if(?s.a, ?s.b)"}},
        Accepted{"x = if()", {"s.x = ?s.if()"}}, Accepted{"if = 2", {"s.if = [2]"}},
        Accepted{"x = if + 1", {"s.x = add(?s.if, [1])"}},
        Accepted{"x = iffy(a)", {"s.x = ?s.iffy(?s.a)"}},
        Accepted{"x = if (a, b, c)", {"s.x = if(?s.a, ?s.b, ?s.c)"}},
        Accepted{"inputvarx", {"input s.x"}}, Accepted{"inputvar = 1", {"s.inputvar = [1]"}},
        Accepted{"inputvar(x) = x", {"s.inputvar(x) = x"}}, Accepted{"X = x", {"s.X = ?s.x"}},
        Accepted{"_a1 = __", {"s._a1 = ?s.__"}}, Accepted{"x = a . b", {"s.x = ?s.a . b"}},
        Accepted{"x = a/**/./**/b(1)", {"s.x = ?s.a/**/./**/b([1])"}},
        Accepted{"x = a.b.c", {"s.x = ?s.a.b.c"}}, Accepted{"x = {a}", {"s.x = unamed(?s.a)"}},
        Accepted{"x = { {a, b}, c }", {"s.x = unamed(unamed(?s.a, ?s.b), ?s.c)"}}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, AcceptedScriptTest,
    ::testing::Values(Accepted{"x = 5.", {"s.x = [5]"}}, Accepted{"x = .5", {"s.x = [0.5]"}},
                      Accepted{"x = +3", {"s.x = [3]"}}, Accepted{"x = -.5", {"s.x = [-0.5]"}},
                      Accepted{"x = 1e3", {"s.x = [1000]"}}, Accepted{"x = 1E+2", {"s.x = [100]"}},
                      Accepted{"x = 12e-1", {"s.x = [1.2]"}}, Accepted{"x = 5.e1", {"s.x = [50]"}},
                      Accepted{"x = 0.7", {"s.x = [0.7]"}}, Accepted{"x = 1e400", {"s.x = [inf]"}},
                      Accepted{"x = -1e400", {"s.x = [-inf]"}},
                      Accepted{"x = 1e-400", {"s.x = [0]"}}, Accepted{"x = 018", {"s.x = [18]"}},
                      Accepted{"x = a[1.5]", {"s.x = Slice(?s.a, [1.5])"}},
                      Accepted{"x = a[1 .. 3]", {"s.x = Slice(?s.a, [1 2 3])"}},
                      Accepted{"x = a[2..2]", {"s.x = Slice(?s.a, [2])"}},
                      Accepted{"x = a[i + 1]", {"s.x = Slice(?s.a, add(?s.i, [1]))"}},
                      Accepted{"x = a[5000000000]", {"s.x = Slice(?s.a, [5e+09])"}}));

INSTANTIATE_TEST_SUITE_P(
    LinesAndComments, AcceptedScriptTest,
    ::testing::Values(Accepted{"", {}}, Accepted{"\n\n \t\n", {}}, Accepted{" \t\v\f", {}},
                      Accepted{"x = 1", {"s.x = [1]"}}, Accepted{"x = 1;", {"s.x = [1]"}},
                      Accepted{"x = 1 // note\n\ny = 2", {"s.x = [1]", "s.y = [2]"}},
                      Accepted{"x = 1 # note\r\n\r\ny = 2", {"s.x = [1]", "s.y = [2]"}},
                      Accepted{"x = 1 // note", {"s.x = [1]"}},
                      Accepted{"x = 1 // note\n", {"s.x = [1]"}},
                      Accepted{"x = 1; // note\ny = 2", {"s.x = [1]", "s.y = [2]"}},
                      Accepted{"f(a,\\\nb) = b", {"s.f(a, b) = b"}},
                      Accepted{"f(a,\\\r\nb) = b", {"s.f(a, b) = b"}},
                      Accepted{"f(a,/*\n*/b) = b", {"s.f(a, b) = b"}},
                      Accepted{"f(a, # note\nb) = b", {"s.f(a, b) = b"}},
                      Accepted{"x = 1\ry = 2\r", {"s.x = [1]", "s.y = [2]"}},
                      Accepted{"x = 1\n\ry = 2\n\r", {"s.x = [1]", "s.y = [2]"}},
                      Accepted{"/**/x/***/=/* * / */1/*/*/", {"s.x = [1]"}},
                      Accepted{"/* // */ x = 1 // /*\n", {"s.x = [1]"}},
                      Accepted{"\\\nx\\\n=\\\n\\\n1", {"s.x = [1]"}},
                      Accepted{"x = 1\nx = 2", {"s.x = [1]", "s.x = [2]"}}));

INSTANTIATE_TEST_SUITE_P(
    Texts, AcceptedScriptTest,
    ::testing::Values(
        Accepted{"x = f<\"\">(a)", {"s.x = ?s.f<\"\">(?s.a)"}},
        Accepted{"x = f<\"  a  b \" >(a)", {"s.x = ?s.f<\"  a  b \">(?s.a)"}},
        Accepted{"x = f<\"a\nb\">(a)", {"s.x = ?s.f<\"a\nb\">(?s.a)"}},
        Accepted{"x = f<\"a\r\nb\">(a)", {"s.x = ?s.f<\"a\r\nb\">(?s.a)"}},
        Accepted{"x = f<\"a # b\" c\nd\">(a)", {"s.x = ?s.f<\"a # b\" c\nd\">(?s.a)"}},
        Accepted{"x = f<\"a /*\"*/ b\">(a)", {"s.x = ?s.f<\"a /*\"*/ b\">(?s.a)"}},
        Accepted{"x = f<\"a\\b\">(a)", {"s.x = ?s.f<\"a\\b\">(?s.a)"}},
        Accepted{"x = f<\"/*\">(a)", {"s.x = ?s.f<\"/*\">(?s.a)"}},
        Accepted{"x = f<\"$FILE_DIR$FILE_DIR\">(a)", {"s.x = ?s.f<\"dirdir\">(?s.a)"}}));

/// A number in a parameter list, and the value that comes of it.
using Number = std::pair<const char*, const char*>;

class ParameterNumberTest : public ::testing::TestWithParam<Number> {};

TEST_P(ParameterNumberTest, HasTheValueOfTheLastAlternativeThatMatched) {
    const ParsedScript script("x = f<" + std::string(GetParam().first) + ">(a)\n");
    EXPECT_THAT(script.descriptions(),
                ElementsAre("s.x = ?s.f<" + std::string(GetParam().second) + ">(?s.a)"));
}

INSTANTIATE_TEST_SUITE_P(
    All, ParameterNumberTest,
    ::testing::Values(Number{"12", "12"}, Number{"-12", "-12"}, Number{"+12", "12"},
                      Number{"0", "0"}, Number{"012", "10"}, Number{"018", "1"}, Number{"09", "9"},
                      Number{"0x1F", "31"}, Number{"0x1f", "31"}, Number{"1.5", "1.5f"},
                      Number{"1e3", "1000f"}, Number{".5", "0.5f"}, Number{"-1.5", "-1.5f"},
                      Number{"012.5", "12.5f"}, Number{"5.", "5f"}, Number{"4294967295", "-1"},
                      Number{"2147483648", "-2147483648"}, Number{"-2147483648", "-2147483648"},
                      Number{"0xFFFFFFFF", "-1"}, Number{"037777777777", "-1"},
                      Number{"0.7", "0.7f"}));

/// A script that is refused, with all that is reported at ERROR level.
struct Refused {
    const char* m_szScript;
    std::vector<std::string> m_vErrors;

    friend std::ostream& operator<<(std::ostream& out_Stream, const Refused& in_Case) {
        return out_Stream << ::testing::PrintToString(in_Case.m_szScript);
    }
};

class RefusedScriptTest : public ::testing::TestWithParam<Refused> {};

TEST_P(RefusedScriptTest, FailsWithItsReports) {
    const LogCapture log("quillmark.math.xpr.ScriptParser");
    const AssertionCapture assertions;
    const ParsedScript script(GetParam().m_szScript);
    EXPECT_TRUE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAre());
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAreArray(GetParam().m_vErrors));
}

std::string syntaxError(int in_iLine, int in_iColumn) {
    return "syntax error:" + position(in_iLine, in_iColumn);
}

std::string expecting(const char* in_szToken, int in_iLine, int in_iColumn) {
    return syntaxError(in_iLine, in_iColumn) + " Expecting '" + in_szToken +
           "', but found something else.";
}

INSTANTIATE_TEST_SUITE_P(
    WithoutAGuard, RefusedScriptTest,
    ::testing::Values(
        Refused{";", {syntaxError(1, 1)}}, Refused{")", {syntaxError(1, 1)}},
        Refused{"a.b = 1", {syntaxError(1, 1)}}, Refused{"x = -y", {syntaxError(1, 1)}},
        Refused{"x = - 2", {syntaxError(1, 1)}}, Refused{"x = .", {syntaxError(1, 1)}},
        Refused{"x = 1e", {syntaxError(1, 1)}}, Refused{"x = 1.e+", {syntaxError(1, 1)}},
        Refused{"f() = ", {syntaxError(1, 1)}}, Refused{"x", {syntaxError(1, 1)}},
        Refused{"3 = x", {syntaxError(1, 1)}}, Refused{"inputvar", {syntaxError(1, 1)}},
        Refused{"  /* c */ \\\n  ? = 1", {syntaxError(2, 3)}},
        Refused{"x = {}", {syntaxError(1, 1)}}, Refused{"/* unclosed\n x = 1", {syntaxError(1, 1)}},
        Refused{"\\ \nx = 1", {syntaxError(1, 1)}}));

INSTANTIATE_TEST_SUITE_P(
    EndOfLine, RefusedScriptTest,
    ::testing::Values(Refused{"x = 1 2", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
                      Refused{"x = 1 // note\ny = 2", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
                      Refused{"x = 3..5", {expecting("EOL", 1, 7), syntaxError(1, 1)}},
                      Refused{"inputvar a = 1", {expecting("EOL", 1, 11), syntaxError(1, 1)}},
                      Refused{"x = a b", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
                      Refused{"x = a()  b", {expecting("EOL", 1, 8), syntaxError(1, 1)}},
                      Refused{"x = 1 /* unclosed", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
                      Refused{"f(x) = x x", {expecting("EOL", 1, 9), syntaxError(1, 1)}},
                      Refused{"x = 1e5.5", {expecting("EOL", 1, 8), syntaxError(1, 1)}},
                      Refused{"x = 0x10", {expecting("EOL", 1, 6), syntaxError(1, 1)}}));

INSTANTIATE_TEST_SUITE_P(
    MissingTokens, RefusedScriptTest,
    ::testing::Values(
        // The third alternative of the definition, and the fourth.
        Refused{"f(a,\nb) = a", {expecting(")", 1, 4), expecting(")", 1, 3), syntaxError(1, 1)}},
        Refused{"f(a  b) = a", {expecting(")", 1, 4), expecting(")", 1, 3), syntaxError(1, 1)}},
        Refused{"f(1) = 1", {expecting(")", 1, 3), syntaxError(1, 1)}},
        Refused{"f<p  (x) = x", {expecting(">", 1, 4), expecting(">", 1, 4), syntaxError(1, 1)}},
        Refused{"f<p>  = 1", {expecting("(", 1, 5), syntaxError(1, 1)}},
        Refused{"f<p>(1) = 1", {expecting(")", 1, 6), syntaxError(1, 1)}},
        Refused{"f<p>(x = 1", {expecting(")", 1, 7), expecting(")", 1, 6), syntaxError(1, 1)}},
        // A call: its third alternative, its fourth, and the end of the statement that took the
        // name alone.
        Refused{"x = f(a  b)",
                {expecting(")", 1, 8), expecting(")", 1, 7), expecting("EOL", 1, 6),
                 syntaxError(1, 1)}},
        Refused{"x = f(", {expecting(")", 1, 7), expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = f<1  (a)",
                {expecting(">", 1, 8), expecting(">", 1, 8), expecting("EOL", 1, 6),
                 syntaxError(1, 1)}},
        Refused{"x = f<1>  a", {expecting("(", 1, 9), expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = f<1>(a",
                {expecting(")", 1, 11), expecting(")", 1, 10), expecting("EOL", 1, 6),
                 syntaxError(1, 1)}},
        Refused{"x = f<4294967296>(a)", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = f<0X1F>(a)",
                {expecting(">", 1, 8), expecting(">", 1, 8), expecting("EOL", 1, 6),
                 syntaxError(1, 1)}},
        Refused{"x = f<\"a#b\">(x)", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = f<>(a)", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = (a  b)", {expecting(")", 1, 7), syntaxError(1, 1)}},
        Refused{"x = {a  b}", {expecting("}", 1, 7), syntaxError(1, 1)}},
        Refused{"x = {a, }", {expecting("}", 1, 7), syntaxError(1, 1)}},
        Refused{"x = a[1  2]", {expecting("]", 1, 8), expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = a[1..]", {expecting("]", 1, 9), expecting("EOL", 1, 6), syntaxError(1, 1)}},
        Refused{"x = a[]", {expecting("EOL", 1, 6), syntaxError(1, 1)}},
        // The operator's parenthesis, then those of the call of a function named "if".
        Refused{"x = if(a, b, c  d)",
                {expecting(")", 1, 15), expecting(")", 1, 15), expecting(")", 1, 8),
                 expecting("EOL", 1, 7), syntaxError(1, 1)}}));

TEST(ScriptGrammarTest, ReportStaysWhenALaterAlternativeMatches) {
    const LogCapture log;
    // The operator takes three operands; the function of that name takes any number.
    const ParsedScript script("x = if(a, b, c, d)\n");
    EXPECT_FALSE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAre("s.x = ?s.if(?s.a, ?s.b, ?s.c, ?s.d)"));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAre(expecting(")", 1, 15)));
}

TEST(ScriptGrammarTest, ComparisonIsReadAsAParameterList) {
    const LogCapture log("quillmark.math.xpr.ScriptParser");
    const AssertionCapture assertions;
    EXPECT_TRUE(ParsedScript("x = a < b").failed);
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre(expecting(">", 1, 10), expecting(">", 1, 10), expecting("EOL", 1, 6),
                            syntaxError(1, 1)));
    EXPECT_EQ(assertions.count("!m_pScriptParser->m_pCurrentFunction.isNull()"), 2U);
}

TEST(ScriptGrammarTest, FirstFailedStatementEndsTheScript) {
    const LogCapture log;
    const ParsedScript script("x = 1;;\ny = 2\n");
    EXPECT_TRUE(script.failed);
    EXPECT_THAT(script.descriptions(), ElementsAre("s.x = [1]"));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), ElementsAre(syntaxError(1, 7)));
}

TEST(ScriptGrammarTest, LiteralIsTheNearestDouble) {
    for (const double dValue : {0.7, 0.1, 1.1, 2.3e-7, 123456.789, 9007199254740993.0, 4.9e-324}) {
        std::ostringstream text;
        text.precision(17);
        text << "x = " << dValue;
        const ParsedScript script(text.str());
        ASSERT_EQ(script.expressions.size(), 1U);
        DoubleVector vValue;
        ASSERT_TRUE(script.expressions[0]->evaluate(vValue));
        EXPECT_EQ(vValue[0], dValue) << text.str();
    }
}

} // namespace
