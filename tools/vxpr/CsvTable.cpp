#include "CsvTable.h"

#include "Failure.h"
#include "NumberText.h"

#include <algorithm>
#include <limits>

namespace Vxpr {

namespace {

std::string_view trim(std::string_view in_strText) {
    constexpr const char* BLANKS = " \t\"";
    const std::size_t uiBegin = in_strText.find_first_not_of(BLANKS);
    if (uiBegin == std::string_view::npos) {
        return {};
    }
    return in_strText.substr(uiBegin, in_strText.find_last_not_of(BLANKS) - uiBegin + 1);
}

char chooseSeparator(const std::string& in_strLine) {
    for (const char cSeparator : {',', ';', '\t'}) {
        if (in_strLine.find(cSeparator) != std::string::npos) {
            return cSeparator;
        }
    }
    return ' ';
}

/// Whether a column of that name holds the input, or one element of it.
bool isColumnOf(const std::string& in_strInput, const std::string& in_strColumn) {
    if (in_strColumn == in_strInput) {
        return true;
    }
    return in_strColumn.size() > in_strInput.size() + 2 &&
           in_strColumn.compare(0, in_strInput.size(), in_strInput) == 0 &&
           in_strColumn[in_strInput.size()] == '[' && in_strColumn.back() == ']';
}

} // namespace

CsvTable::CsvTable(const std::string& in_strInput, const std::string& in_strPath)
    : InputTable(in_strPath), m_File(in_strPath, getName()) {
    if (!readLine()) {
        return;
    }
    constexpr std::string_view BYTE_ORDER_MARK = "\xef\xbb\xbf";
    if (m_strLine.compare(0, BYTE_ORDER_MARK.size(), BYTE_ORDER_MARK) == 0) {
        m_strLine.erase(0, BYTE_ORDER_MARK.size());
    }
    split();
    const bool bHeader =
        std::any_of(m_vCells.begin(), m_vCells.begin() + static_cast<std::ptrdiff_t>(m_uiCells),
                    [](const std::string& in_strCell) {
                        return !in_strCell.empty() && !readNumber(in_strCell);
                    });
    if (bHeader) {
        readHeader(in_strInput);
    }
    m_bPending = !bHeader;
}

bool CsvTable::readLine() {
    while (m_File.readLine(m_strLine)) {
        ++m_uiLine;
        if (!trim(m_strLine).empty()) {
            return true;
        }
    }
    return false;
}

void CsvTable::split() {
    m_uiCells = 0;
    if (m_cSeparator == ' ') {
        m_cSeparator = chooseSeparator(m_strLine);
    }
    std::string_view strRest = m_strLine;
    if (m_cSeparator == ' ') {
        strRest = trim(strRest);
    }
    for (;;) {
        const std::size_t uiEnd = strRest.find(m_cSeparator);
        if (m_uiCells == m_vCells.size()) {
            m_vCells.emplace_back();
        }
        m_vCells[m_uiCells++] = trim(strRest.substr(0, uiEnd));
        if (uiEnd == std::string_view::npos) {
            return;
        }
        strRest.remove_prefix(uiEnd + 1);
        while (m_cSeparator == ' ' && !strRest.empty() && strRest.front() == ' ') {
            strRest.remove_prefix(1);
        }
    }
}

void CsvTable::readHeader(const std::string& in_strInput) {
    m_uiHeaderCells = m_uiCells;
    std::vector<std::size_t> vOthers;
    for (std::size_t uiCell = 0; uiCell < m_uiCells; ++uiCell) {
        if (isColumnOf(in_strInput, m_vCells[uiCell])) {
            m_vChosen.push_back(uiCell);
        } else if (m_vCells[uiCell] != "time") {
            vOthers.push_back(uiCell);
        }
    }
    if (m_vChosen.empty()) {
        m_vChosen = vOthers;
    }
    if (m_vChosen.empty()) {
        fail("the header has no column for the input `" + in_strInput + "`");
    }
}

bool CsvTable::next(std::vector<double>& out_vRow) {
    if (!m_bPending) {
        if (!readLine()) {
            return false;
        }
        split();
    }
    m_bPending = false;
    if (m_uiHeaderCells != 0 && m_uiCells > m_uiHeaderCells) {
        fail("the row has " + std::to_string(m_uiCells) + " cells, but the header " +
             std::to_string(m_uiHeaderCells));
    }
    out_vRow.clear();
    const std::size_t uiColumns = m_vChosen.empty() ? m_uiCells : m_vChosen.size();
    std::size_t uiUsed = 0;
    for (std::size_t uiColumn = 0; uiColumn < uiColumns; ++uiColumn) {
        const std::size_t uiCell = m_vChosen.empty() ? uiColumn : m_vChosen[uiColumn];
        if (uiCell >= m_uiCells || m_vCells[uiCell].empty()) {
            out_vRow.push_back(std::numeric_limits<double>::quiet_NaN());
            continue;
        }
        const auto value = readNumber(m_vCells[uiCell]);
        if (!value) {
            fail("'" + m_vCells[uiCell] + "' in column " + std::to_string(uiCell + 1) +
                 " is no number");
        }
        out_vRow.push_back(*value);
        uiUsed = out_vRow.size();
    }
    out_vRow.resize(uiUsed);
    return true;
}

void CsvTable::fail(const std::string& in_strText) const {
    throw Failure::ofData(getName() + ", line " + std::to_string(m_uiLine) + ": " + in_strText +
                          "; a table for --input has a row of numbers for each frame");
}

} // namespace Vxpr
