#include <velmora/DiskFileSystem.h>
#include <velmora/vfsistream.h>

#include <gtest/gtest.h>

#include "support/TempDirectory.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <iterator>
#include <string>

namespace Velmora {
namespace {

/// A file of a given text that hands out a few bytes at a time and may break at its end.
class TextFile : public VirtualFile {
public:
    TextFile(std::string in_strText, std::size_t in_uiChunk, bool in_bBreaks)
        : m_strText(std::move(in_strText)), m_uiChunk(in_uiChunk), m_bBreaks(in_bBreaks) {}

    long read(char* out_pBuffer, std::size_t in_uiCount) override {
        const std::size_t uiCount =
            std::min({in_uiCount, m_uiChunk, m_strText.size() - m_uiPosition});
        std::memcpy(out_pBuffer, m_strText.data() + m_uiPosition, uiCount);
        m_uiPosition += uiCount;
        return uiCount == 0 && m_bBreaks ? -1 : static_cast<long>(uiCount);
    }
    const char* getPath() const override { return "memory"; }

private:
    const std::string m_strText;
    const std::size_t m_uiChunk;
    const bool m_bBreaks;
    std::size_t m_uiPosition = 0;
};

class TextFileSystem : public VirtualFileSystem {
public:
    TextFileSystem(std::string in_strText, std::size_t in_uiChunk, bool in_bBreaks = false)
        : m_strText(std::move(in_strText)), m_uiChunk(in_uiChunk), m_bBreaks(in_bBreaks) {}

    TSHandle<VirtualFile> open(const char*) override {
        return new TextFile(m_strText, m_uiChunk, m_bBreaks);
    }

private:
    const std::string m_strText;
    const std::size_t m_uiChunk;
    const bool m_bBreaks;
};

std::string readAll(std::istream& inout_stream) {
    return {std::istreambuf_iterator<char>(inout_stream), std::istreambuf_iterator<char>()};
}

TEST(VfsistreamTest, ReadsAFileAndTellsItsFileAndFileSystem) {
    const TempDirectory directory;
    const std::string strPath = directory.write("file.txt", "12 word\nline");
    const TSHandle<VirtualFileSystem> pFileSystem(new DiskFileSystem);
    basic_vfsistream<char> stream(pFileSystem, strPath.c_str());
    ASSERT_TRUE(stream.good());
    int iNumber = 0;
    std::string strWord;
    std::string strLine;
    stream >> iNumber >> strWord >> strLine;
    EXPECT_EQ(12, iNumber);
    EXPECT_EQ("word", strWord);
    EXPECT_EQ("line", strLine);
    EXPECT_TRUE(stream.eof());
    EXPECT_FALSE(stream.bad());
    EXPECT_EQ(strPath, stream.getFile()->getPath());
    EXPECT_EQ(pFileSystem, stream.getFileSystem());
}

TEST(VfsistreamTest, IsFoundBehindAPlainStream) {
    const TSHandle<VirtualFileSystem> pFileSystem(new TextFileSystem("text", 10));
    vfsistream stream(pFileSystem, "any");
    std::istream& plain = stream;
    EXPECT_EQ(&stream, dynamic_cast<basic_vfsistream<char>*>(&plain));
}

TEST(VfsistreamTest, AFileThatCannotBeOpenedSetsFailbit) {
    const TSHandle<VirtualFileSystem> pFileSystem(new DiskFileSystem);
    vfsistream missing(pFileSystem, "/nonexistent/file");
    EXPECT_EQ(std::ios_base::failbit, missing.rdstate());
    EXPECT_TRUE(missing.getFile().isNull());
    EXPECT_EQ(pFileSystem, missing.getFileSystem());
    EXPECT_EQ("", readAll(missing));

    const vfsistream directory(pFileSystem, "/");
    EXPECT_TRUE(directory.fail());

    const vfsistream none(TSHandle<VirtualFileSystem>(), "any");
    EXPECT_TRUE(none.fail());
    EXPECT_TRUE(none.getFileSystem().isNull());
}

TEST(VfsistreamTest, AnEmptyFileIsAtItsEnd) {
    vfsistream stream(new TextFileSystem("", 10), "any");
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(std::char_traits<char>::eof(), stream.get());
    EXPECT_TRUE(stream.eof());
}

TEST(VfsistreamTest, ALargeFileArrivesWholeHoweverItIsRead) {
    std::string strText;
    for (int i = 0; i < 20000; ++i) {
        strText += static_cast<char>(i % 256);
    }
    for (const std::size_t uiChunk : {1u, 7u, 4096u, 100000u}) {
        vfsistream stream(new TextFileSystem(strText, uiChunk), "any");
        EXPECT_EQ(strText, readAll(stream)) << uiChunk;
        EXPECT_FALSE(stream.bad());
    }
}

TEST(VfsistreamTest, CharactersCanBePutBackAcrossReads) {
    vfsistream stream(new TextFileSystem("abcd", 1), "any");
    char c = 0;
    stream >> c >> c >> c;
    EXPECT_EQ('c', c);
    stream.putback('c').putback('b');
    EXPECT_TRUE(stream.good());
    EXPECT_EQ("bcd", readAll(stream));
}

TEST(VfsistreamTest, AReadThatFailsSetsBadbit) {
    vfsistream stream(new TextFileSystem("ab", 10, true), "any");
    std::string strText;
    stream >> strText;
    EXPECT_EQ("ab", strText);
    EXPECT_TRUE(stream.bad());
}

} // namespace
} // namespace Velmora
