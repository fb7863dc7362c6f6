#include <velmora/Exception.h>

#include <gtest/gtest.h>

#include <sstream>

namespace Velmora {
namespace {

TEST(ExceptionTest, WritesAndTellsItsText) {
    try {
        throw ExceptionWithMsg("failed to do it");
    } catch (const Exception& e) {
        EXPECT_STREQ("failed to do it", e.what());
        std::ostringstream stream;
        stream << e << "!";
        EXPECT_EQ("failed to do it!", stream.str());
    }
}

TEST(ExceptionTest, IsAStandardException) {
    EXPECT_THROW(throw ExceptionWithMsg("text"), std::exception);
    EXPECT_STREQ("", ExceptionWithMsg(static_cast<const char*>(nullptr)).what());
}

TEST(OutputStreamableTest, TheOperatorReturnsItsStream) {
    std::ostringstream stream;
    EXPECT_EQ(&stream, &(stream << static_cast<const OutputStreamable&>(ExceptionWithMsg("a"))));
}

} // namespace
} // namespace Velmora
