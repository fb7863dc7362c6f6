#pragma once

#include "Output.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Vxpr {

/// One feature's share of a table.
struct Column {
    std::string m_strName;
    std::size_t m_uiWidth = 1; ///< elements of a value, at least 1
};

/// One feature's value in one row. It points into a vector that outlives the call.
struct Cell {
    const double* m_pValues = nullptr;
    std::size_t m_uiSize = 0;
    bool m_bMissing = false; ///< there is no value, which is not the same as an empty one
};

/// A form of table. The calls come in the order begin, any number of writeRow, end.
class TableWriter {
public:
    virtual ~TableWriter() = default;

    /// Whether every row must have as many elements as the columns say. If not, widths may be 0.
    virtual bool hasFixedWidths() const = 0;

    virtual void begin(const std::vector<Column>& in_vColumns) = 0;

    /// in_vCells has an entry for each column. With fixed widths a value that is shorter than its
    /// column leaves the rest of it empty, and none is longer.
    virtual void writeRow(double in_dTime, const std::vector<Cell>& in_vCells) = 0;

    virtual void end() = 0;
};

} // namespace Vxpr
