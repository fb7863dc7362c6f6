#include "GraphText.h"
#include "RunTest.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace Vxpr {

using namespace Vxpr::TestSupport;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

const std::string SOURCES = std::string(VELMORA_SOURCE_DIR) + "/";
const std::string SCRIPT = SOURCES + "examples/scripts/sharing.xpr";

/// docs/sharing.md: what it shows is so.
class SharingPageTest : public RunTest {
protected:
    /// What stands between ``` and ```.
    std::vector<std::string> getBlocks() const {
        std::vector<std::string> vBlocks;
        std::istringstream page(m_strPage);
        bool bInside = false;
        for (std::string strLine; std::getline(page, strLine);) {
            if (strLine == "```") {
                bInside = !bInside;
                if (bInside) {
                    vBlocks.emplace_back();
                }
            } else if (bInside) {
                vBlocks.back() += strLine + "\n";
            }
        }
        return vBlocks;
    }

    const std::string m_strPage = readFile(SOURCES + "docs/sharing.md");
};

} // namespace

TEST_F(SharingPageTest, TheScriptIsTheExample) {
    const std::vector<std::string> vBlocks = getBlocks();
    ASSERT_FALSE(vBlocks.empty());
    // But for the comment that opens the file.
    EXPECT_THAT(readFile(SCRIPT), EndsWith("\n\n" + vBlocks.front()));
}

TEST_F(SharingPageTest, TheGraphsAreThoseOfTheExample) {
    for (const std::string strStage : {"linked", "optimized"}) {
        const std::string strPicture = SOURCES + "docs/pictures/sharing-" + strStage;
        const std::string strText = runVxpr({"graph", SCRIPT, "--" + strStage}).m_strOutput;
        EXPECT_EQ(strText, readFile(strPicture + ".dot"))
            << "docs/sharing.md tells how to make the pictures again";
        // A picture of the same nodes and arrows.
        const std::string strSvg = readFile(strPicture + ".svg");
        const GraphText graph(strText);
        const auto countAll = [&](const std::string& in_strText) {
            std::size_t uiCount = 0;
            for (std::size_t ui = strSvg.find(in_strText); ui != std::string::npos;
                 ui = strSvg.find(in_strText, ui + 1)) {
                ++uiCount;
            }
            return uiCount;
        };
        EXPECT_EQ(countAll("class=\"node\""), graph.m_mapLabels.size());
        EXPECT_EQ(countAll("class=\"edge\""), graph.m_vEdges.size());
        EXPECT_THAT(m_strPage, HasSubstr("](pictures/sharing-" + strStage + ".svg)"));
    }
}

TEST_F(SharingPageTest, EveryRowOfTheTableIsSo) {
    const std::string strDefinitions =
        "inputvar x\ninputvar y\na = max(x)\nb = max(y)\nc = min(x)\n"
        "mean(v) = sum(v) / sizeOf(v)\nsmooth<n>(v) = slidingWindow<n>(v)\n";
    const std::regex row(R"(\| `(.*)` \| `(.*)` \| (yes|no) \|.*)");
    // All rows in one script: what is one node doesn't depend on what else there is.
    std::string strScript = strDefinitions;
    std::vector<std::string> vRows;
    std::vector<bool> vShared;
    std::istringstream page(m_strPage);
    std::smatch match;
    for (std::string strLine; std::getline(page, strLine);) {
        if (std::regex_match(strLine, match, row)) {
            const std::string strNumber = std::to_string(vRows.size());
            strScript += "p" + strNumber + "_ = " + match.str(1) + "\n";
            strScript += "q" + strNumber + "_ = " + match.str(2) + "\n";
            vRows.push_back(strLine);
            vShared.push_back(match.str(3) == "yes");
        }
    }
    EXPECT_EQ(vRows.size(), 19U);
    const ProcessResult result = runVxpr({"graph", writeScript(strScript)});
    EXPECT_EQ(result.m_iStatus, 0);
    const std::vector<std::string> vLabels = GraphText(result.m_strOutput).getLabels();
    for (std::size_t uiRow = 0; uiRow < vRows.size(); ++uiRow) {
        const std::string strNumber = std::to_string(uiRow);
        const bool bOneNode =
            std::any_of(vLabels.begin(), vLabels.end(), [&](const std::string& in_strLabel) {
                return in_strLabel.find("p" + strNumber + "_ ") != std::string::npos &&
                       in_strLabel.find("q" + strNumber + "_ ") != std::string::npos;
            });
        EXPECT_EQ(bOneNode, vShared[uiRow]) << vRows[uiRow];
    }
}

TEST_F(SharingPageTest, SharingAMemoryWithAConditionChangesTheResult) {
    const std::string strScript = getBlocks().at(1);
    EXPECT_THAT(strScript, HasSubstr("chosen = if("));
    const std::string strFrames = "5\n1\n9\n";
    EXPECT_THAT(runOverTable(strScript, strFrames, {"chosen", "always"}).m_strOutput,
                EndsWith(",8,8\n"));
    EXPECT_THAT(
        runOverTable(strScript, strFrames, {"chosen", "always", "--no-optimize"}).m_strOutput,
        EndsWith(",4,8\n"));
    for (const char* szOption : {"-q", "--no-optimize"}) {
        EXPECT_THAT(runOverTable(strScript + "outside = always * c\n", strFrames,
                                 {"outside", "always", szOption})
                        .m_strOutput,
                    EndsWith(",8,8\n"));
    }
}

TEST_F(SharingPageTest, TheCommandsThatItShowsWork) {
    std::istringstream command(getBlocks().at(2));
    std::vector<std::string> vArguments;
    for (std::string strWord; command >> strWord;) {
        vArguments.push_back(strWord);
    }
    ASSERT_EQ(vArguments.front(), "vxpr");
    vArguments.erase(vArguments.begin());
    ASSERT_EQ(vArguments.back(), "sharing.csv");
    vArguments.back() = m_Scratch.getPath("sharing.csv");
    ProcessOptions options;
    options.m_strDirectory = SOURCES;
    const ProcessResult result = runVxpr(vArguments, options);
    EXPECT_EQ(result.m_iStatus, 0);
    // One window for two names: the second is there already whenever it is asked for.
    EXPECT_TRUE(std::regex_search(result.m_strErrors, std::regex("\ncalm +15 +387 +0 ")));
    EXPECT_TRUE(std::regex_search(result.m_strErrors, std::regex("\npeak +16 +0 +387 ")));
}

} // namespace Vxpr
