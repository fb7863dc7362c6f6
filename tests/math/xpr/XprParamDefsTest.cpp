#include <velmora/math/xpr/XprParamDefs.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <velmora/ParameterInfoDB.h>
#include <velmora/SingletonRegistry.h>

#include "math/xpr/src/ParamDefsAtLoad.h"
#include "support/LogCapture.h"

namespace Velmora {
namespace {

constexpr const char* Key = "quillmark.math.xpr.scriptLoader.scriptsDir";

constexpr const char* SpoilVariable = "VELMORA_TEST_SPOIL_PARAMETERS";

// The table can't be emptied, so a process in which the declaration fails declares the key in
// another way ahead of the library.
struct Spoiler {
    Spoiler() {
        if (std::getenv(SpoilVariable) != nullptr) {
            ParameterInfoDB::getNonConstInstance().declareParameter(
                Key, ParameterValue::IntTag, nullptr, true, false, false, "something else");
        }
    }
};
[[gnu::init_priority(1000)]] const Spoiler s_Spoiler;

std::size_t declarations() {
    const std::vector<ParameterInfo> vInfos = ParameterInfoDB::getInstance().getParameters();
    return static_cast<std::size_t>(
        std::count_if(vInfos.begin(), vInfos.end(),
                      [](const ParameterInfo& in_info) { return in_info.key == Key; }));
}

TEST(XprParamDefsTest, SearchPathOfScriptsIsDeclaredWhenTheLibraryHasLoaded) {
    ParameterInfo info;
    ASSERT_TRUE(ParameterInfoDB::getInstance().findParameter(Key, info));

    EXPECT_EQ(info.kind, ParameterValue::StringTag);
    EXPECT_TRUE(info.defaultValue.isEmpty());
    EXPECT_FALSE(info.optional);
    EXPECT_FALSE(info.hidden);
    EXPECT_FALSE(info.deprecated);
    EXPECT_EQ(info.description,
              "List of the directories where the XPR script loader will try to load the XPR "
              "scripts files. Use the semi-colon (;) to delimit list items.");
}

TEST(XprParamDefsTest, DeclaringAgainSucceedsAndChangesNothing) {
    const LogCapture log("quillmark.infra.ParamDefs");

    EXPECT_TRUE(Xpr::addParametersToDB());

    EXPECT_EQ(declarations(), 1U);
    EXPECT_TRUE(log.lines().empty());
}

TEST(XprParamDefsTest, FirstCopyOfTheLibraryInTheProcessKeepsItsMark) {
    SingletonRegistry& singletons = SingletonRegistry::getInstance();
    void* const pMark = singletons.registerInstance("ParamDefs::Singleton", nullptr, nullptr, 0);
    ASSERT_NE(pMark, nullptr);

    Xpr::declareParametersAtLoad();

    EXPECT_EQ(singletons.registerInstance("ParamDefs::Singleton", nullptr, nullptr, 0), pMark);
    EXPECT_EQ(declarations(), 1U);
}

/// Leaves with 0 if declaring failed and the cause was logged.
[[noreturn]] void exitWithTheFailure() {
    const LogCapture log("quillmark.infra.ParamDefs");
    const bool bDeclared = Xpr::addParametersToDB();
    const std::vector<std::string> vErrors = log.messages(log4cplus::ERROR_LOG_LEVEL);
    const bool bTold = vErrors.size() == 1 && vErrors[0].find(Key) != std::string::npos;
    std::_Exit(bDeclared ? 1 : bTold ? 0 : 2);
}

TEST(XprParamDefsTest, RefusedDeclarationIsLoggedAsAnError) {
    const std::string strFormerStyle = GTEST_FLAG_GET(death_test_style);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv(SpoilVariable, "1", 1);

    EXPECT_EXIT(exitWithTheFailure(), testing::ExitedWithCode(0), "");

    unsetenv(SpoilVariable);
    GTEST_FLAG_SET(death_test_style, strFormerStyle);
}

} // namespace
} // namespace Velmora
