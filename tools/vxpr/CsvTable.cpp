#include "CsvTable.h"

#include "Failure.h"
#include "NumberText.h"
#include "PrintableText.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

namespace Vxpr {

namespace {

constexpr const char* TIME = "time";

std::string_view trim(std::string_view in_strText) {
    constexpr const char* BLANKS = " \t";
    const std::size_t uiBegin = in_strText.find_first_not_of(BLANKS);
    if (uiBegin == std::string_view::npos) {
        return {};
    }
    return in_strText.substr(uiBegin, in_strText.find_last_not_of(BLANKS) - uiBegin + 1);
}

std::string_view unquote(std::string_view in_strCell) {
    const std::string_view strCell = trim(in_strCell);
    const bool bQuoted = strCell.size() > 1 && strCell.front() == '"' && strCell.back() == '"';
    return bQuoted ? trim(strCell.substr(1, strCell.size() - 2)) : strCell;
}

/// Where the first cell ends; a separator between quotes belongs to the cell. Nothing if a quote
/// isn't closed.
std::optional<std::size_t> findCellEnd(std::string_view in_strText, char in_cSeparator) {
    bool bQuoted = false;
    for (std::size_t uiOffset = 0; uiOffset < in_strText.size(); ++uiOffset) {
        if (in_strText[uiOffset] == '"') {
            bQuoted = !bQuoted;
        } else if (!bQuoted && in_strText[uiOffset] == in_cSeparator) {
            return uiOffset;
        }
    }
    return bQuoted ? std::nullopt : std::optional(in_strText.size());
}

char chooseSeparator(std::string_view in_strLine) {
    for (const char cSeparator : {',', ';', '\t'}) {
        if (findCellEnd(in_strLine, cSeparator).value_or(in_strLine.size()) < in_strLine.size()) {
            return cSeparator;
        }
    }
    return ' ';
}

bool beginsAsNumber(std::string_view in_strCell) {
    constexpr std::string_view BEGINNINGS = "0123456789+-.";
    return !in_strCell.empty() && BEGINNINGS.find(in_strCell.front()) != std::string_view::npos;
}

/// What stands between the brackets of a column of one of the input's elements. Nothing for others.
std::optional<std::string_view> findPlace(const std::string& in_strInput,
                                          std::string_view in_strColumn) {
    const std::size_t uiBegin = in_strInput.size() + 1;
    if (in_strColumn.size() < uiBegin + 1 || in_strColumn[uiBegin - 1] != '[' ||
        in_strColumn.back() != ']' || in_strColumn.substr(0, uiBegin - 1) != in_strInput) {
        return std::nullopt;
    }
    return in_strColumn.substr(uiBegin, in_strColumn.size() - uiBegin - 1);
}

/// Whether a column of that name holds the input, or one element of it.
bool isColumnOf(const std::string& in_strInput, const std::string& in_strColumn) {
    return in_strColumn == in_strInput || findPlace(in_strInput, in_strColumn);
}

/// What is shown of a cell, which a file without line ends may make very long.
std::string quote(const std::string& in_strCell) {
    constexpr std::size_t MOST_SHOWN = 60;
    if (in_strCell.size() <= MOST_SHOWN) {
        return "'" + makePrintable(in_strCell) + "'";
    }
    const auto continuesCharacter = [](char in_c) {
        return (static_cast<unsigned char>(in_c) & 0xc0U) == 0x80U;
    };
    std::size_t uiEnd = MOST_SHOWN;
    while (uiEnd > 0 && continuesCharacter(in_strCell[uiEnd])) {
        --uiEnd;
    }
    return "'" + makePrintable(in_strCell.substr(0, uiEnd)) + "...'";
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
    const bool bHeader = isHeader(in_strInput);
    if (bHeader) {
        readHeader(in_strInput);
    }
    m_bPending = !bHeader;
}

/// A faulty row of numbers must not pass for a header: that would lose a frame.
bool CsvTable::isHeader(const std::string& in_strInput) const {
    const auto iteEnd = m_vCells.begin() + static_cast<std::ptrdiff_t>(m_uiCells);
    const auto hasCell = [&](const auto& in_Test) {
        return std::any_of(m_vCells.begin(), iteEnd, in_Test);
    };
    // Beside these, a column may be called after a script whose name begins with a digit.
    if (hasCell([&](const std::string& in_strCell) {
            return in_strCell == TIME || isColumnOf(in_strInput, in_strCell);
        })) {
        return true;
    }
    return !hasCell(beginsAsNumber) && hasCell([](const std::string& in_strCell) {
        return !in_strCell.empty() && !readNumber(in_strCell);
    });
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
        const auto end = findCellEnd(strRest, m_cSeparator);
        if (!end) {
            fail("a quote in column " + std::to_string(m_uiCells + 1) + " isn't closed");
        }
        if (m_uiCells == m_vCells.size()) {
            m_vCells.emplace_back();
        }
        m_vCells[m_uiCells++] = unquote(strRest.substr(0, *end));
        if (*end == strRest.size()) {
            return;
        }
        strRest.remove_prefix(*end + 1);
        while (m_cSeparator == ' ' && !strRest.empty() && strRest.front() == ' ') {
            strRest.remove_prefix(1);
        }
    }
}

void CsvTable::readHeader(const std::string& in_strInput) {
    m_uiHeaderCells = m_uiCells;
    chooseElements(in_strInput);
    if (!m_vChosen.empty()) {
        return;
    }
    for (std::size_t uiCell = 0; uiCell < m_uiCells; ++uiCell) {
        if (m_vCells[uiCell] != TIME) {
            m_vChosen.push_back(uiCell);
        }
    }
    if (m_vChosen.empty()) {
        fail("the header has no column for the input `" + in_strInput + "`");
    }
}

/// Chooses the columns of the input in the order of its elements, whatever that of the columns.
void CsvTable::chooseElements(const std::string& in_strInput) {
    std::vector<std::pair<std::uint64_t, std::size_t>> vElements;
    for (std::size_t uiCell = 0; uiCell < m_uiCells; ++uiCell) {
        if (isColumnOf(in_strInput, m_vCells[uiCell])) {
            vElements.emplace_back(readPlace(in_strInput, m_vCells[uiCell]), uiCell);
        }
    }
    std::sort(vElements.begin(), vElements.end());
    for (const auto& [uiElement, uiCell] : vElements) {
        if (uiElement < m_vChosen.size()) {
            fail("the header has two columns for element " + std::to_string(uiElement) + " of `" +
                 in_strInput + "`");
        }
        if (uiElement > m_vChosen.size()) {
            fail("the header has a column " + quote(m_vCells[uiCell]) + ", but none for element " +
                 std::to_string(m_vChosen.size()) + " of `" + in_strInput + "`");
        }
        m_vChosen.push_back(uiCell);
    }
}

std::uint64_t CsvTable::readPlace(const std::string& in_strInput,
                                  const std::string& in_strColumn) const {
    const auto strPlace = findPlace(in_strInput, in_strColumn);
    const auto place = strPlace ? readWholeNumber(*strPlace) : 0;
    if (!place) {
        fail("the column " + quote(in_strColumn) +
             " has no number of an element between its brackets");
    }
    return *place;
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
            fail(quote(m_vCells[uiCell]) + " in column " + std::to_string(uiCell + 1) +
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
