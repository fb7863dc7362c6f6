#include <velmora/math/xpr/ScriptLoader.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <velmora/ParameterTrie.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/AssertionCapture.h"
#include "support/LogCapture.h"
#include "support/MemoryFileSystem.h"
#include "support/TempDirectory.h"

namespace Velmora::Math::Xpr {
namespace {

using log4cplus::DEBUG_LOG_LEVEL;
using log4cplus::ERROR_LOG_LEVEL;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* LoggerName = "quillmark.math.xpr.ScriptLoader";
constexpr const char* Key = "quillmark.math.xpr.scriptLoader.scriptsDir";

bool configure(const Handle<ScriptLoader>& in_pLoader, const std::string& in_strDirs) {
    ParameterTrie configuration;
    configuration.setParameter(Key, ParameterValue(in_strDirs.c_str()));
    return in_pLoader->configure(configuration);
}

std::vector<std::string> keysOf(const Dictionnary& in_Dictionnary) {
    std::vector<std::string> vKeys;
    for (const auto& entry : in_Dictionnary) {
        vKeys.push_back(entry.first);
    }
    return vKeys;
}

/// The text that stands as first parameter in `NAME = call<"text">(...)`.
std::string parameterOf(const Dictionnary& in_Dictionnary, const char* in_szName) {
    const Handle<VariableImpl> pVariable(in_Dictionnary.findVariable(in_szName));
    const Handle<FunctionBaseImpl> pCall(pVariable->getValue());
    return pCall->getParameterBegin()->second->getValue().getString();
}

/// A loader and the place that its scripts come from.
struct Way {
    const char* m_szTestName;
    const char* m_szTrying;
    std::function<Handle<ScriptLoader>(const TSHandle<VirtualFileSystem>&)> m_makeLoader;
    bool m_bInMemory;
};

/// What is the same for every loader.
class ScriptLoaderTest : public testing::TestWithParam<Way> {
protected:
    ScriptLoaderTest()
        : m_pMemory(new Testing::MemoryFileSystem({})),
          m_pFiles(m_pMemory),
          m_pLoader(GetParam().m_makeLoader(m_pFiles)) {}

    std::string directory(const std::string& in_strName) const {
        return GetParam().m_bInMemory ? in_strName : m_Directory.path(in_strName);
    }

    void write(const std::string& in_strName, const std::string& in_strText) {
        if (GetParam().m_bInMemory) {
            m_pMemory->setFile(in_strName, in_strText);
        } else {
            m_Directory.write(in_strName, in_strText);
        }
    }

    std::string trying(const std::string& in_strScript, const std::string& in_strPath) const {
        return GetParam().m_szTrying + in_strScript + "\" from file: " + in_strPath;
    }

    bool run(const char* in_szScriptName, bool in_bReportOpenFailure = true) {
        return m_pLoader->run(in_szScriptName, m_Dictionnary, in_bReportOpenFailure);
    }

    TempDirectory m_Directory;
    Testing::MemoryFileSystem* m_pMemory;
    TSHandle<VirtualFileSystem> m_pFiles;
    Handle<ScriptLoader> m_pLoader;
    Dictionnary m_Dictionnary{"d"};
};

INSTANTIATE_TEST_SUITE_P(
    Ways, ScriptLoaderTest,
    testing::Values(Way{"StdIO", "trying to load script \"",
                        [](const auto&) { return Handle<ScriptLoader>(new ScriptLoaderStdIO); },
                        false},
                    Way{"VFS", "trying to loading script \"",
                        [](const auto& in_pFiles) {
                            return Handle<ScriptLoader>(new ScriptLoaderVFS(in_pFiles));
                        },
                        true},
                    Way{"VFSOnDisk", "trying to loading script \"",
                        [](const auto&) {
                            return Handle<ScriptLoader>(
                                new ScriptLoaderVFS(TSHandle<VirtualFileSystem>()));
                        },
                        false}),
    [](const auto& in_info) { return std::string(in_info.param.m_szTestName); });

TEST_P(ScriptLoaderTest, AddsTheDefinitionsOfAScriptInTheirOrder) {
    write("a/s.xpr", "z = 1\nf(x) = x + z\ninputvar in\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));

    EXPECT_TRUE(run("s"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.z", "s.f", "s.in"));
}

TEST_P(ScriptLoaderTest, FirstDirectoryThatHasTheScriptWins) {
    write("a/t.xpr", "other = 0\n");
    write("b/s.xpr", "fromB = 1\n");
    write("c/s.xpr", "fromC = 2\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a") + ";" + directory("b") + ";" + directory("c")));
    const LogCapture log(LoggerName);

    EXPECT_TRUE(run("s"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.fromB"));
    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre(trying("s", directory("a/s.xpr")), trying("s", directory("b/s.xpr")),
                            "Loaded script \"s\" from file: " + directory("b/s.xpr")));
}

TEST_P(ScriptLoaderTest, MissingScriptIsReportedWithTheLastPathTried) {
    ASSERT_TRUE(configure(m_pLoader, directory("a") + ";" + directory("b")));
    const LogCapture log(LoggerName);

    EXPECT_FALSE(run("x", true));

    EXPECT_THAT(log.messages(DEBUG_LOG_LEVEL),
                ElementsAre(trying("x", directory("a/x.xpr")), trying("x", directory("b/x.xpr"))));
    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("can't open file: " + directory("b/x.xpr")));
    EXPECT_EQ(m_Dictionnary.size(), 0U);
}

TEST_P(ScriptLoaderTest, MissingScriptIsNoErrorWhenNobodyAskedForAReport) {
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    const LogCapture log(LoggerName);

    EXPECT_FALSE(run("x", false));

    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL), IsEmpty());
    EXPECT_EQ(log.messages(DEBUG_LOG_LEVEL).back(), "can't open file: " + directory("a/x.xpr"));
}

TEST_P(ScriptLoaderTest, LoaderWithoutDirectoriesOpensNothing) {
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);

