#include "RunTest.h"

#include <array>
#include <cmath>
#include <regex>
#include <sstream>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class RunStatisticsTest : public RunTest {
protected:
    /// NAME LINE EVALUATIONS SAVED of each definition, in the order shown.
    static std::vector<std::string> readTable(const std::string& in_strErrors) {
        const std::regex row(R"((\S+) +(\S+) +(\d+) +(\d+) +[\d.]+ %)");
        std::vector<std::string> vRows;
        std::istringstream lines(in_strErrors);
        std::smatch match;
        for (std::string strLine; std::getline(lines, strLine);) {
            if (std::regex_match(strLine, match, row)) {
                vRows.push_back(match.str(1) + " " + match.str(2) + " " + match.str(3) + " " +
                                match.str(4));
            }
        }
        return vRows;
    }

    /// The statistics of a run over four frames, in which `x` is 1, 0, 2, 2.
    std::vector<std::string> count(const std::string& in_strScript,
                                   std::vector<std::string> in_vMore = {}) const {
        in_vMore.push_back("--stats");
        const ProcessResult result = runOverTable(in_strScript, "1\n0\n2\n2\n", in_vMore);
        EXPECT_THAT(result.m_strErrors, HasSubstr("\n4 frames: mean "));
        return readTable(result.m_strErrors);
    }
};

TEST_F(RunStatisticsTest, AReaderThatComesLaterOnAFrameSavesAnEvaluation) {
    EXPECT_THAT(count("inputvar x\na = sum(x)\nb = a + a\nc = a + b\n", {"c"}),
                ElementsAre("a 2 4 8", "b 3 4 0", "c 4 4 0"));
    // The table's own columns read as well.
    EXPECT_THAT(count("inputvar x\na = sum(x)\nb = a + 1\n"), ElementsAre("a 2 4 4", "b 3 4 0"));
}

TEST_F(RunStatisticsTest, DefinitionsThatShareANodeAreEvaluatedWithTheFirst) {
    const std::string strScript = "inputvar x\na = sum(x)\nb = sum(x)\nc = b\n";
    EXPECT_THAT(count(strScript), ElementsAre("a 2 4 0", "b 3 0 8", "c 4 0 4"));
    EXPECT_THAT(count(strScript, {"--no-optimize"}), ElementsAre("a 2 4 0", "b 3 4 4", "c 4 0 4"));
}

TEST_F(RunStatisticsTest, WhatDependsOnNothingStaysValid) {
    EXPECT_THAT(count("inputvar x\nlimit = 1 + 1\na = isGreater(x, limit)\n", {"a"}),
                ElementsAre("limit 2 1 3", "a 3 4 0"));
}

TEST_F(RunStatisticsTest, WhatAConditionDoesntChooseIsntEvaluated) {
    EXPECT_THAT(
        count("inputvar x\nc = x\nyes = delta(x)\nno = sum(x)\na = if(c, yes, no)\n", {"a"}),
        ElementsAre("c 2 4 0", "yes 3 3 0", "no 4 1 0", "a 5 4 0"));
}

TEST_F(RunStatisticsTest, DefinitionsWithinConditionsAndCallsAreCounted) {
    EXPECT_THAT(count("inputvar x\nhalf() = x / 2\ntwice(v) = v * 2\nlevel = sum(x)\n"
                      "a = if(isGreater(level, 1), twice(level), half())\n",
                      {"a"}),
                ElementsAre("half 2 1 0", "level 4 4 3", "a 5 4 0"));
}

TEST_F(RunStatisticsTest, DefinitionsOfOtherScriptsShowTheirPlace) {
    m_Scratch.write("lib.xpr", "\nlimit = 0.5\n");
    EXPECT_THAT(count("inputvar x\na = x * lib.limit\n"),
                ElementsAre("a 2 4 0", "lib.limit lib.xpr:2 1 3"));
}

TEST_F(RunStatisticsTest, AFailureIsOneEvaluation) {
    EXPECT_THAT(count("inputvar x\na = 1 / x\nb = a + 1\nc = a + 2\n"),
                ElementsAre("a 2 4 8", "b 3 4 0", "c 4 4 0"));
}

