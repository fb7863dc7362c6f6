#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "support/LogCapture.h"

namespace Velmora::Testing {
namespace {

using ::testing::ElementsAre;

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr double Inf = std::numeric_limits<double>::infinity();

TEST(CentralFrequencyTest, IsTheCentroidOfTheThreeBinsAroundThePeak) {
    BuiltIn centralFrequency("centralFrequency");
    EXPECT_EQ(centralFrequency({{1.4}, {1, 2, 1, 9}}), "[23.4375]");
    EXPECT_EQ(centralFrequency({{1.4}, {0, 2, 2, 9}}), "[31.25]");
    EXPECT_EQ(centralFrequency({{1.5}, {9, 0, 1, 0}}), "[39.0625]");
}

TEST(CentralFrequencyTest, TakesTheFirstIndexOfSeveral) {
    EXPECT_EQ(BuiltIn("centralFrequency")({{1, 99}, {1, 2, 1}}), "[23.4375]");
}

TEST(CentralFrequencyTest, ThreeZeroBinsHaveNoFrequency) {
    EXPECT_EQ(BuiltIn("centralFrequency")({{1}, {0, 0, 0}}), "[nan]");
}

TEST(CentralFrequencyTest, ComputesAtBothEndsOfTheRange) {
    BuiltIn centralFrequency("centralFrequency");
    EXPECT_EQ(centralFrequency({{0.5}, {0, 1, 0, 0, 0}}), "[23.4375]");
    EXPECT_EQ(centralFrequency({{3.49}, {0, 0, 0, 1, 0}}), "[54.6875]");
}

struct Refused {
    Values index;
    Values spectrum;
    std::string message;
};

void PrintTo(const Refused& in_refused, std::ostream* out_pStream) {
    *out_pStream << in_refused.message;
}

class CentralFrequencyRefusedTest : public ::testing::TestWithParam<Refused> {};

TEST_P(CentralFrequencyRefusedTest, GivesNoResultAndNamesTheIndexAndTheSize) {
    BuiltIn centralFrequency("centralFrequency");
    const LogCapture log("quillmark.math.xpr.functions.centralFrequency");
    EXPECT_EQ(centralFrequency({GetParam().index, GetParam().spectrum}), "no result");
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL),
                ElementsAre("Can't compute the central frequency: " + GetParam().message));
    EXPECT_EQ(log.lines().size(), 1U);
}

std::string noNeighbour(const std::string& in_strIndex, const std::string& in_strBins) {
    return "the peak at index " + in_strIndex +
           " has no neighbour on both sides in a spectrum of " + in_strBins + " bins.";
}

INSTANTIATE_TEST_SUITE_P(
    Peaks, CentralFrequencyRefusedTest,
    ::testing::Values(
        Refused{{0}, {1, 2, 1, 1}, noNeighbour("0", "4")},
        Refused{{0.49}, {1, 2, 1, 1}, noNeighbour("0.49", "4")},
        Refused{{2.5}, {1, 2, 1, 1}, noNeighbour("2.5", "4")},
        Refused{{3}, {1, 2, 1, 1}, noNeighbour("3", "4")},
        Refused{{-1}, {1, 2, 1}, noNeighbour("-1", "3")},
        Refused{{1}, {1, 2}, noNeighbour("1", "2")}, Refused{{1}, {1}, noNeighbour("1", "1")},
        Refused{{1}, {}, noNeighbour("1", "0")},
        Refused{{1e300}, {1, 2, 1}, noNeighbour("1e+300", "3")},
        Refused{{-1e300}, {1, 2, 1}, noNeighbour("-1e+300", "3")},
        Refused{{Nan}, {1, 2, 1}, noNeighbour("nan", "3")},
        Refused{{Inf}, {1, 2, 1}, noNeighbour("inf", "3")},
        Refused{{-Inf}, {1, 2, 1}, noNeighbour("-inf", "3")},
        Refused{{}, {1, 2, 1}, "the index of the peak is empty, the spectrum has 3 bins."}));

} // namespace
} // namespace Velmora::Testing
