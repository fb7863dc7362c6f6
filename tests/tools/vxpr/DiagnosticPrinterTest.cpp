#include "tools/vxpr/DiagnosticPrinter.h"

#include <gtest/gtest.h>

namespace Vxpr {

namespace {

std::string format(const std::string& in_strScript, const ScriptText::Position& in_Position) {
    ScriptLibrary library;
    library.add({"dir/s.xpr", "s", in_strScript});
    return DiagnosticPrinter(library).format(
        {Diagnostic::Severity::Error, SourcePosition{"s", in_Position}, "wrong"});
}

} // namespace

TEST(DiagnosticPrinterTest, TheCaretStandsBeneathThePlace) {
    EXPECT_EQ(format("a = 1\nb = 2 2\n", {2, 7}),
              "dir/s.xpr:2:7: error: wrong\n    2 | b = 2 2\n      |       ^\n");
}

TEST(DiagnosticPrinterTest, TabsAreShownAsTheColumnsCountThem) {
    EXPECT_EQ(format("\tb\tc\n", {1, 9}),
              "dir/s.xpr:1:9: error: wrong\n    1 |     b   c\n      |         ^\n");
}

TEST(DiagnosticPrinterTest, CharactersOfSeveralBytesTakeOneColumn) {
    EXPECT_EQ(format("/* \xc3\xb6 */ x\n", {1, 10}),
              "dir/s.xpr:1:10: error: wrong\n    1 | /* \xc3\xb6 */ x\n      |         ^\n");
}

TEST(DiagnosticPrinterTest, NothingThatATerminalWouldObeyIsShown) {
    EXPECT_EQ(format("a\x1b[2J\n", {1, 2}),
              "dir/s.xpr:1:2: error: wrong\n    1 | a?[2J\n      |  ^\n");
}

TEST(DiagnosticPrinterTest, OfALongLineThePartAroundThePlaceIsShown) {
    const std::string strLine = std::string(300, 'a') + "!" + std::string(300, 'b');
    EXPECT_EQ(format(strLine, {1, 301}), "dir/s.xpr:1:301: error: wrong\n    1 | ..." +
                                             std::string(100, 'a') + "!" + std::string(59, 'b') +
                                             "...\n      | " + std::string(103, ' ') + "^\n");
}

TEST(DiagnosticPrinterTest, APlaceBehindTheEndOfTheLineIsItsEnd) {
    EXPECT_EQ(format("ab\n", {1, 9}), "dir/s.xpr:1:9: error: wrong\n    1 | ab\n      |   ^\n");
}

TEST(DiagnosticPrinterTest, AScriptThatNobodyHasIsCalledByItsName) {
    ScriptLibrary library;
    EXPECT_EQ(DiagnosticPrinter(library).format(
                  {Diagnostic::Severity::Warning, SourcePosition{"t", {3, 4}}, "odd"}),
              "t:3:4: warning: odd\n");
    EXPECT_EQ(DiagnosticPrinter(library).format({Diagnostic::Severity::Note, std::nullopt, "so"}),
              "vxpr: note: so\n");
}

TEST(DiagnosticPrinterTest, PositionsOfTheEngineAreRead) {
    const std::string strMessage =
        "syntax error:<file_position fileName=\"s\" line=\"3\" column=\"8\"/> Expecting";
    const auto position = findPosition(strMessage);
    ASSERT_TRUE(position);
    EXPECT_EQ(position->m_Position, (SourcePosition{"s", {3, 8}}));
    EXPECT_EQ(strMessage.substr(position->m_uiEnd), " Expecting");
    EXPECT_FALSE(findPosition("nothing of the kind"));
    EXPECT_FALSE(findPosition("<file_position fileName=\"s\" line=\"x\" column=\"8\"/>"));
}

} // namespace Vxpr
