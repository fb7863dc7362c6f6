#pragma once

#include <cstdio>
#include <string>

namespace Vxpr {

/// A file that is open for reading; "-" is the standard input.
class TableFile {
public:
    /// Throws a Failure if the file can't be opened. in_strName is the file's name in messages.
    TableFile(const std::string& in_strPath, const std::string& in_strName);
    ~TableFile();
    TableFile(const TableFile&) = delete;
    TableFile& operator=(const TableFile&) = delete;

    /// The next line without its end; false at the end of the file. Line ends of any system count.
    bool readLine(std::string& out_strLine);

    /// Fills in_pData, false if the file ends before.
    bool readBytes(void* in_pData, std::size_t in_uiSize);

private:
    void checkError() const;

    std::string m_strName;
    std::FILE* m_pFile = nullptr;
};

} // namespace Vxpr