TEST_F(RunStatisticsTest, TheTableAndTheMessagesAreTheSame) {
    const std::string strScript = "inputvar x\nq = 1 / x\nw = slidingWindow<3>(q)\n"
                                  "c = if(isGreater(x, 2), delta(w), w * 2)\nd = delta(x)\n"
                                  "e = q + d\nf = if(x, sum(w), e)\ng() = q + 1\nh = g()\n";
    std::string strTable;
    for (int i = 0; i < 200; ++i) {
        strTable += std::to_string(i * i * i % 7 * (i % 5 == 3 ? 0 : 1)) + "\n";
    }
    for (const std::vector<std::string>& vOptions : std::vector<std::vector<std::string>>{
             {}, {"--no-optimize"}, {"--format", "jsonl"}, {"f", "c"}}) {
        const ProcessResult plain = runOverTable(strScript, strTable, vOptions);
        std::vector<std::string> vMore = vOptions;
        vMore.push_back("--stats");
        const ProcessResult measured = runOverTable(strScript, strTable, vMore);
        EXPECT_EQ(measured.m_strOutput, plain.m_strOutput);
        EXPECT_EQ(measured.m_iStatus, plain.m_iStatus);
        EXPECT_EQ(measured.m_strErrors.compare(0, plain.m_strErrors.size(), plain.m_strErrors), 0);
        EXPECT_THAT(plain.m_strErrors, Not(HasSubstr("evaluations")));
        EXPECT_THAT(readTable(measured.m_strErrors), Not(IsEmpty()));
    }
}

TEST_F(RunStatisticsTest, TheExamplesGiveTheSameTables) {
    const std::string strExamples = std::string(VELMORA_SOURCE_DIR) + "/examples/";
    for (const char* szScript : {"loudness", "endpointer", "peak"}) {
        const std::vector<std::string> vArguments{"run",
                                                  strExamples + "scripts/" + szScript + ".xpr",
                                                  "-i", strExamples + "audio/prompt.wav"};
        std::vector<std::string> vMore = vArguments;
        vMore.push_back("--stats");
        const ProcessResult plain = runVxpr(vArguments);
        const ProcessResult measured = runVxpr(vMore);
        EXPECT_EQ(plain.m_strErrors, "");
        EXPECT_EQ(measured.m_strOutput, plain.m_strOutput);
        EXPECT_EQ(measured.m_iStatus, 0);
    }
}

TEST_F(RunStatisticsTest, ThePartsOfTheTimeMakeUpTheWhole) {
    const ProcessResult result =
        runOverTable("inputvar x\na = sum(x)\nb = a * a\nc = {a, b}\n", "1\n2\n3\n", {"--stats"});
    const std::regex part(R"(([\d.]+) %)");
    double dSum = 0.0;
    for (auto ite =
             std::sregex_iterator(result.m_strErrors.begin(), result.m_strErrors.end(), part);
         ite != std::sregex_iterator(); ++ite) {
        dSum += std::stod((*ite)[1]);
    }
    EXPECT_NEAR(dSum, 100.0, 0.2);
    EXPECT_THAT(result.m_strErrors, HasSubstr("definition  line  evaluations  saved"));
}

TEST_F(RunStatisticsTest, LongChainsNeedNoDeepStack) {
    std::string strScript = "inputvar x\nx0 = sum(x)\nx1 = x0 + 1\n";
    for (int i = 2; i < 1500; ++i) {
        strScript += "x" + std::to_string(i) + " = x" + std::to_string(i - 1) + " - x" +
                     std::to_string(i - 2) + "\n";
    }
    const std::vector<std::string> vRows = count(strScript, {"x1499"});
    ASSERT_THAT(vRows, SizeIs(1500));
    EXPECT_EQ(vRows[0], "x0 2 4 4");
    EXPECT_EQ(vRows[1499], "x1499 1501 4 0");
}

TEST_F(RunStatisticsTest, WithoutDefinitionsThereIsOnlyTheTime) {
    EXPECT_THAT(count("inputvar x\n", {"x"}), IsEmpty());
}

} // namespace Vxpr
