#pragma once

#include "TableWriter.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Vxpr {

/// The rows on their way to a writer: it settles how wide each column is.
///
/// A writer with fixed widths gets the width of the first value that has any element. Rows are held
/// back until every column has had such a value, up to a fixed amount of memory; a column that had
/// none by then has one element. What a value has beyond its column's width is left out.
class Table {
public:
    /// What happened to a row that has been added.
    struct Overlong {
        std::size_t m_uiColumn = 0;
        std::size_t m_uiSize = 0;  ///< elements that the value has
        std::size_t m_uiWidth = 0; ///< elements that were kept
        std::uint64_t m_uiRow = 0;
        double m_dTime = 0.0;
    };

    Table(std::unique_ptr<TableWriter> in_pWriter, const std::vector<std::string>& in_vNames);

    /// in_vCells has an entry for each name.
    void addRow(double in_dTime, const std::vector<Cell>& in_vCells);

    /// Ends the table; no row may follow.
    void finish();

    /// For each column at most one entry: the first value that was too long.
    const std::vector<Overlong>& getOverlong() const { return m_vOverlong; }

private:
    struct HeldRow {
        double m_dTime = 0.0;
        std::size_t m_uiFirstValue = 0; ///< in m_vHeldValues
        std::vector<Cell> m_vCells;     ///< their pointers are filled in when the row is written
    };

    bool settleWidths(const std::vector<Cell>& in_vCells);
    void hold(double in_dTime, const std::vector<Cell>& in_vCells);
    void release();
    void write(double in_dTime, const std::vector<Cell>& in_vCells);

    std::unique_ptr<TableWriter> m_pWriter;
    std::vector<Column> m_vColumns;
    bool m_bStarted = false;
    std::vector<Cell> m_vFitted;
    std::vector<bool> m_vReported;
    std::vector<Overlong> m_vOverlong;
    std::vector<HeldRow> m_vHeldRows;
    std::vector<double> m_vHeldValues;
    std::uint64_t m_uiRow = 0;
};

} // namespace Vxpr
