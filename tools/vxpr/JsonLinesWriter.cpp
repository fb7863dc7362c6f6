#include "JsonLinesWriter.h"

#include <cmath>

namespace Vxpr {

void JsonLinesWriter::begin(const std::vector<Column>& in_vColumns) {
    m_vKeys.clear();
    for (const Column& column : in_vColumns) {
        m_vKeys.push_back(",\"" + column.m_strName + "\":");
    }
}

void JsonLinesWriter::writeValue(double in_dValue) {
    if (std::isfinite(in_dValue)) {
        m_Output.appendNumber(in_dValue);
    } else if (std::isnan(in_dValue)) {
        m_Output.append("\"NaN\"");
    } else {
        m_Output.append(in_dValue > 0.0 ? "\"Infinity\"" : "\"-Infinity\"");
    }
}

void JsonLinesWriter::writeRow(double in_dTime, const std::vector<Cell>& in_vCells) {
    m_Output.append("{\"time\":");
    m_Output.appendNumber(in_dTime);
    for (std::size_t uiColumn = 0; uiColumn < m_vKeys.size(); ++uiColumn) {
        const Cell& cell = in_vCells[uiColumn];
        m_Output.append(m_vKeys[uiColumn]);
        if (cell.m_bMissing) {
            m_Output.append("null");
        } else if (cell.m_uiSize == 1) {
            writeValue(*cell.m_pValues);
        } else {
            m_Output.append('[');
            for (std::size_t uiElement = 0; uiElement < cell.m_uiSize; ++uiElement) {
                if (uiElement > 0) {
                    m_Output.append(',');
                }
                writeValue(cell.m_pValues[uiElement]);
            }
            m_Output.append(']');
        }
    }
    m_Output.append("}\n");
}

} // namespace Vxpr
