// What a script can make the library open: the files NAME.xpr in the directories of the search
// path, for names that it can write, and nothing else.

#include <velmora/math/xpr/Evaluator.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Linker.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>

#include "math/xpr/ParsedScript.h"
#include "support/LinkBench.h"
#include "support/LogCapture.h"
#include "support/MemoryFileSystem.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using Testing::LinkBench;
using ::testing::MatchesRegex;
using Testing::position;
using Testing::scriptsIn;

/// Links a script "s", and gives the paths that it made the library ask for.
std::vector<std::string> pathsOf(const std::string& in_strScript) {
    const LogCapture quiet(std::string(), log4cplus::FATAL_LOG_LEVEL);
    LinkBench bench;
    bench.load("s", in_strScript);
    bench.link();
    return bench.files().getAskedPaths();
}

TEST(ScriptFilesTest, ANameLeadsToTheFilesThatItCanStandFor) {
    EXPECT_THAT(pathsOf("x = a.b\n"), ElementsAre("scripts/a.xpr"));
    // The file of `a` is asked for once as the script of `a.a` and once as that of `a`.
    EXPECT_THAT(pathsOf("x = a\n"), ElementsAre("scripts/s.xpr", "scripts/a.xpr", "scripts/a.xpr"));
    EXPECT_THAT(pathsOf("x = a.b.c(1)\n"), ElementsAre("scripts/a.xpr"));
    EXPECT_THAT(pathsOf("x = 1\n"), IsEmpty());
}

/// Scripts that try to lead elsewhere.
class HostileNameTest : public ::testing::TestWithParam<std::string> {};

TEST_P(HostileNameTest, StaysInTheDirectoriesOfTheSearchPath) {
    EXPECT_THAT(pathsOf(GetParam() + "\n"), Each(MatchesRegex("scripts/[^/]*[.]xpr")));
}

INSTANTIATE_TEST_SUITE_P(
    Scripts, HostileNameTest,
    ::testing::Values("x = ../a.b", "x = ..a", "x = .a.b", "x = a..b", "x = a./b",
                      "x = /etc/passwd", "x = a.b/../../c", "x = a /*/../../b*/ . c",
                      "x = a /*..*/ . /*/etc*/ b", "x = a. /*/../b*/ c", "x = a #/../../b\n.c",
                      "x = a //../../b\n.c", "x = a \\\n.b", "x = f<\"../a.xpr\">(1)",
                      "x = f<\"$FILE_DIR/../a.xpr\">(1)", "x = \"/etc/passwd\"", "x = ~root.a",
                      "x = a*b.c[0..1]", "x = a:b.c", "x = file:///etc/passwd", "x = con.a + nul.b",
                      "x = $FILE_DIR.a", std::string("x = a #\0/../b\n.c", 17),
                      std::string("x = a\0.b", 8)));

TEST(ScriptFilesTest, ANameOfAnyLengthIsOneThatNoFileHas) {
    const TempDirectory directory;
    directory.write("s.xpr", "x = " + std::string(100000, 'n') + ".y\n");
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    Evaluator evaluator;
    ASSERT_TRUE(
        evaluator.configure(scriptsIn(directory.path().c_str()), TSHandle<VirtualFileSystem>()));
    ASSERT_TRUE(evaluator.addScript("s"));
    EXPECT_FALSE(evaluator.link(true));
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, position(1, 5) + ":can't resolve expression"),
              1U);
}

/// A directory with everything in it that has the name of a script and is none.
class NoScriptTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::create_directories(m_Directory.path("directory.xpr"));
        ASSERT_EQ(mkfifo(m_Directory.path("pipe.xpr").c_str(), 0600), 0) << std::strerror(errno);
        link("itself.xpr", "itself.xpr");
        link("second.xpr", "first.xpr");
        link("first.xpr", "second.xpr");
        link("nothing", "dangling.xpr");
        link("/dev/zero", "endless.xpr");
        link("/dev/null", "empty.xpr");
        link("/dev/tty", "terminal.xpr");
        link("pipe.xpr", "linkToPipe.xpr");
        link(".", "linkToDirectory.xpr");
        bindSocket("socket.xpr");
    }

    void TearDown() override { close(m_iSocket); }

    void link(const char* in_szTarget, const std::string& in_strName) const {
        std::filesystem::create_symlink(in_szTarget, m_Directory.path(in_strName));
    }

    void bindSocket(const std::string& in_strName) {
        m_iSocket = socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string strPath = m_Directory.path(in_strName);
        ASSERT_LT(strPath.size(), sizeof address.sun_path);
        strPath.copy(address.sun_path, strPath.size());
        ASSERT_EQ(bind(m_iSocket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
            << std::strerror(errno);
    }

    const std::vector<std::string> m_vNames{"directory", "pipe",       "itself",          "first",
                                            "second",    "dangling",   "endless",         "empty",
                                            "terminal",  "linkToPipe", "linkToDirectory", "socket"};
    const TempDirectory m_Directory;
    int m_iSocket = -1;
};

TEST_F(NoScriptTest, CannotBeAddedByAHost) {
    Evaluator evaluator;
    ASSERT_TRUE(
        evaluator.configure(scriptsIn(m_Directory.path().c_str()), TSHandle<VirtualFileSystem>()));
    ScriptLoaderStdIO loader;
    ASSERT_TRUE(loader.configure(scriptsIn(m_Directory.path().c_str())));
    Dictionnary dictionnary("d");
    for (const std::string& strName : m_vNames) {
        const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
        const std::string strLine = "can't open file: " + m_Directory.path(strName) + ".xpr";
        EXPECT_FALSE(evaluator.addScript(strName.c_str())) << strName;
        EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, strLine), 1U);
        EXPECT_FALSE(loader.run(strName.c_str(), dictionnary, true)) << strName;
        EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, strLine), 2U);
    }
}

