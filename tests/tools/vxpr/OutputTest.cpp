#include "tools/vxpr/Output.h"

#include "ScratchDirectory.h"
#include "tools/vxpr/Failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace Vxpr {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::readFile;
using TestSupport::ScratchDirectory;

namespace {

mode_t getMode(const std::string& in_strPath) {
    struct stat status {};
    stat(in_strPath.c_str(), &status);
    return status.st_mode & 0777;
}

std::string failToOpen(const std::string& in_strPath) {
    try {
        Output output(in_strPath);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.getStatus(), ExitStatus::DataAtFault);
        return failure.what();
    }
    return "no failure";
}

} // namespace

TEST(OutputTest, AFileAppearsOnlyWhenItIsCommitted) {
    const ScratchDirectory scratch;
    Output output(scratch.getPath("table.csv"));
    output.append("a,b\n");
    output.flush();
    EXPECT_FALSE(std::filesystem::exists(scratch.getPath("table.csv")));
    output.commit();
    EXPECT_EQ(readFile(scratch.getPath("table.csv")), "a,b\n");
    EXPECT_THAT(scratch.list(), ElementsAre("table.csv"));
}

TEST(OutputTest, WhatIsntCommittedLeavesNothingBehindAndTheOldFileInPlace) {
    const ScratchDirectory scratch;
    scratch.write("table.csv", "old");
    {
        Output output(scratch.getPath("table.csv"));
        output.append("new");
        output.flush();
    }
    EXPECT_EQ(readFile(scratch.getPath("table.csv")), "old");
    EXPECT_THAT(scratch.list(), ElementsAre("table.csv"));
}

TEST(OutputTest, AReplacedFileKeepsItsPermissions) {
    const ScratchDirectory scratch;
    scratch.write("table.csv", "old");
    chmod(scratch.getPath("table.csv").c_str(), 0640);
    Output output(scratch.getPath("table.csv"));
    output.append("new");
    output.commit();
    EXPECT_EQ(readFile(scratch.getPath("table.csv")), "new");
    EXPECT_EQ(getMode(scratch.getPath("table.csv")), 0640U);
}

TEST(OutputTest, ANewFileHasTheUsualPermissions) {
    const ScratchDirectory scratch;
    const mode_t mask = umask(027);
    Output output(scratch.getPath("table.csv"));
    output.commit();
    umask(mask);
    EXPECT_EQ(getMode(scratch.getPath("table.csv")), 0640U);
}

TEST(OutputTest, ASymbolicLinkStaysOne) {
    const ScratchDirectory scratch;
    scratch.write("real.csv", "old");
    std::filesystem::create_symlink("real.csv", scratch.getPath("link.csv"));
    Output output(scratch.getPath("link.csv"));
    output.append("new");
    output.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(scratch.getPath("link.csv")));
    EXPECT_EQ(readFile(scratch.getPath("real.csv")), "new");
}

TEST(OutputTest, AFullDiskIsNoticed) {
    Output output("/dev/full");
    output.append("something");
    try {
        output.commit();
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("No space left on device"));
        EXPECT_THAT(failure.what(), HasSubstr("free some space"));
    }
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(OutputTest, ADeviceIsWrittenToAndStays) {
    Output output("/dev/null");
    output.append("something");
    output.commit();
    EXPECT_FALSE(output.isFile());
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(OutputTest, WhereNothingCanBeWrittenIsRefusedAtOnce) {
    const ScratchDirectory scratch;
    EXPECT_THAT(failToOpen(scratch.getPath()), HasSubstr("is a directory"));
    EXPECT_THAT(failToOpen(scratch.getPath("missing/table.csv")), HasSubstr("No such file"));
}

TEST(OutputTest, WhereWritingIsForbiddenIsRefusedAtOnce) {
    const ScratchDirectory scratch;
    chmod(scratch.getPath().c_str(), 0755);
    scratch.write("locked/x", "");
    chmod(scratch.getPath("locked").c_str(), 0555);
    scratch.write("open/table.csv", "old");
    chmod(scratch.getPath("open").c_str(), 0777);
    chmod(scratch.getPath("open/table.csv").c_str(), 0444);
    {
        const TestSupport::Unprivileged unprivileged;
        EXPECT_THAT(failToOpen(scratch.getPath("locked/table.csv")),
                    HasSubstr("Permission denied"));
        // A file that its owner has locked isn't replaced, although its directory would allow it.
        EXPECT_THAT(failToOpen(scratch.getPath("open/table.csv")), HasSubstr("Permission denied"));
    }
    EXPECT_EQ(readFile(scratch.getPath("open/table.csv")), "old");
    chmod(scratch.getPath("locked").c_str(), 0755);
}

TEST(OutputTest, TheLongestNameLeavesRoomForATemporaryOne) {
    const ScratchDirectory scratch;
    const std::string strName(255, 'x');
    Output output(scratch.getPath(strName));
    output.append("x");
    output.commit();
    EXPECT_THAT(scratch.list(), ElementsAre(strName));
}

TEST(OutputTest, TextsOfAnySizeArriveInTheirOrder) {
    const ScratchDirectory scratch;
    std::string strExpected;
    {
        Output output(scratch.getPath("table.csv"));
        for (const std::size_t uiSize : {1U, 65535U, 2U, 65536U, 65537U, 200000U, 3U}) {
            const std::string strText(uiSize, static_cast<char>('a' + uiSize % 26));
            output.append(strText);
            output.append('\n');
            output.appendNumber(0.5);
            strExpected += strText + "\n0.5";
        }
        output.overwrite(0, "X");
        output.commit();
    }
    strExpected[0] = 'X';
    EXPECT_EQ(readFile(scratch.getPath("table.csv")), strExpected);
}

} // namespace Vxpr
