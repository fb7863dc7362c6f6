#include <velmora/DiskFileSystem.h>

#include <gtest/gtest.h>

#include "support/TempDirectory.h"

#include <filesystem>
#include <string>

#include <sys/resource.h>
#include <sys/stat.h>

namespace Velmora {
namespace {

class DiskFileSystemTest : public testing::Test {
protected:
    bool opens(const std::string& in_strPath) {
        return !m_fileSystem.open(in_strPath.c_str()).isNull();
    }

    TempDirectory m_directory;
    DiskFileSystem m_fileSystem;
};

TEST_F(DiskFileSystemTest, ReadsAFileInPiecesUpToItsEnd) {
    const std::string strPath = m_directory.write("file.txt", std::string("ab\0cde", 6));
    const TSHandle<VirtualFile> pFile = m_fileSystem.open(strPath.c_str());
    ASSERT_FALSE(pFile.isNull());
    EXPECT_EQ(strPath, pFile->getPath());
    char buffer[8] = {};
    EXPECT_EQ(0, pFile->read(buffer, 0));
    ASSERT_EQ(4, pFile->read(buffer, 4));
    EXPECT_EQ(std::string("ab\0c", 4), std::string(buffer, 4));
    ASSERT_EQ(2, pFile->read(buffer, sizeof buffer));
    EXPECT_EQ("de", std::string(buffer, 2));
    EXPECT_EQ(0, pFile->read(buffer, sizeof buffer));
}

TEST_F(DiskFileSystemTest, AFileThatCannotBeReadIsNegative) {
    const std::string strPath = m_directory.write("file.txt", "text");
    const TSHandle<VirtualFile> pFile = m_fileSystem.open(strPath.c_str());
    ASSERT_FALSE(pFile.isNull());
    EXPECT_GT(0, pFile->read(nullptr, 4));
}

TEST_F(DiskFileSystemTest, AFileIsNotOpenedWhereTheProcessMayOpenNoMore) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the sanitizer needs to open files of its own";
#endif
    const std::string strPath = m_directory.write("file.txt", "text");
    rlimit former{};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &former));
    const rlimit none{0, former.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
    const bool bOpened = opens(strPath);
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &former));
    EXPECT_FALSE(bOpened);
    EXPECT_TRUE(opens(strPath));
}

TEST_F(DiskFileSystemTest, WhatIsNoRegularFileIsNotOpened) {
    const std::string strFile = m_directory.write("file.txt", "text");
    EXPECT_FALSE(opens(m_directory.path("missing")));
    EXPECT_FALSE(opens(m_directory.path()));
    EXPECT_FALSE(opens(strFile + "/"));
    EXPECT_FALSE(opens(strFile + "/below"));
    EXPECT_FALSE(opens(""));
    EXPECT_FALSE(opens("/dev/null"));
    EXPECT_FALSE(opens(std::string(5000, 'x')));
    EXPECT_TRUE(m_fileSystem.open(nullptr).isNull());
}

TEST_F(DiskFileSystemTest, ANamedPipeIsNotWaitedFor) {
    const std::string strPipe = m_directory.path("pipe");
    ASSERT_EQ(0, ::mkfifo(strPipe.c_str(), 0600));
    EXPECT_FALSE(opens(strPipe));
}

TEST_F(DiskFileSystemTest, LinksAreFollowedUnlessTheyLeadInACircle) {
    std::filesystem::create_symlink(m_directory.write("file.txt", "text"),
                                    m_directory.path("link"));
    std::filesystem::create_symlink(m_directory.path("circle2"), m_directory.path("circle1"));
    std::filesystem::create_symlink(m_directory.path("circle1"), m_directory.path("circle2"));
    std::filesystem::create_symlink(m_directory.path(), m_directory.path("directory"));
    EXPECT_TRUE(opens(m_directory.path("link")));
    EXPECT_TRUE(opens(m_directory.path("directory/file.txt")));
    EXPECT_FALSE(opens(m_directory.path("circle1")));
    EXPECT_FALSE(opens(m_directory.path("directory")));
}

TEST_F(DiskFileSystemTest, FilesOutliveTheirFileSystem) {
    const std::string strPath = m_directory.write("file.txt", "text");
    TSHandle<VirtualFileSystem> pFileSystem(new DiskFileSystem);
    const TSHandle<VirtualFile> pFile = pFileSystem->open(strPath.c_str());
    pFileSystem = nullptr;
    char buffer[4];
    EXPECT_EQ(4, pFile->read(buffer, 4));
}

} // namespace
} // namespace Velmora
