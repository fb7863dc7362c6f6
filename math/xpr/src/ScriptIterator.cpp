#include "ScriptIterator.h"

#include <charconv>
#include <iterator>
#include <limits>
#include <ostream>

namespace Velmora::Math::Xpr {

namespace {

void appendNumber(std::size_t in_uiNumber, std::string& inout_strText) {
    char szDigits[std::numeric_limits<std::size_t>::digits10 + 1];
    const std::to_chars_result result =
        std::to_chars(std::begin(szDigits), std::end(szDigits), in_uiNumber);
    inout_strText.append(szDigits, result.ptr);
}

} // namespace

std::string positionText(const ScriptIterator& in_Position) {
    std::string strText;
    writePosition(in_Position, strText);
    return strText;
}

void writePosition(const ScriptIterator& in_Position, std::string& out_strText) {
    out_strText = "<file_position fileName=\"";
    out_strText += in_Position.getFile();
    out_strText += "\" line=\"";
    appendNumber(in_Position.getLine(), out_strText);
    out_strText += "\" column=\"";
    appendNumber(in_Position.getColumn(), out_strText);
    out_strText += "\"/>";
}

std::ostream& operator<<(std::ostream& out_Stream, const ScriptIterator& in_Position) {
    return out_Stream << positionText(in_Position);
}

} // namespace Velmora::Math::Xpr
