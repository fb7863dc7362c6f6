// The tutorial does what it says: its scripts are written to files in their order, its commands
// are run, and what they print must be what the page shows.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "support/TempDirectory.h"

namespace Velmora::Testing {
namespace {

const std::string Sources = VELMORA_SOURCE_DIR;

/// A block of code of the page.
struct Block {
    std::string m_strLanguage;
    /// What stands behind the language: the name of the script's file.
    std::string m_strFile;
    std::vector<std::string> m_vLines;
};

std::vector<Block> readBlocks() {
    std::ifstream file(Sources + "/docs/tutorial.md");
    std::vector<Block> vBlocks;
    bool bInBlock = false;
    for (std::string strLine; std::getline(file, strLine);) {
        if (strLine.compare(0, 3, "```") == 0) {
            bInBlock = !bInBlock;
            if (bInBlock) {
                const std::size_t uiBlank = std::min(strLine.find(' '), strLine.size());
                vBlocks.push_back({strLine.substr(3, uiBlank - 3),
                                   strLine.substr(std::min(uiBlank + 1, strLine.size())),
                                   {}});
            }
        } else if (bInBlock) {
            vBlocks.back().m_vLines.push_back(strLine);
        }
    }
    return vBlocks;
}

std::string join(const std::vector<std::string>& in_vLines) {
    std::string strText;
    for (const std::string& strLine : in_vLines) {
        strText += strLine + '\n';
    }
    return strText;
}

bool isCommand(const std::string& in_strLine) {
    return in_strLine.compare(0, 2, "$ ") == 0;
}

/// The reader's shell: the programs on its path, and a directory to work in.
class Shell {
public:
    /// All that a command prints.
    std::string run(const std::string& in_strCommand) const {
        const auto folderOf = [](const std::string& in_strPath) {
            return in_strPath.substr(0, in_strPath.rfind('/'));
        };
        const std::string strLine = "cd '" + m_Directory.path() + "' && export LC_ALL=C VELMORA='" +
                                    Sources + "' PATH='" + folderOf(VXPR_PROGRAM) + ":" +
                                    folderOf(MAKE_RECORDING_PROGRAM) + "':\"$PATH\"; { " +
                                    in_strCommand + "\n} 2>&1";
        FILE* const pPipe = popen(strLine.c_str(), "r");
        std::string strOutput;
        char buffer[4096];
        while (const std::size_t uiRead = std::fread(buffer, 1, sizeof buffer, pPipe)) {
            strOutput.append(buffer, uiRead);
        }
        pclose(pPipe);
        return strOutput;
    }

    void write(const Block& in_Script) const {
        m_Directory.write(in_Script.m_strFile, join(in_Script.m_vLines));
    }

private:
    TempDirectory m_Directory;
};

/// Runs the commands of a block and returns the block as it would then look.
std::string replay(const Shell& in_Shell, const Block& in_Block) {
    std::string strText;
    for (const std::string& strLine : in_Block.m_vLines) {
        if (isCommand(strLine)) {
            strText += strLine + '\n' + in_Shell.run(strLine.substr(2));
        }
    }
    return strText;
}

/// The definitions of a script: no comments, no empty lines.
std::vector<std::string> definitionsIn(const std::vector<std::string>& in_vLines) {
    std::vector<std::string> vDefinitions;
    for (const std::string& strLine : in_vLines) {
        if (!strLine.empty() && strLine.compare(0, 2, "//") != 0) {
            vDefinitions.push_back(strLine);
        }
    }
    return vDefinitions;
}

TEST(TutorialTest, EveryCommandPrintsWhatThePageShows) {
    const Shell shell;
    std::size_t uiScripts = 0;
    std::size_t uiCommands = 0;
    for (const Block& block : readBlocks()) {
        if (block.m_strLanguage == "xpr") {
            ASSERT_FALSE(block.m_strFile.empty());
            shell.write(block);
            ++uiScripts;
        } else if (block.m_strLanguage == "console") {
            EXPECT_EQ(replay(shell, block), join(block.m_vLines));
            ++uiCommands;
        }
    }
    EXPECT_GE(uiScripts, 5U);
    EXPECT_GE(uiCommands, 10U);
}

TEST(TutorialTest, ItsLastScriptIsThatOfTheExamples) {
    std::vector<std::string> vLast;
    for (const Block& block : readBlocks()) {
        if (block.m_strLanguage == "xpr") {
            vLast = definitionsIn(block.m_vLines);
        }
    }
    std::ifstream file(Sources + "/examples/scripts/vad.xpr");
    std::vector<std::string> vExample;
    for (std::string strLine; std::getline(file, strLine);) {
        vExample.push_back(strLine);
    }
    ASSERT_FALSE(vLast.empty());
    EXPECT_EQ(vLast.back(), "edge = delta(speech)");
    vLast.pop_back();
    EXPECT_EQ(vLast, definitionsIn(vExample));
}

} // namespace
} // namespace Velmora::Testing