    EXPECT_FALSE(run("x"));
    ASSERT_TRUE(configure(m_pLoader, ";;"));
    EXPECT_FALSE(run("x"));

    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("can't open file: ", "can't open file: "));
}

TEST_P(ScriptLoaderTest, ConfigurationWithoutTheSearchPathIsRefused) {
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);

    EXPECT_FALSE(m_pLoader->configure(ParameterTrie()));

    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre(std::string("failed to configure. Can't find parameter: ") + Key));
}

TEST_P(ScriptLoaderTest, ConfiguringAgainReplacesTheSearchPath) {
    write("a/s.xpr", "fromA = 1\n");
    write("b/s.xpr", "fromB = 1\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    ASSERT_TRUE(configure(m_pLoader, directory("b")));

    EXPECT_TRUE(run("s"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.fromB"));
}

TEST_P(ScriptLoaderTest, ExtensionIsAlwaysAdded) {
    write("a/s.xpr", "x = 1\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);

    EXPECT_FALSE(run("s.xpr"));

    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("can't open file: " + directory("a/s.xpr.xpr")));
}

TEST_P(ScriptLoaderTest, NameWithADirectoryIsLookedUpBelowTheSearchPath) {
    write("a/sub/s.xpr", "x = 1\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));

    EXPECT_TRUE(run("sub/s"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x"));
}

TEST_P(ScriptLoaderTest, FileDirectoryIsTheOneWhereTheScriptWasFound) {
    write("b/s.xpr", "x = call<\"$FILE_DIR/table\">(1)\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a") + ";" + directory("b")));

    ASSERT_TRUE(run("s"));

    EXPECT_EQ(parameterOf(m_Dictionnary, "s.x"), directory("b") + "/table");
}

TEST_P(ScriptLoaderTest, SecondLoadReadsTheFirstStatementAndSkipsTheRest) {
    write("a/s.xpr", "x = 1\ny = 2\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    ASSERT_TRUE(run("s"));
    write("a/s.xpr", "x = 3\n)this can't be parsed\n");
    const Handle<Expression> pBefore = m_Dictionnary.findExpression("s.x");
    const LogCapture log(LoggerName);

    EXPECT_TRUE(run("s"));

    EXPECT_EQ(log.messages(DEBUG_LOG_LEVEL).back(),
              "script =\"s.xpr\" is already loaded -> Skipping script loading.");
    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL), IsEmpty());
    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x", "s.y"));
    EXPECT_EQ(&*m_Dictionnary.findExpression("s.x"), &*pBefore);
}

TEST_P(ScriptLoaderTest, ScriptWhoseFirstNameExistsIsTakenForLoaded) {
    Handle<VariableImpl> pVariable(new VariableImpl);
    pVariable->setName("s.x");
    m_Dictionnary.add(Handle<Expression>(pVariable), false);
    write("a/s.xpr", "x = 1\ny = 2\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));

    EXPECT_TRUE(run("s"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x"));
}

TEST_P(ScriptLoaderTest, OnlyTheFirstNameDecidesWhetherAScriptIsLoaded) {
    Handle<VariableImpl> pVariable(new VariableImpl);
    pVariable->setName("s.y");
    m_Dictionnary.add(Handle<Expression>(pVariable), false);
    write("a/s.xpr", "x = 1\ny = 2\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    const AssertionCapture assertions;

    EXPECT_FALSE(run("s"));

    EXPECT_THAT(assertions.expressions(), ElementsAre("out_Dictionnary.add( pExpression )"));
    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.y", "s.x"));
}

TEST_P(ScriptLoaderTest, FaultInTheThirdStatementLeavesTheFirstTwo) {
    write("a/s.xpr", "x = 1\ny = 2\n)\nz = 3\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);

    EXPECT_FALSE(run("s"));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x", "s.y"));
    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("failed to load script: \"s\" from file: " + directory("a/s.xpr")));
}

TEST_P(ScriptLoaderTest, NameThatIsDefinedTwiceFailsAnAssertionAndKeepsTheFirst) {
    write("a/s.xpr", "w = 0\nx = 1\nx = 2\ny = 3\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    const AssertionCapture assertions;

    EXPECT_FALSE(run("s"));

    EXPECT_THAT(assertions.expressions(), ElementsAre("out_Dictionnary.add( pExpression )"));
    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.w", "s.x"));
}

TEST_P(ScriptLoaderTest, EmptyScriptIsLoadedWithoutAnything) {
    write("a/s.xpr", "// nothing here\n\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));

    EXPECT_TRUE(run("s"));

    EXPECT_EQ(m_Dictionnary.size(), 0U);
}

TEST_P(ScriptLoaderTest, OneLoaderServesSeveralDictionaries) {
    write("a/s.xpr", "x = 1\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    Dictionnary other("other");

    EXPECT_TRUE(run("s"));
    EXPECT_TRUE(m_pLoader->run("s", other, true));

    EXPECT_NE(&*m_Dictionnary.findExpression("s.x"), &*other.findExpression("s.x"));
}

TEST_P(ScriptLoaderTest, CloneHasASearchPathOfItsOwn) {
    write("a/s.xpr", "fromA = 1\n");
    write("b/s.xpr", "fromB = 1\n");
    ASSERT_TRUE(configure(m_pLoader, directory("a")));
    std::unique_ptr<Cloneable> pClone(m_pLoader->clone());
    const Handle<ScriptLoader> pCopy(dynamic_cast<ScriptLoader*>(pClone.release()));
    ASSERT_FALSE(pCopy.isNull());
    ASSERT_TRUE(configure(m_pLoader, directory("b")));

    EXPECT_TRUE(pCopy->run("s", m_Dictionnary, true));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.fromA"));
}

TEST_P(ScriptLoaderTest, NullNameFailsAnAssertion) {
    const AssertionCapture assertions;

    EXPECT_FALSE(run(nullptr));

    EXPECT_THAT(assertions.expressions(), ElementsAre("0 != in_szScriptName"));
}

TEST_P(ScriptLoaderTest, ScriptFromAStreamIsNamedByTheStemOfItsName) {
    std::istringstream stream("x = call<\"$FILE_DIR/table\">(1)\n");

    EXPECT_TRUE(m_pLoader->run(stream, "dir/s.txt", m_Dictionnary));

    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x"));
    EXPECT_EQ(parameterOf(m_Dictionnary, "s.x"), "dir/table");
}

TEST_P(ScriptLoaderTest, FaultInAStreamIsReportedByItsName) {
    std::istringstream stream("x = 1\n)\n");
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);

    EXPECT_FALSE(m_pLoader->run(stream, "dir/s", m_Dictionnary));

    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("failed to load script: \"dir/s\" from file: dir/s"));
    EXPECT_THAT(keysOf(m_Dictionnary), ElementsAre("s.x"));
}

TEST_P(ScriptLoaderTest, StreamWhoseNameHasNoStemCannotBeParsed) {
    std::istringstream stream("x = 1\n");
    const LogCapture log(LoggerName, ERROR_LOG_LEVEL);
    const AssertionCapture assertions;

    EXPECT_FALSE(m_pLoader->run(stream, "dir/", m_Dictionnary));

    EXPECT_THAT(log.messages(ERROR_LOG_LEVEL),
                ElementsAre("failed to initialize parser from script file dir/"));
    EXPECT_EQ(assertions.count(), 1U);
}

TEST_P(ScriptLoaderTest, StreamWithoutANameFailsAnAssertion) {
    std::istringstream stream("x = 1\n");
    const AssertionCapture assertions;

    EXPECT_FALSE(m_pLoader->run(stream, nullptr, m_Dictionnary));

    EXPECT_THAT(assertions.expressions(),
                ElementsAre("OS::stripFileName( in_szFilePath, strFileDirectory )"));
    EXPECT_EQ(m_Dictionnary.size(), 0U);
}

} // namespace
} // namespace Velmora::Math::Xpr
