#pragma once

#include "InputTable.h"
#include "TableFile.h"

namespace Vxpr {

/// A NumPy array file of one or two dimensions, of 32-bit or 64-bit floats in little-endian and C
/// order: the first dimension counts the frames.
class NpyTable : public InputTable {
public:
    explicit NpyTable(const std::string& in_strPath);

    bool next(std::vector<double>& out_vRow) override;

private:
    void readHeader();
    void readShape(const std::string& in_strShape);
    [[noreturn]] void refuse(const std::string& in_strWhat) const;

    TableFile m_File;
    bool m_bDouble = true;
    std::uint64_t m_uiRows = 0;
    std::size_t m_uiColumns = 1;
    std::uint64_t m_uiRow = 0;
    std::vector<char> m_vBytes;
};

} // namespace Vxpr
