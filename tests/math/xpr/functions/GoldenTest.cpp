#include <algorithm>
#include <iterator>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "GoldenTable.h"

namespace Velmora::Testing {
namespace {

using ::testing::IsEmpty;

/// All but `vad`, whose tables are decisions.
std::vector<BuiltInSetting> functionsWithResults() {
    std::vector<BuiltInSetting> functions;
    std::copy_if(builtInSettings().begin(), builtInSettings().end(), std::back_inserter(functions),
                 [](const BuiltInSetting& in_setting) { return in_setting.name != "vad"; });
    return functions;
}

class GoldenTest : public ::testing::TestWithParam<BuiltInSetting> {};

TEST_P(GoldenTest, ResultsAgreeWithTheReference) {
    GoldenTable table(GetParam().name);
    EXPECT_THAT(table.run(), IsEmpty());
    EXPECT_GT(table.count(), 5U);
}

INSTANTIATE_TEST_SUITE_P(EachBuiltIn, GoldenTest, ::testing::ValuesIn(functionsWithResults()),
                         [](const auto& in_info) { return in_info.param.name; });

} // namespace
} // namespace Velmora::Testing
