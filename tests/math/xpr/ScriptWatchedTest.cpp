// What a script becomes doesn't depend on whether somebody reads the log, where every trial of the
// grammar can be seen: trials that nobody sees are left out.

#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/MemAccounts.h>

#include "math/xpr/ParsedScript.h"
#include "math/xpr/RandomScript.h"
#include "math/xpr/src/ScriptNames.h"
#include "support/AssertionCapture.h"
#include "support/LogCapture.h"

namespace {

using namespace Velmora;
using namespace Velmora::Math::Xpr;
using namespace Velmora::Testing;

constexpr const char* ParserLogger = "quillmark.math.xpr.ScriptParser";

/// All that a reader of a script gets, a line each.
std::vector<std::string> read(const std::string& in_strScript, log4cplus::LogLevel in_Level) {
    const AssertionCapture assertions;
    const LogCapture log(ParserLogger, in_Level);
    const ParsedScript script(in_strScript);
    std::vector<std::string> vLines = script.descriptions();
    for (const Handle<Expression>& pExpression : script.expressions) {
        vLines.push_back(sourceInfo(pExpression));
    }
    for (const std::string& strMessage : log.messages(log4cplus::ERROR_LOG_LEVEL)) {
        vLines.push_back(strMessage);
    }
    vLines.push_back(script.failed ? "failed" : "whole");
    return vLines;
}

void expectSame(const std::string& in_strScript) {
    EXPECT_EQ(read(in_strScript, log4cplus::TRACE_LOG_LEVEL),
              read(in_strScript, log4cplus::ERROR_LOG_LEVEL))
        << in_strScript;
}

class ScriptWatchedTest : public ::testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Scripts, ScriptWatchedTest,
    ::testing::Values(
        "x = 1", "x", "x =", "x = y", "inputvar x", "inputvar", "inputvar (x)", "inputvar = 1",
        "inputvar(x) = x", "f(x) = x + y", "f(x, z) = x + y", "f() = y", "f<p>() = g<p>()",
        "f <p> (x, y) = g <p, 1> (x) + y", "f(", "f<", "f<p", "f(x", "f(x) =", "f(x) = (",
        "x = g()", "x = g(", "x = g<1>(", "x = g<1>", "x = g<", "x = s.g(1)", "x = s.t.g(1)",
        "x = s . t . g (1)", "x = s.", "x = s.1", "x = s.(1)", "x = s. /* c */ t /* c */ (1)",
        "x = g /* c */ (1)", "x = g // c\n(1)", "x = g # c\n(1)", "x = g \\\n(1)",
        "x /* c */ (a) = a", "x # c\n(a) = a", "x = a / b", "x = a /b/ c", "x = a /(b)",
        "x = if(1, 2, 3)", "x = if (a, b)", "x = if", "if = 1", "if(x) = x", "x = a[0]",
        "x = a(1)[0]", "x = {a, b(1)}", "x = {a", "x = -a(1)", "x = +a", "x = (a)(1)", "x = a ^ 2",
        "x = a ^ b(1)", "_ = _a(_1)", "x = a\v(1)", "x = a\f<1>(2)", "x\t(a) = a", "x = \xe4(1)",
        "\xe4 = 1", "x = a\xe4(1)", "x = a; y = b(a); z(a) = x", "x = a\r\ny = b\r\n", ""));

TEST_P(ScriptWatchedTest, BecomesTheSame) {
    expectSame(GetParam());
}

TEST(ScriptWatched, WhatWasMangledAtRandomBecomesTheSame) {
    static const std::string s_strCharacters = "()<>[]{}.,/*#\\\n\r \t\"=+-^x1_;";
    for (std::uint64_t uiSeed = 0; uiSeed != 300; ++uiSeed) {
        std::string strScript = RandomScript::join(RandomScript(uiSeed).getLines());
        std::mt19937_64 random(uiSeed);
        for (int iEdit = 0; iEdit != 8; ++iEdit) {
            const std::size_t uiAt = random() % strScript.size();
            const char c = s_strCharacters[random() % s_strCharacters.size()];
            if (random() % 2 == 0) {
                strScript.insert(uiAt, 1, c);
            } else {
                strScript[uiAt] = c;
            }
            expectSame(strScript);
        }
    }
}

