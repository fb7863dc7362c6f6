#include <gtest/gtest.h>

#include <string>

#include "math/xpr/src/ScriptIterator.h"

namespace {

using Velmora::Math::Xpr::positionText;
using Velmora::Math::Xpr::ScriptIterator;

ScriptIterator over(const std::string& in_strText) {
    return ScriptIterator(in_strText.data(), in_strText.data() + in_strText.size(), "s");
}

TEST(ScriptIteratorTest, AllEndsAreEqual) {
    const std::string strText = "ab";
    ScriptIterator position = over(strText);
    const ScriptIterator end;
    EXPECT_NE(position, end);
    EXPECT_NE(end, position);
    const ScriptIterator first = position++;
    EXPECT_NE(position, first);
    ++position;
    EXPECT_EQ(position, end);
    EXPECT_EQ(position, over(std::string()));
    EXPECT_EQ(first, over(strText));
}

TEST(ScriptIteratorTest, LineEndIsOneStep) {
    const std::string strText = "\r\n\n\r\n\n\r\rx";
    ScriptIterator position = over(strText);
    // Pairs and singles: "\r\n", "\n\r", "\n", "\n\r", "\r".
    std::size_t uiLine = 1;
    while (*position != 'x') {
        ++position;
        EXPECT_EQ(position.getLine(), ++uiLine);
        EXPECT_EQ(position.getColumn(), 1U);
    }
    EXPECT_EQ(uiLine, 6U);
}

TEST(ScriptIteratorTest, TabGoesToTheNextStop) {
    const std::string strText = "\t\ta\tabc\tabcd\tx";
    ScriptIterator position = over(strText);
    std::size_t uiStop = 1;
    for (const std::size_t uiColumn : {5U, 9U, 13U, 17U, 25U}) {
        while (*position != '\t') {
            ++position;
        }
        ++position;
        EXPECT_EQ(position.getColumn(), uiColumn) << uiStop++;
    }
}

TEST(ScriptIteratorTest, PositionHasItsForm) {
    const std::string strText = "\n  x";
    ScriptIterator position = over(strText);
    ++position;
    ++position;
    EXPECT_EQ(positionText(position), "<file_position fileName=\"s\" line=\"2\" column=\"2\"/>");
    EXPECT_EQ(positionText(ScriptIterator()),
              "<file_position fileName=\"\" line=\"1\" column=\"1\"/>");
}

} // namespace
