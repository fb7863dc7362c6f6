#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/stat.h>

#include <gmock/gmock.h>

#include <velmora/MemAccounts.h>
#include <velmora/ParameterTrie.h>

#include "support/LogCapture.h"
#include "support/MemoryFileSystem.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {
namespace {

using testing::ElementsAre;

constexpr const char* LoggerName = "quillmark.math.xpr.ScriptLoader";
constexpr std::size_t ChunkSize = 1023;

void configure(ScriptLoader& inout_Loader, const std::string& in_strDirs) {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               ParameterValue(in_strDirs.c_str()));
    ASSERT_TRUE(inout_Loader.configure(configuration));
}

std::vector<std::string> keysOf(const Dictionnary& in_Dictionnary) {
    std::vector<std::string> vKeys;
    for (const auto& entry : in_Dictionnary) {
        vKeys.push_back(entry.first);
    }
    return vKeys;
}

std::size_t liveBlocks(const std::string& in_strAccount) {
    for (const MemAccount& account : MemAccounts::snapshot()) {
        if (account.name == in_strAccount) {
            return account.liveBlocks;
        }
    }
    return 0;
}

TEST(ScriptLoaderStdIOTest, DirectoriesPipesAndBrokenLinksAreNoScripts) {
    const TempDirectory directory;
    std::filesystem::create_directories(directory.path("a/s.xpr"));
    std::filesystem::create_directories(directory.path("b"));
    ASSERT_EQ(mkfifo(directory.path("b/s.xpr").c_str(), 0600), 0) << std::strerror(errno);
    std::filesystem::create_directories(directory.path("c"));
    std::filesystem::create_symlink("s.xpr", directory.path("c/s.xpr"));
    directory.write("d/s.xpr", "x = 1\n");
    ScriptLoaderStdIO loader;
    configure(loader, directory.path("a") + ";" + directory.path("b") + ";" + directory.path("c") +
                          ";" + directory.path("d"));
    Dictionnary dictionnary("d");

    EXPECT_TRUE(loader.run("s", dictionnary, true));

    EXPECT_THAT(keysOf(dictionnary), ElementsAre("s.x"));
}

TEST(ScriptLoaderStdIOTest, LinkToAFileIsAScript) {
    const TempDirectory directory;
    directory.write("a/real.txt", "x = 1\n");
    std::filesystem::create_symlink("real.txt", directory.path("a/s.xpr"));
    ScriptLoaderStdIO loader;
    configure(loader, directory.path("a"));
    Dictionnary dictionnary("d");

    EXPECT_TRUE(loader.run("s", dictionnary, true));
}

TEST(ScriptLoaderStdIOTest, MemoryIsCountedUnderItsAccount) {
    const std::size_t uiBefore = liveBlocks("ScriptLoaderStdIO");

    const auto pLoader = std::make_unique<ScriptLoaderStdIO>();
    const std::unique_ptr<Cloneable> pClone(pLoader->clone());

    EXPECT_STREQ(ScriptLoaderStdIO::getMemAccountName(), "ScriptLoaderStdIO");
    EXPECT_EQ(liveBlocks("ScriptLoaderStdIO"), uiBefore + 2);
}

class ScriptLoaderVFSTest : public testing::Test {
protected:
    ScriptLoaderVFSTest()
        : m_pMemory(new Testing::MemoryFileSystem({})), m_pFiles(m_pMemory), m_Loader(m_pFiles) {
        configure(m_Loader, "a");
    }

    bool runScript(const std::string& in_strText) {
        m_pMemory->setFile("a/s.xpr", in_strText);
        return m_Loader.run("s", m_Dictionnary, true);
    }

    Testing::MemoryFileSystem* m_pMemory;
    TSHandle<VirtualFileSystem> m_pFiles;
    ScriptLoaderVFS m_Loader;
    Dictionnary m_Dictionnary{"d"};
};

TEST_F(ScriptLoaderVFSTest, ScriptOfManyChunksArrivesWhole) {
    std::string strText;
    std::vector<std::string> vNames;
    for (int i = 0; strText.size() < 10 * ChunkSize; ++i) {
        strText += "x" + std::to_string(i) + " = " + std::to_string(i) + "\n";
        vNames.push_back("s.x" + std::to_string(i));
    }

    EXPECT_TRUE(runScript(strText));

    EXPECT_EQ(keysOf(m_Dictionnary), vNames);
    EXPECT_EQ(m_pMemory->getLargestRead(), ChunkSize);
}

