#include <velmora/math/xpr/SourcePosition.h>

#include <charconv>
#include <iterator>
#include <limits>
#include <utility>

namespace Velmora::Math::Xpr {

namespace {

void appendNumber(std::size_t in_uiNumber, std::string& inout_strText) {
    char szDigits[std::numeric_limits<std::size_t>::digits10 + 1];
    const std::to_chars_result result =
        std::to_chars(std::begin(szDigits), std::end(szDigits), in_uiNumber);
    inout_strText.append(szDigits, result.ptr);
}

} // namespace

SourcePosition::SourcePosition(std::shared_ptr<const std::string> in_pFile, std::size_t in_uiLine,
                               std::size_t in_uiColumn)
    : m_pFile(std::move(in_pFile)),
      m_uiLine(static_cast<std::uint32_t>(in_uiLine)),
      m_uiColumn(static_cast<std::uint32_t>(in_uiColumn)) {}

std::string SourcePosition::getText() const {
    std::string strText;
    if (isSet()) {
        write(m_pFile->c_str(), m_uiLine, m_uiColumn, strText);
    }
    return strText;
}

void SourcePosition::write(const char* in_szFile, std::size_t in_uiLine, std::size_t in_uiColumn,
                           std::string& out_strText) {
    out_strText = "<file_position fileName=\"";
    out_strText += in_szFile;
    out_strText += "\" line=\"";
    appendNumber(in_uiLine, out_strText);
    out_strText += "\" column=\"";
    appendNumber(in_uiColumn, out_strText);
    out_strText += "\"/>";
}

} // namespace Velmora::Math::Xpr
