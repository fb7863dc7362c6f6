#include "Table.h"

#include <algorithm>

namespace Vxpr {

namespace {

/// Numbers held back at most: 8 MB.
constexpr std::size_t MOST_HELD = std::size_t(1) << 20;

} // namespace

Table::Table(std::unique_ptr<TableWriter> in_pWriter, const std::vector<std::string>& in_vNames)
    : m_pWriter(std::move(in_pWriter)), m_vReported(in_vNames.size(), false) {
    for (const std::string& strName : in_vNames) {
        m_vColumns.push_back({strName, 0});
    }
}

bool Table::settleWidths(const std::vector<Cell>& in_vCells) {
    bool bSettled = true;
    for (std::size_t uiColumn = 0; uiColumn < m_vColumns.size(); ++uiColumn) {
        std::size_t& uiWidth = m_vColumns[uiColumn].m_uiWidth;
        if (uiWidth == 0 && !in_vCells[uiColumn].m_bMissing) {
            uiWidth = in_vCells[uiColumn].m_uiSize;
        }
        bSettled = bSettled && uiWidth > 0;
    }
    return bSettled;
}

void Table::addRow(double in_dTime, const std::vector<Cell>& in_vCells) {
    if (m_bStarted) {
        write(in_dTime, in_vCells);
        return;
    }
    if (!m_pWriter->hasFixedWidths()) {
        m_bStarted = true;
        m_pWriter->begin(m_vColumns);
        write(in_dTime, in_vCells);
        return;
    }
    const bool bSettled = settleWidths(in_vCells);
    hold(in_dTime, in_vCells);
    if (bSettled || m_vHeldValues.size() + m_vHeldRows.size() * m_vColumns.size() > MOST_HELD) {
        release();
    }
}

void Table::hold(double in_dTime, const std::vector<Cell>& in_vCells) {
    HeldRow row{in_dTime, m_vHeldValues.size(), in_vCells};
    for (const Cell& cell : in_vCells) {
        m_vHeldValues.insert(m_vHeldValues.end(), cell.m_pValues, cell.m_pValues + cell.m_uiSize);
    }
    m_vHeldRows.push_back(std::move(row));
}

void Table::release() {
    m_bStarted = true;
    for (Column& column : m_vColumns) {
        column.m_uiWidth = std::max<std::size_t>(column.m_uiWidth, 1);
    }
    m_pWriter->begin(m_vColumns);
    for (HeldRow& row : m_vHeldRows) {
        const double* pValue = m_vHeldValues.data() + row.m_uiFirstValue;
        for (Cell& cell : row.m_vCells) {
            cell.m_pValues = pValue;
            pValue += cell.m_uiSize;
        }
        write(row.m_dTime, row.m_vCells);
    }
    m_vHeldRows = {};
    m_vHeldValues = {};
}

void Table::write(double in_dTime, const std::vector<Cell>& in_vCells) {
    m_vFitted = in_vCells;
    for (std::size_t uiColumn = 0; m_pWriter->hasFixedWidths() && uiColumn < m_vColumns.size();
         ++uiColumn) {
        const std::size_t uiWidth = m_vColumns[uiColumn].m_uiWidth;
        Cell& cell = m_vFitted[uiColumn];
        if (cell.m_bMissing || cell.m_uiSize <= uiWidth) {
            continue;
        }
        if (!m_vReported[uiColumn]) {
            m_vReported[uiColumn] = true;
            m_vOverlong.push_back({uiColumn, cell.m_uiSize, uiWidth, m_uiRow, in_dTime});
        }
        cell.m_uiSize = uiWidth;
    }
    m_pWriter->writeRow(in_dTime, m_vFitted);
    ++m_uiRow;
}

void Table::finish() {
    if (!m_bStarted) {
        release();
    }
    m_pWriter->end();
}

} // namespace Vxpr
