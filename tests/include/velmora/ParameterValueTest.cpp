#include <velmora/ParameterValue.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/AssertionCapture.h"

#include <cmath>
#include <iomanip>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

namespace Velmora {
namespace {

std::string textOf(const ParameterValue& in_value) {
    std::ostringstream stream;
    stream << in_value;
    return stream.str();
}

struct ValueCase {
    const char* m_szWhat;
    ParameterValue m_value;
    int m_iTag;
    const char* m_szString;
    int m_iInt;
    float m_fFloat;
    const char* m_szWritten;
};

class ParameterValueKindTest : public testing::TestWithParam<ValueCase> {};

TEST_P(ParameterValueKindTest, GivesWhatItHoldsAndNothingForTheOtherKinds) {
    const ValueCase& c = GetParam();
    EXPECT_EQ(c.m_iTag, c.m_value.getTag());
    EXPECT_EQ(c.m_iTag == 0, c.m_value.isEmpty());
    EXPECT_STREQ(c.m_szString, c.m_value.getString());
    EXPECT_EQ(c.m_iInt, static_cast<int>(c.m_value));
    EXPECT_EQ(c.m_fFloat, static_cast<float>(c.m_value));
    EXPECT_EQ(c.m_szWritten, textOf(c.m_value));
}

TEST_P(ParameterValueKindTest, CopiesAreEqualAndOutliveTheirSource) {
    const ValueCase& c = GetParam();
    auto pSource = std::make_unique<ParameterValue>(c.m_value);
    const ParameterValue copy(*pSource);
    ParameterValue assigned("before");
    assigned = *pSource;
    pSource.reset();
    EXPECT_EQ(c.m_value, copy);
    EXPECT_EQ(c.m_value, assigned);
    EXPECT_EQ(c.m_szWritten, textOf(copy));
    EXPECT_EQ(c.m_szWritten, textOf(assigned));
}

TEST_P(ParameterValueKindTest, AMoveCarriesTheValueOver) {
    ParameterValue source(GetParam().m_value);
    ParameterValue moved(std::move(source));
    EXPECT_EQ(GetParam().m_value, moved);
    ParameterValue assigned(1);
    assigned = std::move(moved);
    EXPECT_EQ(GetParam().m_value, assigned);
}

INSTANTIATE_TEST_SUITE_P(
    All, ParameterValueKindTest,
    testing::Values(ValueCase{"Empty", ParameterValue(), 0, "", 0, 0.0F, ""},
                    ValueCase{"String", ParameterValue("text"), 1, "text", 0, 0.0F, "text"},
                    ValueCase{"EmptyString", ParameterValue(""), 1, "", 0, 0.0F, ""},
                    ValueCase{"NullString", ParameterValue(static_cast<const char*>(nullptr)), 1,
                              "", 0, 0.0F, ""},
                    ValueCase{"Int", ParameterValue(-3), 2, "", -3, 0.0F, "-3"},
                    ValueCase{"Float", ParameterValue(0.5F), 5, "", 0, 0.5F, "0.5"}),
    [](const testing::TestParamInfo<ValueCase>& in_info) { return in_info.param.m_szWhat; });

TEST(ParameterValueTest, EqualValuesHaveOneKindAndOneContent) {
    EXPECT_NE(ParameterValue(1), ParameterValue(2));
    EXPECT_NE(ParameterValue(1), ParameterValue(1.0F));
    EXPECT_NE(ParameterValue("a"), ParameterValue("b"));
    EXPECT_NE(ParameterValue(""), ParameterValue());
    EXPECT_NE(ParameterValue(0.5F), ParameterValue(0.25F));
    const float fNaN = std::numeric_limits<float>::quiet_NaN();
    EXPECT_NE(ParameterValue(fNaN), ParameterValue(fNaN));
}

TEST(ParameterValueTest, AFloatIsWrittenInTheFormatOfTheStream) {
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(2) << ParameterValue(0.5F);
    EXPECT_EQ("0.50", stream.str());
}

TEST(ParameterValueTest, ATextIsStoredInAValueWhoseTagWasSet) {
    ParameterValue value;
    value.setTag(1);
    EXPECT_STREQ("", value.getString());
    const std::string strText("some text");
    value.initUnionFromString(strText.c_str(), nullptr);
    EXPECT_STREQ("some text", value.getString());
    value.initUnionFromString(strText.c_str(), strText.c_str() + 4);
    EXPECT_STREQ("some", value.getString());
    value.initUnionFromString(value.getString() + 1, nullptr);
    EXPECT_STREQ("ome", value.getString());
}

TEST(ParameterValueTest, ATextForAnotherTagFailsAnAssertionWithoutEffect) {
    const AssertionCapture assertions;
    ParameterValue value(3);
    value.initUnionFromString("text", nullptr);
    EXPECT_EQ(ParameterValue(3), value);
    EXPECT_EQ(1u, assertions.count());
}

TEST(ParameterValueTest, SettingTheTagReleasesTheText) {
    for (const int iTag : {0, 1, 2, 5, 77}) {
        ParameterValue value("text");
        value.setTag(iTag);
        EXPECT_EQ(iTag, value.getTag());
        EXPECT_STREQ("", value.getString());
        EXPECT_EQ(0, static_cast<int>(value));
        EXPECT_EQ("", iTag == 2 || iTag == 5 ? std::string() : textOf(value));
    }
}

TEST(ParameterValueTest, AReleasedTextIsTheEmptyOne) {
    ParameterValue value("text");
    value.deallocateString();
    EXPECT_EQ(ParameterValue(""), value);
    value.deallocateString();
    EXPECT_EQ(1, value.getTag());
}

TEST(ParameterValueTest, SelfAssignmentKeepsTheText) {
    ParameterValue value("text");
    const ParameterValue& self = value;
    value = self;
    EXPECT_STREQ("text", value.getString());
}

} // namespace
} // namespace Velmora
