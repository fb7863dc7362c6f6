#include "tools/vxpr/ScriptText.h"

#include "ScratchDirectory.h"
#include "tools/vxpr/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace Vxpr {

namespace {

ScriptText make(const std::string& in_strText) {
    return {"dir/s.xpr", "s", in_strText};
}

} // namespace

TEST(ScriptTextTest, LineEndsOfEverySystemCountOnce) {
    const ScriptText script = make("a\nb\r\nc\n\rd\re\n\nf");
    EXPECT_EQ(script.getLine(1), "a");
    EXPECT_EQ(script.getLine(2), "b");
    EXPECT_EQ(script.getLine(3), "c");
    EXPECT_EQ(script.getLine(4), "d");
    EXPECT_EQ(script.getLine(5), "e");
    EXPECT_EQ(script.getLine(6), "");
    EXPECT_EQ(script.getLine(7), "f");
    EXPECT_EQ(script.getLine(8), "");
    EXPECT_EQ(script.getLine(0), "");
}

TEST(ScriptTextTest, TabsGoToTheNextStopOfFour) {
    const ScriptText script = make("\ta\n \tb\n    \tc\n");
    EXPECT_EQ(script.getPosition(1).m_uiColumn, 5U);
    EXPECT_EQ(script.getPosition(5).m_uiLine, 2U);
    EXPECT_EQ(script.getPosition(5).m_uiColumn, 5U);
    EXPECT_EQ(script.getPosition(12).m_uiColumn, 9U);
}

TEST(ScriptTextTest, PositionsAndOffsetsBelongTogether) {
    const ScriptText script = make("\ta = 1\r\nbc = 2\n\n d");
    for (std::size_t uiOffset = 0; uiOffset < script.getText().size(); ++uiOffset) {
        if (script.getText()[uiOffset] != '\n' && script.getText()[uiOffset] != '\r') {
            EXPECT_EQ(script.getOffset(script.getPosition(uiOffset)), uiOffset);
        }
    }
    EXPECT_EQ(script.getOffset({9, 1}), script.getText().size());
}

TEST(ScriptTextTest, BlankedTextKeepsItsLinesAndColumns) {
    const ScriptText script = make("a\n\tb = 1\nc").blankOut(2, 8);
    EXPECT_EQ(script.getText(), "a\n\t     \nc");
    EXPECT_EQ(script.getName(), "s");
}

TEST(ScriptTextTest, AScriptThatNobodyMayReadIsRefusedWithAdvice) {
    const TestSupport::ScratchDirectory scratch;
    chmod(scratch.getPath().c_str(), 0755);
    const std::string strPath = scratch.write("s.xpr", "a = 1\n");
    chmod(strPath.c_str(), 0);
    const TestSupport::Unprivileged unprivileged;
    try {
        ScriptText::read(strPath);
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.getStatus(), ExitStatus::DataAtFault);
        EXPECT_THAT(failure.what(), testing::HasSubstr("Permission denied; give the file's readers "
                                                       "the right to read it"));
    }
}

} // namespace Vxpr
