#include "ProcessRunner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::HasSubstr;
using testing::StartsWith;

TEST(ListCommandTest, EveryBuiltInIsListedInTheOrderOfRegistration) {
    const ProcessResult result = runVxpr({"list", "--format", "json"});
    EXPECT_EQ(result.m_iStatus, 0);
    std::vector<std::string> vNames;
    for (const auto& entry : nlohmann::json::parse(result.m_strOutput)) {
        vNames.push_back(entry["name"]);
        EXPECT_FALSE(entry["description"].get<std::string>().empty()) << vNames.back();
        EXPECT_FALSE(entry["arguments"].empty()) << vNames.back();
    }
    EXPECT_EQ(vNames, (std::vector<std::string>{"sizeOf", "sum", "abs", "min", "max", "indexOfMax",
                                                "log", "delta", "energy", "slidingWindow",
                                                "tappedDelay", "debounce", "debounceOnOff",
                                                "averagePower", "centralFrequency", "amDemodulate",
                                                "sinusCorrelate", "isGreater", "vad"}));
}

TEST(ListCommandTest, ABuiltInIsShownAsItIsCalled) {
    const ProcessResult result = runVxpr({"list", "tappedDelay"});
    EXPECT_EQ(result.m_iStatus, 0);
    EXPECT_THAT(result.m_strOutput,
                StartsWith("tappedDelay<TapeSize, IncludeUsedTapeSizeInOutput, PaddingValues>(x)\n"
                           "    "));
    EXPECT_THAT(runVxpr({"list"}).m_strOutput, HasSubstr(result.m_strOutput));
}

TEST(ListCommandTest, JsonHasTheKeysOfTheParameters) {
    const auto list =
        nlohmann::json::parse(runVxpr({"list", "energy", "--format", "json"}).m_strOutput);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["parameters"], nlohmann::json({"signalfeature.SampleRate"}));
    EXPECT_EQ(list[0]["arguments"], nlohmann::json({"x"}));
}

TEST(ListCommandTest, AnUnknownNameIsRefusedWithANearOne) {
    const ProcessResult result = runVxpr({"list", "slidingwindow"});
    EXPECT_EQ(result.m_iStatus, 2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("did you mean `slidingWindow`?"));
    EXPECT_EQ(result.m_strOutput, "");
}

} // namespace Vxpr
