#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "support/AllocationCounter.h"
#include "support/AssertionCapture.h"

namespace Velmora::Testing {
namespace {

/// What every built-in has to stand, fed as scripts would.
class BuiltInFramesTest : public ::testing::TestWithParam<BuiltInSetting> {
protected:
    /// A frame for every argument: `isGreater` compares the first elements.
    std::vector<Values> argumentsOf(const Values& in_frame) const {
        const std::string& strName = GetParam().name;
        if (strName == "isGreater") {
            const Values first(in_frame.begin(), in_frame.begin() + (in_frame.empty() ? 0 : 1));
            return {first, first};
        }
        return strName == "centralFrequency" ? std::vector<Values>{in_frame, in_frame}
                                             : std::vector<Values>{in_frame};
    }
};

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr double Inf = std::numeric_limits<double>::infinity();
constexpr double Huge = std::numeric_limits<double>::max();
constexpr double Tiny = std::numeric_limits<double>::denorm_min();

TEST_P(BuiltInFramesTest, GivesADefinedResultOrNoneForHostileFrames) {
    const AssertionCapture assertions;
    const std::vector<Values> frames = {
        {},
        {1},
        {Nan},
        {Nan, 1, 2},
        {1, Nan, 2, 3},
        {Inf},
        {-Inf, 1, 2},
        {Inf, -Inf},
        {Huge, Huge, 1},
        {-Huge, -Huge, -1},
        {Tiny},
        {-Tiny, Tiny},
        {-0.0},
        {0, 0, 0},
        {1e19, 1, 1},
        {-1e19, 1},
        {1, 2, 1},
        Values(7, 1),
        Values(500, -1),
        Values(3, Tiny),
        Values(160),
        {},
        {2, 1, 0},
        {1e308, 1e-308},
        Values(161, Huge),
        {0.5, 1, 1},
        {1.5, 1, 1},
        {2, Inf, 0},
        {1},
        {-1},
    };
    BuiltIn once = GetParam().make();
    BuiltIn again = GetParam().make();
    for (const Values& frame : frames) {
        const std::vector<Values> arguments = argumentsOf(frame);
        const std::string strResult = once(arguments);
        EXPECT_EQ(strResult, again(arguments));
        EXPECT_FALSE(strResult.empty());
    }
}

TEST_P(BuiltInFramesTest, AllocatesNothingOnceWarm) {
    BuiltIn builtIn = GetParam().make();
    std::vector<std::vector<Values>> frames;
    for (int iFrame = 0; iFrame < 50; ++iFrame) {
        Values frame;
        for (int i = 0; i < 160; ++i) {
            frame.push_back(std::sin(0.1 * i * (iFrame % 7)) + 1.5);
        }
        frames.push_back(argumentsOf(frame));
    }
    for (const auto& arguments : frames) {
        builtIn.feed(arguments);
        ASSERT_NE(builtIn.evaluate(), nullptr);
    }
    std::size_t uiResults = 0;
    const AllocationCounter counter;
    for (int iFrame = 0; iFrame < 1000; ++iFrame) {
        builtIn.feed(frames[static_cast<std::size_t>(iFrame) % frames.size()]);
        uiResults += builtIn.evaluate() != nullptr ? 1 : 0;
    }
    const std::size_t uiAllocations = counter.allocations();
    EXPECT_EQ(uiAllocations, 0U);
    EXPECT_EQ(uiResults, 1000U);
}

TEST_P(BuiltInFramesTest, ACopyComputesAsItsSource) {
    BuiltIn source = GetParam().make();
    for (int iFrame = 0; iFrame < 3; ++iFrame) {
        source(argumentsOf({1.0 + iFrame, 2, 3, 2}));
    }
    BuiltIn copy = source.copy();
    for (const Values& frame : {Values{2, 4, 1, 1}, Values{2, 4, 1, 1}, Values{1, 0, 0, 1}}) {
        EXPECT_EQ(source(argumentsOf(frame)), copy(argumentsOf(frame)));
    }
}

INSTANTIATE_TEST_SUITE_P(EachBuiltIn, BuiltInFramesTest, ::testing::ValuesIn(builtInSettings()),
                         [](const auto& in_info) { return in_info.param.name; });

} // namespace
} // namespace Velmora::Testing
