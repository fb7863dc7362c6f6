#include <velmora/ParameterTrie.h>

#include <gtest/gtest.h>

#include <string>

namespace Velmora {
namespace {

/// Which getters read a value, and what the boolean one reads.
struct GetterCase {
    const char* m_szWhat;
    ParameterValue m_value;
    bool m_bInt;
    bool m_bFloat;
    bool m_bString;
    bool m_bBool;
    bool m_bBoolValue;
};

class ROConfigurationGetterTest : public testing::TestWithParam<GetterCase> {};

TEST_P(ROConfigurationGetterTest, ReadsItsOwnKindAndLeavesTheOutputAloneOtherwise) {
    const GetterCase& c = GetParam();
    ParameterTrie trie;
    ASSERT_TRUE(trie.setParameter("key", c.m_value));
    const ROConfiguration& configuration = trie;

    int iValue = 77;
    EXPECT_EQ(c.m_bInt, configuration.getIntParameter("key", iValue));
    EXPECT_EQ(c.m_bInt ? static_cast<int>(c.m_value) : 77, iValue);

    float fValue = 77.0F;
    EXPECT_EQ(c.m_bFloat, configuration.getFloatParameter("key", fValue));
    EXPECT_EQ(c.m_bFloat ? static_cast<float>(c.m_value) : 77.0F, fValue);

    std::string strValue("before");
    EXPECT_EQ(c.m_bString, configuration.getStringParameter("key", strValue));
    EXPECT_EQ(c.m_bString ? c.m_value.getString() : "before", strValue);

    for (const bool bBefore : {false, true}) {
        bool bValue = bBefore;
        EXPECT_EQ(c.m_bBool, configuration.getBoolParameter("key", bValue));
        EXPECT_EQ(c.m_bBool ? c.m_bBoolValue : bBefore, bValue);
    }

    ParameterValue value("before");
    EXPECT_EQ(!c.m_value.isEmpty(), configuration.getParameter("key", value));
    EXPECT_EQ(c.m_value.isEmpty() ? ParameterValue("before") : c.m_value, value);
    EXPECT_EQ(!c.m_value.isEmpty(), configuration.parameterDefined("key"));
}

INSTANTIATE_TEST_SUITE_P(
    All, ROConfigurationGetterTest,
    testing::Values(GetterCase{"Empty", ParameterValue(), false, false, false, false, false},
                    GetterCase{"Zero", ParameterValue(0), true, false, false, true, false},
                    GetterCase{"Int", ParameterValue(-4), true, false, false, true, true},
                    GetterCase{"Float", ParameterValue(1.0F), false, true, false, false, false},
                    GetterCase{"Text", ParameterValue("text"), false, false, true, false, false},
                    GetterCase{"EmptyText", ParameterValue(""), false, false, true, false, false},
                    GetterCase{"True", ParameterValue("true"), false, false, true, true, true},
                    GetterCase{"False", ParameterValue("false"), false, false, true, true, false},
                    GetterCase{"UpperTrue", ParameterValue("TRUE"), false, false, true, false,
                               false}),
    [](const testing::TestParamInfo<GetterCase>& in_info) { return in_info.param.m_szWhat; });

TEST(ParameterTrieTest, AMissingKeyIsReadByNoGetter) {
    const ParameterTrie trie;
    std::string strValue("before");
    int iValue = 77;
    bool bValue = true;
    float fValue = 77.0F;
    ParameterValue value(77);
    for (const char* szKey : {"missing", "", static_cast<const char*>(nullptr)}) {
        EXPECT_FALSE(trie.getStringParameter(szKey, strValue));
        EXPECT_FALSE(trie.getIntParameter(szKey, iValue));
        EXPECT_FALSE(trie.getBoolParameter(szKey, bValue));
        EXPECT_FALSE(trie.getFloatParameter(szKey, fValue));
        EXPECT_FALSE(trie.getParameter(szKey, value));
        EXPECT_FALSE(trie.parameterDefined(szKey));
    }
    EXPECT_EQ("before", strValue);
    EXPECT_EQ(77, iValue);
    EXPECT_TRUE(bValue);
    EXPECT_EQ(77.0F, fValue);
    EXPECT_EQ(ParameterValue(77), value);
}

TEST(ParameterTrieTest, TheLastValueOfAKeyCounts) {
    ParameterTrie trie;
    EXPECT_TRUE(trie.setParameter("key", 1));
    EXPECT_TRUE(trie.setParameter("key", "two"));
    EXPECT_TRUE(trie.setParameter("key.of.a.path", 3));
    std::string strValue;
    EXPECT_TRUE(trie.getStringParameter("key", strValue));
    EXPECT_EQ("two", strValue);
    EXPECT_TRUE(trie.setParameter("key", ParameterValue()));
    EXPECT_FALSE(trie.parameterDefined("key"));
}

TEST(ParameterTrieTest, ANullKeyIsRefused) {
    ParameterTrie trie;
    EXPECT_FALSE(trie.setParameter(nullptr, 1));
}

TEST(ParameterTrieTest, ACopyIsIndependent) {
    ParameterTrie trie;
    trie.setParameter("key", "text");
    const ParameterTrie copy(trie);
    trie.setParameter("key", 2);
    std::string strValue;
    EXPECT_TRUE(copy.getStringParameter("key", strValue));
    EXPECT_EQ("text", strValue);
}

} // namespace
} // namespace Velmora
