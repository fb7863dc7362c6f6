#include "CsvWriter.h"

namespace Vxpr {

void CsvWriter::begin(const std::vector<Column>& in_vColumns) {
    m_vColumns = in_vColumns;
    m_Output.append("time");
    for (const Column& column : m_vColumns) {
        for (std::size_t uiElement = 0; uiElement < column.m_uiWidth; ++uiElement) {
            m_Output.append(',');
            m_Output.append(column.m_strName);
            if (column.m_uiWidth > 1) {
                m_Output.append("[" + std::to_string(uiElement) + "]");
            }
        }
    }
    m_Output.append('\n');
}

void CsvWriter::writeRow(double in_dTime, const std::vector<Cell>& in_vCells) {
    m_Output.appendNumber(in_dTime);
    for (std::size_t uiColumn = 0; uiColumn < m_vColumns.size(); ++uiColumn) {
        const Cell& cell = in_vCells[uiColumn];
        for (std::size_t uiElement = 0; uiElement < m_vColumns[uiColumn].m_uiWidth; ++uiElement) {
            m_Output.append(',');
            if (!cell.m_bMissing && uiElement < cell.m_uiSize) {
                m_Output.appendNumber(cell.m_pValues[uiElement]);
            }
        }
    }
    m_Output.append('\n');
}

} // namespace Vxpr
