#include <velmora/Exception.h>
#include <velmora/ParameterInfoDB.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace Velmora {
namespace {

void declare(const char* in_szKey, const char* in_szDescription,
             const ParameterValue* in_pDefault = nullptr) {
    ParameterInfoDB::getNonConstInstance().declareParameter(in_szKey, 1, in_pDefault, false, false,
                                                            false, in_szDescription);
}

std::size_t countOf(const char* in_szKey) {
    const std::vector<ParameterInfo> vInfos = ParameterInfoDB::getInstance().getParameters();
    return static_cast<std::size_t>(
        std::count_if(vInfos.begin(), vInfos.end(), [in_szKey](const ParameterInfo& in_info) {
            return in_info.key == in_szKey;
        }));
}

TEST(ParameterInfoDBTest, ADeclaredParameterCanBeRead) {
    const ParameterValue defaultValue("here");
    ParameterInfoDB::getNonConstInstance().declareParameter(
        "ParameterInfoDBTest.read", 1, &defaultValue, true, false, true, "What it is.");
    ParameterInfo info;
    ASSERT_TRUE(ParameterInfoDB::getInstance().findParameter("ParameterInfoDBTest.read", info));
    EXPECT_EQ("ParameterInfoDBTest.read", info.key);
    EXPECT_EQ(1, info.kind);
    EXPECT_EQ(defaultValue, info.defaultValue);
    EXPECT_TRUE(info.optional);
    EXPECT_FALSE(info.hidden);
    EXPECT_TRUE(info.deprecated);
    EXPECT_EQ("What it is.", info.description);
}

TEST(ParameterInfoDBTest, AnUndeclaredParameterIsNotFound) {
    ParameterInfo info;
    info.description = "before";
    EXPECT_FALSE(ParameterInfoDB::getInstance().findParameter("ParameterInfoDBTest.none", info));
    EXPECT_FALSE(ParameterInfoDB::getInstance().findParameter(nullptr, info));
    EXPECT_EQ("before", info.description);
}

TEST(ParameterInfoDBTest, TheSameDeclarationTwiceIsOneParameter) {
    declare("ParameterInfoDBTest.twice", "text");
    EXPECT_NO_THROW(declare("ParameterInfoDBTest.twice", "text"));
    EXPECT_EQ(1u, countOf("ParameterInfoDBTest.twice"));
}

TEST(ParameterInfoDBTest, AnotherDeclarationOfAKeyIsRefusedAndTheFirstStands) {
    declare("ParameterInfoDBTest.other", "first");
    const ParameterValue defaultValue(1);
    EXPECT_THROW(declare("ParameterInfoDBTest.other", "second"), Exception);
    EXPECT_THROW(declare("ParameterInfoDBTest.other", "first", &defaultValue), Exception);
    ParameterInfo info;
    ASSERT_TRUE(ParameterInfoDB::getInstance().findParameter("ParameterInfoDBTest.other", info));
    EXPECT_EQ("first", info.description);
    EXPECT_TRUE(info.defaultValue.isEmpty());
}

TEST(ParameterInfoDBTest, ADeclarationWithoutAKeyIsRefused) {
    EXPECT_THROW(declare(nullptr, "text"), Exception);
    EXPECT_THROW(declare("", "text"), Exception);
    EXPECT_EQ(0u, countOf(""));
}

} // namespace
} // namespace Velmora
