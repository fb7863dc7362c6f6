#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Vxpr {

/// Whether both paths lead to one regular file: what is read must not be overwritten.
bool isSameFile(const std::string& in_strLeft, const std::string& in_strRight);

/// Where results go: the standard output, a file, or a device that stands under the file's name.
///
/// A file appears under its name only with commit(): until then it is written beside it under a
/// temporary name, and it is removed if commit() isn't reached, also when the process is
/// interrupted. An existing file keeps its permissions, a symbolic link stays one.
///
/// Every operation throws a Failure that says what went wrong, such as a full disk, and BrokenPipe
/// when nobody reads the other end.
class Output {
public:
    /// "-" is the standard output.
    explicit Output(const std::string& in_strPath);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void append(std::string_view in_strText);
    void append(char in_cCharacter);
    void appendNumber(double in_dValue);

    /// Hands over everything that has been appended.
    void flush();

    /// Replaces bytes that have been written before. The output must be a regular file.
    void overwrite(std::uint64_t in_uiOffset, std::string_view in_strText);

    /// Flushes, closes, and gives the file its name.
    void commit();

    /// Whether the output is a regular file under construction.
    bool isFile() const { return !m_strTemporary.empty(); }

    /// Whether the output is the standard output.
    bool isStandardOutput() const { return m_bStandardOutput; }

private:
    void openBeside(const std::string& in_strTarget, unsigned in_uiMode);
    void makeRoom(std::size_t in_uiBytes);
    void write(const char* in_pData, std::size_t in_uiSize);
    [[noreturn]] void failToWrite(int in_iError) const;

    std::string m_strPath;
    std::string m_strTarget;
    std::string m_strTemporary;
    bool m_bStandardOutput = false;
    int m_iFile = -1;
    std::string m_strBuffer;
    std::size_t m_uiUsed = 0;
};

} // namespace Vxpr
