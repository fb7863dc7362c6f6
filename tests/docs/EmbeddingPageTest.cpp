#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::string read(const std::string& in_strPath) {
    std::ifstream file(std::string(VELMORA_SOURCE_DIR) + "/" + in_strPath);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// The C++ that the page shows, a block each.
std::vector<std::string> shownCode() {
    std::vector<std::string> vBlocks;
    std::istringstream page(read("docs/embedding.md"));
    bool bInBlock = false;
    for (std::string strLine; std::getline(page, strLine);) {
        if (strLine == "```cpp") {
            vBlocks.emplace_back();
            bInBlock = true;
        } else if (strLine == "```") {
            bInBlock = false;
        } else if (bInBlock) {
            vBlocks.back() += strLine + '\n';
        }
    }
    return vBlocks;
}

} // namespace

TEST(EmbeddingPageTest, TheCodeThatItShowsIsThatOfTheExampleHosts) {
    const std::string strHosts = read("examples/host/main.cpp") +
                                 read("examples/host-builtin/main.cpp") +
                                 read("examples/host-threads/main.cpp");
    const std::vector<std::string> vBlocks = shownCode();
    EXPECT_GE(vBlocks.size(), 6u);
    for (const std::string& strBlock : vBlocks) {
        EXPECT_NE(strHosts.find(strBlock), std::string::npos) << strBlock;
    }
}
