#include "ProcessRunner.h"
#include "ScratchDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

namespace Vxpr {

using namespace Vxpr::TestSupport;

namespace {

const std::string EXAMPLES = std::string(VELMORA_SOURCE_DIR) + "/examples/";

/// The rows of a table, without its header.
std::vector<std::vector<double>> runExample(const std::string& in_strScript,
                                            std::vector<std::string> in_vMore) {
    std::vector<std::string> vArguments{"run", EXAMPLES + "scripts/" + in_strScript, "-i",
                                        EXAMPLES + "audio/prompt.wav"};
    vArguments.insert(vArguments.end(), in_vMore.begin(), in_vMore.end());
    const ProcessResult result = runVxpr(vArguments);
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
    std::vector<std::vector<double>> vRows;
    std::istringstream stream(result.m_strOutput);
    std::string strLine;
    std::getline(stream, strLine);
    while (std::getline(stream, strLine)) {
        std::istringstream line(strLine);
        std::string strCell;
        vRows.emplace_back();
        while (std::getline(line, strCell, ',')) {
            vRows.back().push_back(std::stod(strCell));
        }
    }
    return vRows;
}

} // namespace

TEST(ExamplesTest, TheScriptsHaveNoFaultsAndFortyLinesAtMost) {
    std::vector<std::string> vArguments{"check"};
    for (const auto& entry : std::filesystem::directory_iterator(EXAMPLES + "scripts")) {
        vArguments.push_back(entry.path());
        const std::string strText = readFile(entry.path());
        EXPECT_LE(std::count(strText.begin(), strText.end(), '\n'), 40) << entry.path();
    }
    EXPECT_GT(vArguments.size(), 4U);
    const ProcessResult result = runVxpr(vArguments);
    EXPECT_EQ(result.m_strErrors, "");
    EXPECT_EQ(result.m_iStatus, 0);
}

TEST(ExamplesTest, TheLoudnessMeterTellsTheVoiceFromThePauses) {
    const auto vRows = runExample("loudness.xpr", {"level", "loudness"});
    ASSERT_EQ(vRows.size(), 387U);
    double dLoudest = -200.0;
    double dSoftest = 200.0;
    for (const auto& vRow : vRows) {
        dLoudest = std::max(dLoudest, vRow[2]);
        dSoftest = std::min(dSoftest, vRow[2]);
    }
    EXPECT_GT(dLoudest, -20.0);
    EXPECT_LT(dSoftest, -60.0);
}

TEST(ExamplesTest, TheEndpointerFindsThePhrasesOfThePrompt) {
    const auto vRows = runExample("endpointer.xpr", {"speech"});
    int iStarts = 0;
    double dBefore = 0.0;
    for (const auto& vRow : vRows) {
        iStarts += dBefore == 0.0 && vRow[1] == 1.0 ? 1 : 0;
        dBefore = vRow[1];
    }
    EXPECT_EQ(iStarts, 3);
    EXPECT_EQ(vRows.front()[1], 0.0);
}

TEST(ExamplesTest, ThePeakFollowerStaysInTheBandOfAVoice) {
    const auto vRows = runExample("peak.xpr", {"frequency", "--frame", "32ms", "--hop", "10ms"});
    const auto iHeard = std::count_if(vRows.begin(), vRows.end(),
                                      [](const auto& in_vRow) { return in_vRow[1] > 0.0; });
    EXPECT_GT(iHeard, 300);
    for (const auto& vRow : vRows) {
        EXPECT_GE(vRow[1], 0.0);
        EXPECT_LE(vRow[1], 4000.0);
    }
}

} // namespace Vxpr
