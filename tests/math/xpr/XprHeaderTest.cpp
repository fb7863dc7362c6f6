#include <velmora/math/xpr/Xpr.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

namespace fs = std::filesystem;

const fs::path IncludeDir = fs::path(VELMORA_SOURCE_DIR) / "include";
const std::string XprHeader = "velmora/math/xpr/Xpr.h";

std::vector<std::string> headersOnDisk() {
    std::vector<std::string> vHeaders;
    for (const auto& entry : fs::recursive_directory_iterator(IncludeDir)) {
        const std::string strHeader = entry.path().lexically_relative(IncludeDir).string();
        if (entry.path().extension() == ".h" && strHeader != XprHeader) {
            vHeaders.push_back(strHeader);
        }
    }
    std::sort(vHeaders.begin(), vHeaders.end());
    return vHeaders;
}

std::vector<std::string> headersIncludedByXprHeader() {
    const std::string strPrefix = "#include <";
    std::vector<std::string> vHeaders;
    std::ifstream file(IncludeDir / XprHeader);
    for (std::string strLine; std::getline(file, strLine);) {
        if (strLine.compare(0, strPrefix.size(), strPrefix) == 0) {
            vHeaders.push_back(
                strLine.substr(strPrefix.size(), strLine.find('>') - strPrefix.size()));
        }
    }
    return vHeaders;
}

} // namespace

TEST(XprHeaderTest, IncludesEveryPublicHeaderOnceAndSorted) {
    const std::vector<std::string> vOnDisk = headersOnDisk();

    ASSERT_FALSE(vOnDisk.empty());
    EXPECT_THAT(headersIncludedByXprHeader(), testing::ElementsAreArray(vOnDisk));
}
