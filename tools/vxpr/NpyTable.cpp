#include "NpyTable.h"

#include "Failure.h"
#include "NumberText.h"

#include <cstring>

namespace Vxpr {

namespace {

/// Longer headers and rows than any sensible array has would only exhaust the memory.
constexpr std::size_t LONGEST_HEADER = std::size_t(1) << 20;
constexpr std::size_t LONGEST_ROW = std::size_t(1) << 24;

/// The text between the key of a header and in_strEnd.
std::string findEntry(const std::string& in_strHeader, const std::string& in_strBegin,
                      const std::string& in_strEnd) {
    const std::size_t uiKey = in_strHeader.find(in_strBegin);
    if (uiKey == std::string::npos) {
        return {};
    }
    const std::size_t uiBegin = uiKey + in_strBegin.size();
    const std::size_t uiEnd = in_strHeader.find(in_strEnd, uiBegin);
    return uiEnd == std::string::npos ? std::string()
                                      : in_strHeader.substr(uiBegin, uiEnd - uiBegin);
}

template <class T>
double readElement(const char* in_pBytes) {
    T value;
    std::memcpy(&value, in_pBytes, sizeof value);
    return static_cast<double>(value);
}

} // namespace

NpyTable::NpyTable(const std::string& in_strPath)
    : InputTable(in_strPath), m_File(in_strPath, getName()) {
    readHeader();
    m_vBytes.resize(m_uiColumns * (m_bDouble ? sizeof(double) : sizeof(float)));
}

void NpyTable::refuse(const std::string& in_strWhat) const {
    throw Failure::ofData(getName() + " " + in_strWhat +
                          "; save a plain array of one or two dimensions with numpy.save, such as "
                          "numpy.asarray(values, dtype='<f8', order='C')");
}

void NpyTable::readHeader() {
    unsigned char start[8];
    if (!m_File.readBytes(start, sizeof start) || std::memcmp(start, "\x93NUMPY", 6) != 0) {
        refuse("is no NumPy array file");
    }
    unsigned char length[4] = {};
    if (!m_File.readBytes(length, start[6] == 1 ? 2 : 4)) {
        refuse("is truncated");
    }
    const std::size_t uiLength = length[0] + (std::size_t(length[1]) << 8) +
                                 (std::size_t(length[2]) << 16) + (std::size_t(length[3]) << 24);
    std::string strHeader(uiLength <= LONGEST_HEADER ? uiLength : 0, '\0');
    if (strHeader.empty() || !m_File.readBytes(strHeader.data(), strHeader.size())) {
        refuse("is truncated");
    }
    const std::string strType = findEntry(strHeader, "'descr': '", "'");
    m_bDouble = strType == "<f8";
    if (!m_bDouble && strType != "<f4") {
        refuse("doesn't hold plain 32-bit or 64-bit floats");
    }
    if (findEntry(strHeader, "'fortran_order': ", ",") != "False") {
        refuse("is stored column by column");
    }
    readShape(findEntry(strHeader, "'shape': (", ")"));
}

void NpyTable::readShape(const std::string& in_strShape) {
    std::vector<std::uint64_t> vSizes;
    std::size_t uiBegin = 0;
    while (uiBegin < in_strShape.size()) {
        std::size_t uiEnd = in_strShape.find(',', uiBegin);
        uiEnd = uiEnd == std::string::npos ? in_strShape.size() : uiEnd;
        const std::size_t uiDigit = in_strShape.find_first_not_of(' ', uiBegin);
        const auto size = uiDigit < uiEnd
                              ? readWholeNumber(in_strShape.substr(uiDigit, uiEnd - uiDigit))
                              : std::nullopt;
        if (!size) {
            break;
        }
        vSizes.push_back(*size);
        uiBegin = uiEnd + 1;
    }
    if (vSizes.empty() || vSizes.size() > 2) {
        refuse("doesn't have one or two dimensions");
    }
    if (vSizes.size() == 1) {
        vSizes.push_back(1);
    }
    if (vSizes[1] > LONGEST_ROW) {
        refuse("has rows that are too long");
    }
    m_uiRows = vSizes[0];
    m_uiColumns = static_cast<std::size_t>(vSizes[1]);
}

bool NpyTable::next(std::vector<double>& out_vRow) {
    if (m_uiRow == m_uiRows) {
        return false;
    }
    if (!m_File.readBytes(m_vBytes.data(), m_vBytes.size())) {
        refuse("is truncated");
    }
    ++m_uiRow;
    out_vRow.resize(m_uiColumns);
    const std::size_t uiSize = m_bDouble ? sizeof(double) : sizeof(float);
    for (std::size_t uiColumn = 0; uiColumn < m_uiColumns; ++uiColumn) {
        const char* pBytes = m_vBytes.data() + uiColumn * uiSize;
        out_vRow[uiColumn] = m_bDouble ? readElement<double>(pBytes) : readElement<float>(pBytes);
    }
    return true;
}

} // namespace Vxpr
