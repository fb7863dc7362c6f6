#include "NpyWriter.h"

#include <cstring>
#include <limits>

namespace Vxpr {

namespace {

constexpr std::size_t HEADER_ALIGNMENT = 64;
/// Room for any number of rows, so that the header keeps its size.
constexpr std::size_t ROW_DIGITS = 20;

} // namespace

std::string NpyWriter::makeHeader() const {
    std::string strDescription = "{'descr': [('time', '<f8')";
    for (const Column& column : m_vColumns) {
        strDescription += ", ('" + column.m_strName + "', '<f8'";
        if (column.m_uiWidth > 1) {
            strDescription += ", (" + std::to_string(column.m_uiWidth) + ",)";
        }
        strDescription += ")";
    }
    const std::string strRows = std::to_string(m_uiRows);
    strDescription += "], 'fortran_order': False, 'shape': (" + strRows + ",), }";
    strDescription.append(ROW_DIGITS - strRows.size(), ' ');

    // Version 2.0 of the format, whose length takes four bytes: names may be many.
    std::string strHeader("\x93NUMPY\x02\x00", 8);
    const std::size_t uiBare = strHeader.size() + 4 + strDescription.size() + 1;
    strDescription.append((HEADER_ALIGNMENT - uiBare % HEADER_ALIGNMENT) % HEADER_ALIGNMENT, ' ');
    strDescription += '\n';
    for (unsigned uiShift = 0; uiShift < 32; uiShift += 8) {
        strHeader += static_cast<char>((strDescription.size() >> uiShift) & 0xff);
    }
    return strHeader + strDescription;
}

void NpyWriter::begin(const std::vector<Column>& in_vColumns) {
    m_vColumns = in_vColumns;
    m_Output.append(makeHeader());
}

void NpyWriter::writeValue(double in_dValue) {
    std::uint64_t uiBits = 0;
    std::memcpy(&uiBits, &in_dValue, sizeof uiBits);
    char bytes[sizeof uiBits];
    for (char& byte : bytes) {
        byte = static_cast<char>(uiBits & 0xff);
        uiBits >>= 8;
    }
    m_Output.append(std::string_view(bytes, sizeof bytes));
}

void NpyWriter::writeRow(double in_dTime, const std::vector<Cell>& in_vCells) {
    writeValue(in_dTime);
    for (std::size_t uiColumn = 0; uiColumn < m_vColumns.size(); ++uiColumn) {
        const Cell& cell = in_vCells[uiColumn];
        for (std::size_t uiElement = 0; uiElement < m_vColumns[uiColumn].m_uiWidth; ++uiElement) {
            const bool bThere = !cell.m_bMissing && uiElement < cell.m_uiSize;
            writeValue(bThere ? cell.m_pValues[uiElement]
                              : std::numeric_limits<double>::quiet_NaN());
        }
    }
    ++m_uiRows;
}

void NpyWriter::end() {
    m_Output.overwrite(0, makeHeader());
}

} // namespace Vxpr
