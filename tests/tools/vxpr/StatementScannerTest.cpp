#include "tools/vxpr/StatementScanner.h"

#include <gtest/gtest.h>

namespace Vxpr {

namespace {

ScriptText make(const std::string& in_strText) {
    return {"s.xpr", "s", in_strText};
}

/// The first statement with its end.
std::string takeFirst(const std::string& in_strText) {
    const ScriptText script = make(in_strText);
    return in_strText.substr(0, StatementScanner(script).findEnd(0));
}

} // namespace

TEST(StatementScannerTest, AStatementEndsAtItsLineEndOrSemicolon) {
    EXPECT_EQ(takeFirst("a = 1\nb = 2\n"), "a = 1\n");
    EXPECT_EQ(takeFirst("a = 1; b = 2\n"), "a = 1;");
    EXPECT_EQ(takeFirst("a = 1 + \\\n 2\nb = 2\n"), "a = 1 + \\\n 2\n");
    EXPECT_EQ(takeFirst("a = /* ;\n */ 1\nb"), "a = /* ;\n */ 1\n");
    EXPECT_EQ(takeFirst("a = f<\";\n\">(1)\nb"), "a = f<\";\n\">(1)\n");
    EXPECT_EQ(takeFirst("a = 1"), "a = 1");
    EXPECT_EQ(takeFirst("a = 1\r\nb"), "a = 1\r\n");
}

TEST(StatementScannerTest, ACommentEndsAStatementAsItsAuthorMeant) {
    EXPECT_EQ(takeFirst("a = 1 // note\nb = 2\n"), "a = 1");
}

TEST(StatementScannerTest, AStatementIsFoundByAnyOfItsCharacters) {
    const std::string strText = "a = 1\nb = 2; c = 3\n";
    const ScriptText script = make(strText);
    const StatementScanner scanner(script);
    EXPECT_EQ(scanner.findBegin(0), 0U);
    EXPECT_EQ(scanner.findBegin(4), 0U);
    EXPECT_EQ(scanner.findBegin(6), 6U);
    EXPECT_EQ(scanner.findBegin(14), 12U);
}

TEST(StatementScannerTest, TheNameThatAStatementDefinesIsFound) {
    const auto find = [](const std::string& in_strText) {
        const ScriptText script = make(in_strText);
        return StatementScanner(script).findDefinedName(0);
    };
    EXPECT_EQ(find("level = ("), "level");
    EXPECT_EQ(find("// first\n\n  smooth<n>(x = 1"), "");
    EXPECT_EQ(find("  smooth<n>(x = 1"), "smooth");
    EXPECT_EQ(find("inputvar frame = 1"), "frame");
    EXPECT_EQ(find("inputvar = ("), "inputvar");
    EXPECT_EQ(find("(a)"), "");
}

TEST(StatementScannerTest, InputsAreFoundWhereTheyAreDeclared) {
    const ScriptText script = make("// inputvar x\ninputvar y\n inputvar x; inputvar x\n");
    const StatementScanner scanner(script);
    const auto first = scanner.findInput("x", 0);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->m_Position.m_uiLine, 3U);
    EXPECT_EQ(first->m_Position.m_uiColumn, 11U);
    EXPECT_EQ(scanner.findInput("x", 1)->m_Position.m_uiColumn, 23U);
    EXPECT_FALSE(scanner.findInput("x", 2));
    EXPECT_FALSE(scanner.findInput("z", 0));
}

TEST(StatementScannerTest, WhatIsInCommentsAndStringsIsNoMistake) {
    const ScriptText script = make("a = f<\"^ - x\">(1) /* == ^ */\n");
    EXPECT_FALSE(StatementScanner(script).findMistake(0));
    EXPECT_FALSE(StatementScanner(script).findCharacter('^'));
}

TEST(StatementScannerTest, MinusSignsThatTheLanguageHasAreNoMistake) {
    for (const char* szText : {"a = b - c\n", "a = -2\n", "a = b -2\n", "a = b - -2\n",
                               "a = f(-.5)\n", "a = b[0] - c\n", "a = (b) - {c} - f(d)\n"}) {
        const ScriptText script = make(szText);
        EXPECT_FALSE(StatementScanner(script).findMistake(0)) << szText;
    }
}

} // namespace Vxpr