TEST_F(NoScriptTest, CannotBeReachedByAScript) {
    std::string strScript;
    std::vector<std::string> vErrors;
    int iLine = 0;
    for (const std::string& strName : m_vNames) {
        strScript += "v" + std::to_string(++iLine) + " = " + strName + ".x\n";
        vErrors.push_back(position(iLine, iLine < 10 ? 6 : 7) + ":can't resolve expression: s." +
                          strName + ".x");
    }
    m_Directory.write("s.xpr", strScript);

    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    Evaluator evaluator;
    ASSERT_TRUE(
        evaluator.configure(scriptsIn(m_Directory.path().c_str()), TSHandle<VirtualFileSystem>()));
    ASSERT_TRUE(evaluator.addScript("s"));
    EXPECT_FALSE(evaluator.link(true));
    EXPECT_THAT(log.messages(log4cplus::ERROR_LOG_LEVEL), IsSupersetOf(vErrors));

    // A linker that was given no loader reads through the streams of the standard library.
    std::istringstream stream(strScript);
    Dictionnary raw("raw");
    Dictionnary linked("linked");
    ScriptLoaderStdIO loader;
    ASSERT_TRUE(loader.run(stream, "s", raw));
    Linker linker;
    ASSERT_TRUE(linker.configure(scriptsIn(m_Directory.path().c_str()), Handle<ScriptLoader>()));
    const LogCapture logOfStreams(std::string(), log4cplus::ERROR_LOG_LEVEL);
    EXPECT_FALSE(linker.run(raw, linked));
    EXPECT_THAT(logOfStreams.messages(log4cplus::ERROR_LOG_LEVEL), IsSupersetOf(vErrors));
}

TEST_F(NoScriptTest, IsPassedByForAFileInALaterDirectory) {
    const TempDirectory later;
    for (const std::string& strName : m_vNames) {
        later.write(strName + ".xpr", "x = 1\n");
    }
    Evaluator evaluator;
    const std::string strPath = m_Directory.path() + ";" + later.path();
    ASSERT_TRUE(evaluator.configure(scriptsIn(strPath.c_str()), TSHandle<VirtualFileSystem>()));
    for (const std::string& strName : m_vNames) {
        EXPECT_TRUE(evaluator.addScript(strName.c_str())) << strName;
    }
}

/// A file of zero bytes that takes no room on the disk.
TEST(ScriptFilesTest, AFileOfMoreThanAScriptMayHaveIsNotReadToItsEnd) {
    const TempDirectory directory;
    const std::string strPath = directory.write("huge.xpr", "x = 1\n");
    ASSERT_EQ(truncate(strPath.c_str(), off_t{1} << 42), 0) << std::strerror(errno);
    const LogCapture log(std::string(), log4cplus::ERROR_LOG_LEVEL);
    Evaluator evaluator;
    ASSERT_TRUE(
        evaluator.configure(scriptsIn(directory.path().c_str()), TSHandle<VirtualFileSystem>()));
    EXPECT_FALSE(evaluator.addScript("huge"));
    const std::string strLine =
        "syntax error:<file_position fileName=\"huge\" line=\"1\" column=\"1\"/> The script has "
        "more than 33554432 bytes.";
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, strLine), 1U);

    ScriptLoaderStdIO loader;
    ASSERT_TRUE(loader.configure(scriptsIn(directory.path().c_str())));
    Dictionnary dictionnary("d");
    EXPECT_FALSE(loader.run("huge", dictionnary, true));
    EXPECT_EQ(dictionnary.size(), 0U);
    EXPECT_EQ(log.count(log4cplus::ERROR_LOG_LEVEL, strLine), 2U);
}

} // namespace
} // namespace Velmora::Math::Xpr
