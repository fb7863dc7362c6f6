#pragma once

#include "InputTable.h"
#include "TableFile.h"

namespace Vxpr {

/// A table of separated values: a row a line, its values divided by commas, or else by semicolons,
/// tabs or blanks.
///
/// A first line without numbers, or with a column `time` or one of the input's, is a header. A
/// header that has columns called after the input, as `bands` or `bands[0]`, `bands[1]`, chooses
/// those, in the order of their numbers, of which none may be left out or there twice; otherwise
/// every column but `time` counts. Empty cells behind the last element make a row
/// shorter, any other reads as not-a-number. Quotes around a cell don't count, but what separates
/// others is part of it.
class CsvTable : public InputTable {
public:
    CsvTable(const std::string& in_strInput, const std::string& in_strPath);

    bool next(std::vector<double>& out_vRow) override;

private:
    bool isHeader(const std::string& in_strInput) const;
    bool readLine();
    void split();
    void readHeader(const std::string& in_strInput);
    void chooseElements(const std::string& in_strInput);
    std::uint64_t readPlace(const std::string& in_strInput, const std::string& in_strColumn) const;
    [[noreturn]] void fail(const std::string& in_strText) const;

    TableFile m_File;
    std::uint64_t m_uiLine = 0;
    std::string m_strLine;
    char m_cSeparator = ' '; ///< blanks, until a line has another one
    bool m_bPending = false; ///< m_vCells holds a row that hasn't been given yet
    std::vector<std::string> m_vCells;
    std::size_t m_uiCells = 0; ///< of m_vCells, in use
    std::size_t m_uiHeaderCells = 0;
    std::vector<std::size_t> m_vChosen; ///< the columns that count; all if empty
};

} // namespace Vxpr
