#include <velmora/OS.h>
#include <velmora/StringUtil.h>

#include <gtest/gtest.h>

#include <string>

namespace Velmora {
namespace {

struct PathCase {
    const char* m_szPath;
    const char* m_szDirectory;
    const char* m_szStem; // null: there is none
    bool m_bRelative;
};

class OSPathTest : public testing::TestWithParam<PathCase> {};

TEST_P(OSPathTest, IsTakenApart) {
    const PathCase& c = GetParam();
    std::string strDirectory("before");
    EXPECT_TRUE(OS::stripFileName(c.m_szPath, strDirectory));
    EXPECT_EQ(c.m_szDirectory, strDirectory);

    std::string strStem("before");
    EXPECT_EQ(c.m_szStem != nullptr, OS::stripPathAndExtension(c.m_szPath, strStem));
    EXPECT_EQ(c.m_szStem != nullptr ? c.m_szStem : "before", strStem);

    EXPECT_EQ(c.m_bRelative, OS::isPathRelative(c.m_szPath));
    EXPECT_EQ(c.m_bRelative, OS::isPathRelative(std::string(c.m_szPath)));
}

INSTANTIATE_TEST_SUITE_P(
    All, OSPathTest,
    testing::Values(PathCase{"dir/script.xpr", "dir", "script", true},
                    PathCase{"script.xpr", ".", "script", true},
                    PathCase{"script", ".", "script", true}, PathCase{"a/b", "a", "b", true},
                    PathCase{"a/b/c.d.e", "a/b", "c.d", true}, PathCase{"a//b", "a", "b", true},
                    PathCase{"a.b/c", "a.b", "c", true}, PathCase{"/x", "/", "x", false},
                    PathCase{"//x", "/", "x", false}, PathCase{"/a/x.xpr", "/a", "x", false},
                    PathCase{"/", "/", nullptr, false}, PathCase{"a/", "a", nullptr, true},
                    PathCase{"", ".", nullptr, true}, PathCase{".xpr", ".", ".xpr", true},
                    PathCase{"a/.hidden", "a", ".hidden", true},
                    PathCase{".a.xpr", ".", ".a", true}, PathCase{"./s.xpr", ".", "s", true},
                    PathCase{"../s.xpr", "..", "s", true}, PathCase{"s.", ".", "s", true}));

TEST(OSTest, ANullPathFailsAndLeavesTheOutputAlone) {
    std::string strOut("before");
    EXPECT_FALSE(OS::stripFileName(nullptr, strOut));
    EXPECT_FALSE(OS::stripPathAndExtension(nullptr, strOut));
    EXPECT_EQ("before", strOut);
    EXPECT_FALSE(OS::isPathRelative(static_cast<const char*>(nullptr)));
}

TEST(StringUtilTest, TokenizeSplitsAtTheDelimiterAndKeepsNoEmptyItem) {
    const struct {
        const char* m_szText;
        StringVector m_vItems;
    } cases[] = {
        {"a;b", {"a", "b"}},     {"a", {"a"}}, {"", {}}, {";;", {}}, {";a;;b c;", {"a", "b c"}},
        {"a,b;c", {"a,b", "c"}},
    };
    for (const auto& c : cases) {
        StringVector vItems{"before"};
        strTokenize(c.m_szText, vItems, ';');
        EXPECT_EQ(c.m_vItems, vItems) << c.m_szText;
    }
}

TEST(StringUtilTest, FindAndReplaceReplacesEveryOccurrence) {
    const struct {
        const char* m_szFrom;
        const char* m_szTo;
        const char* m_szText;
        const char* m_szResult;
    } cases[] = {
        {"$FILE_DIR", "/d", "$FILE_DIR/a $FILE_DIR", "/d/a /d"},
        {"$FILE_DIR", "", "$FILE_DIR/a", "/a"},
        {"a", "aa", "aba", "aabaa"},
        {"aa", "a", "aaaa", "aa"},
        {"x", "y", "abc", "abc"},
        {"", "y", "abc", "abc"},
        {"a", "b", "", ""},
    };
    for (const auto& c : cases) {
        std::string strText(c.m_szText);
        EXPECT_EQ(&strText, &strFindAndReplace(c.m_szFrom, c.m_szTo, strText));
        EXPECT_EQ(c.m_szResult, strText);
    }
}

TEST(StringUtilTest, ToLowerChangesTheLettersOfAsciiOnly) {
    std::string strText("FaLSE 1_Z\xC4");
    EXPECT_EQ(&strText, &strToLower(strText));
    EXPECT_EQ("false 1_z\xC4", strText);
    EXPECT_EQ("abc", strToLower("ABC"));
}

} // namespace
} // namespace Velmora