/// Blocks that an account has given out while a script was read.
std::size_t blocksOf(const char* in_szAccount, const char* in_szScript) {
    const auto total = [&] {
        for (const MemAccount& account : MemAccounts::snapshot()) {
            if (account.name == in_szAccount) {
                return account.totalBlocks;
            }
        }
        return std::size_t{0};
    };
    const std::size_t uiBefore = total();
    const ParsedScript script(in_szScript);
    return total() - uiBefore;
}

TEST(ScriptWatched, FailedAlternativesMakeNodesAndDropThem) {
    const LogCapture log(ParserLogger, log4cplus::DEBUG_LOG_LEVEL);
    EXPECT_EQ(blocksOf("ScriptFunctionImpl", "x = 1"), 4U);
    EXPECT_EQ(blocksOf("UnknownFunction", "x = a"), 4U);
    EXPECT_EQ(blocksOf("UnknownVariable", "x = a"), 1U);
    EXPECT_EQ(blocksOf("UnknownFunction", "x = a<1>()"), 2U);
    // An integer, an unsigned one, and the octal one that counts.
    EXPECT_EQ(blocksOf("ParameterImpl", "x = a<012>(b)"), 3U + 1U);
}

TEST(ScriptWatched, NodesThatNobodySeesAreNotMade) {
    EXPECT_EQ(blocksOf("ScriptFunctionImpl", "x = a.b / 2"), 0U);
    EXPECT_EQ(blocksOf("UnknownFunction", "x = a.b / 2"), 0U);
    EXPECT_EQ(blocksOf("UnknownVariable", "x = a.b / 2"), 1U);
    EXPECT_EQ(blocksOf("UnknownFunction", "x = a<1>()"), 2U);
    EXPECT_EQ(blocksOf("ScriptFunctionImpl", "f(x) = x"), 3U);
}

bool mayBegin(const std::string& in_strText) {
    return mayBeginCall(in_strText.data(), in_strText.data() + in_strText.size());
}

TEST(ScriptNamesTest, ACallBeginsWithANameAndABracket) {
    for (const char* szText : {"a(", "a<", "_(", "a1 (", "a\t<", "a.b(", "a . b <", "a.b.c\v\f("}) {
        EXPECT_TRUE(mayBegin(szText)) << szText;
    }
    for (const char* szText :
         {"", "1(", "(", "a", "a ", "a[", "a +(", "a.b", "a.", "a.(", "a.1(", "a b(", "a\n("}) {
        EXPECT_FALSE(mayBegin(szText)) << szText;
    }
}

TEST(ScriptNamesTest, ACommentMayHideTheBracket) {
    for (const char* szText : {"a/*", "a //", "a #", "a \\", "a. /*", "a.#"}) {
        EXPECT_TRUE(mayBegin(szText)) << szText;
    }
    EXPECT_FALSE(mayBegin("a / b("));
    EXPECT_FALSE(mayBegin("a /"));
}

TEST(ScriptNamesTest, ManyBlanksMayHideTheBracket) {
    for (const char* szName : {"a", "a."}) {
        const std::string strName = szName;
        EXPECT_FALSE(mayBegin(strName + std::string(64, ' ') + "1"));
        EXPECT_TRUE(mayBegin(strName + std::string(65, ' ') + "1"));
        EXPECT_FALSE(mayBegin(strName + std::string(64, ' ')));
    }
    EXPECT_TRUE(mayBegin("a" + std::string(64, '\t') + "("));
    EXPECT_TRUE(mayBegin("a" + std::string(1000, '\f') + "("));
}

TEST(ScriptWatched, ManyBlanksMakeNoDifference) {
    const std::string strBlanks(100, ' ');
    for (const char* szBehind : {"+ b", "(b)", "<1>(b)", ".b", ".b(c)", ". 1", "", "b"}) {
        expectSame("x = a" + strBlanks + szBehind);
        expectSame("x = a." + strBlanks + szBehind);
        expectSame("a" + strBlanks + szBehind + " = b");
    }
}

TEST(ScriptNamesTest, ANameEndsAheadOfWhatIsNeitherLetterNorDigit) {
    const std::string strText = "_a1 b";
    const char* pText = strText.data();
    EXPECT_EQ(nameEnd(pText, pText + strText.size()), pText + 3);
    EXPECT_EQ(nameEnd(pText, pText + 2), pText + 2);
    EXPECT_EQ(nameEnd(pText + 2, pText + 5), pText + 2);
    EXPECT_EQ(nameEnd(pText, pText), pText);
}

} // namespace
