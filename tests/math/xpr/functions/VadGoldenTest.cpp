#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "BuiltIn.h"
#include "GoldenTable.h"

namespace Velmora::Testing {
namespace {

struct Decisions {
    float level = 0.0F;
    int sensitivity = 0;
    std::string expected;
};

struct VadTable {
    explicit VadTable(const std::string& in_strFileName) {
        std::ifstream file(goldenPath(in_strFileName));
        for (std::string strLine; std::getline(file, strLine);) {
            std::istringstream words(strLine);
            std::string strWord;
            words >> strWord;
            if (strWord == "recording") {
                words >> recording >> frameSize;
            } else if (strWord == "energy") {
                energies.push_back(readValues(words).at(0));
            } else if (strWord == "decisions") {
                decisions.emplace_back();
                words >> decisions.back().level >> decisions.back().sensitivity >>
                    decisions.back().expected;
            }
        }
    }

    std::string recording;
    std::size_t frameSize = 0;
    Values energies;
    std::vector<Decisions> decisions;
};

BuiltIn makeVad(const Decisions& in_decisions) {
    BuiltIn vad("vad");
    vad.set("minimumEnergyDBm", in_decisions.level);
    vad.set("sensitivity", in_decisions.sensitivity);
    EXPECT_TRUE(vad.configure());
    return vad;
}

/// The samples of a WAV file of 16 bits and one channel, from -1 to 1.
Values readSamples(const std::string& in_strPath) {
    std::ifstream file(in_strPath, std::ios::binary);
    const std::string strBytes{std::istreambuf_iterator<char>(file), {}};
    const auto byteAt = [&](std::size_t in_ui) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(strBytes.at(in_ui)));
    };
    const std::size_t uiData = strBytes.find("data");
    if (uiData == std::string::npos) {
        return {};
    }
    const std::size_t uiSize = byteAt(uiData + 4) | byteAt(uiData + 5) << 8 |
                               byteAt(uiData + 6) << 16 | byteAt(uiData + 7) << 24;
    Values samples;
    for (std::size_t ui = uiData + 8; ui + 1 < uiData + 8 + uiSize; ui += 2) {
        const auto iSample = static_cast<std::int16_t>(byteAt(ui) | byteAt(ui + 1) << 8);
        samples.push_back(iSample / 32768.0);
    }
    return samples;
}

class VadGoldenTest : public ::testing::TestWithParam<const char*> {};

TEST_P(VadGoldenTest, DecidesEveryFrameAsTheReference) {
    const VadTable table(GetParam());
    ASSERT_EQ(table.decisions.size(), 15U);
    for (const Decisions& decisions : table.decisions) {
        ASSERT_EQ(decisions.expected.size(), table.energies.size());
        BuiltIn vad = makeVad(decisions);
        std::string strFound;
        for (const double energy : table.energies) {
            strFound += vad({{energy}}) == "[1]" ? '1' : '0';
        }
        EXPECT_EQ(strFound, decisions.expected)
            << "level " << decisions.level << ", sensitivity " << decisions.sensitivity;
    }
}

TEST_P(VadGoldenTest, TellsVoiceFromSilence) {
    for (const Decisions& decisions : VadTable(GetParam()).decisions) {
        EXPECT_NE(decisions.expected.find('0'), std::string::npos);
        EXPECT_NE(decisions.expected.find('1'), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(EachTable, VadGoldenTest,
                         ::testing::Values("vad-recording.txt", "vad-noise.txt"),
                         [](const auto& in_info) {
                             return in_info.index == 0 ? "recording" : "noise";
                         });

TEST(VadGoldenRecordingTest, DecidesEveryFrameOfTheRecordingByItsPower) {
    const VadTable table("vad-recording.txt");
    const Values samples = readSamples(std::string(VELMORA_SOURCE_DIR) + "/" + table.recording);
    ASSERT_EQ(samples.size() / table.frameSize, table.energies.size());
    for (const Decisions& decisions : table.decisions) {
        BuiltIn power("averagePower");
        BuiltIn vad = makeVad(decisions);
        vad.node()
            ->getArgument(std::size_t(0))
            ->setValue(Handle<Math::Xpr::Expression>(power.node()));
        std::string strFound;
        for (auto ite = samples.begin(); samples.end() - ite >= std::ptrdiff_t(table.frameSize);
             ite += std::ptrdiff_t(table.frameSize)) {
            power.feed({Values(ite, ite + std::ptrdiff_t(table.frameSize))});
            const Math::DoubleVector* const pResult = vad.evaluate();
            ASSERT_NE(pResult, nullptr);
            strFound += (*pResult)[0] == 1.0 ? '1' : '0';
        }
        EXPECT_EQ(strFound, decisions.expected)
            << "level " << decisions.level << ", sensitivity " << decisions.sensitivity;
    }
}

} // namespace
} // namespace Velmora::Testing