TEST_F(ScriptLoaderVFSTest, ScriptOfOneChunkAndOneByteArrivesWhole) {
    std::string strText = "x = 1\n";
    strText += "//" + std::string(ChunkSize - strText.size() - 7, '-') + "\ny = ";
    ASSERT_EQ(strText.size(), ChunkSize);

    EXPECT_TRUE(runScript(strText + "2"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x", "s.y"));
}

TEST_F(ScriptLoaderVFSTest, ZeroByteCutsOffTheRestOfItsChunk) {
    std::string strText = "x = 1\n";
    strText += '\0';
    strText += ")never seen";
    strText.resize(ChunkSize, ')');

    EXPECT_TRUE(runScript(strText + "y = 2\n"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x", "s.y"));
}

TEST_F(ScriptLoaderVFSTest, AsksForThePathsOfItsDirectoriesInOrderAndClosesItsFile) {
    configure(m_Loader, "a;b;c");
    m_pMemory->setFile("b/t.xpr", "x = 1\n");

    EXPECT_TRUE(m_Loader.run("t", m_Dictionnary, true));

    EXPECT_THAT(m_pMemory->getAskedPaths(), ElementsAre("a/t.xpr", "b/t.xpr"));
    EXPECT_EQ(m_pMemory->getOpenFiles(), 0U);
}

TEST_F(ScriptLoaderVFSTest, CloneSharesTheFileSystem) {
    const std::unique_ptr<Cloneable> pClone(m_Loader.clone());
    m_pMemory->setFile("a/later.xpr", "x = 1\n");

    EXPECT_TRUE(dynamic_cast<ScriptLoader&>(*pClone).run("later", m_Dictionnary, true));
    // The test's handle, the loader's and the clone's.
    EXPECT_EQ(m_pFiles.getReferenceCount(), 3);
}

TEST_F(ScriptLoaderVFSTest, MemoryIsCountedUnderItsAccount) {
    const std::size_t uiBefore = liveBlocks("ScriptLoaderVFS");

    const std::unique_ptr<Cloneable> pClone(m_Loader.clone());

    EXPECT_STREQ(ScriptLoaderVFS::getMemAccountName(), "ScriptLoaderVFS");
    EXPECT_EQ(liveBlocks("ScriptLoaderVFS"), uiBefore + 1);
}

TEST_F(ScriptLoaderVFSTest, RunByNameIsTraced) {
    const LogCapture log(LoggerName, log4cplus::TRACE_LOG_LEVEL);

    runScript("x = 1\n");

    EXPECT_EQ(log.count(log4cplus::TRACE_LOG_LEVEL, "ScriptLoaderVFS::run"), 2U);
}

TEST(ScriptLoaderVFSDiskTest, WithoutAFileSystemItReadsTheDiskAndSaysSo) {
    const TempDirectory directory;
    directory.write("s.xpr", "x = 1\n");
    ScriptLoaderVFS loader((TSHandle<VirtualFileSystem>()));
    const LogCapture log(LoggerName);
    configure(loader, directory.path());
    Dictionnary dictionnary("d");

    EXPECT_TRUE(loader.run("s", dictionnary, true));

    EXPECT_THAT(log.messages(log4cplus::INFO_LOG_LEVEL),
                ElementsAre("script loader will read script file from the DiskFileSystem"));
    EXPECT_THAT(keysOf(dictionnary), ElementsAre("s.x"));
}

TEST(ScriptLoaderVFSDiskTest, DiskIsChosenOnceAndAlsoByAConfigurationThatFails) {
    ScriptLoaderVFS loader((TSHandle<VirtualFileSystem>()));
    const LogCapture log(LoggerName);

    EXPECT_FALSE(loader.configure(ParameterTrie()));
    configure(loader, ".");

    EXPECT_EQ(log.count(log4cplus::INFO_LOG_LEVEL, "DiskFileSystem"), 1U);
}

} // namespace
} // namespace Velmora::Math::Xpr
