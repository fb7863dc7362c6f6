#include "Diagnostic.h"

#include "NumberText.h"

namespace Vxpr {

namespace {

constexpr std::string_view BEGIN = "<file_position fileName=\"";
constexpr std::string_view LINE = "\" line=\"";
constexpr std::string_view COLUMN = "\" column=\"";
constexpr std::string_view END = "\"/>";

} // namespace

std::optional<PositionText> findPosition(const std::string& in_strMessage) {
    const std::size_t uiBegin = in_strMessage.find(BEGIN);
    const std::size_t uiLine = in_strMessage.find(LINE, uiBegin);
    const std::size_t uiColumn = in_strMessage.find(COLUMN, uiLine);
    const std::size_t uiEnd = in_strMessage.find(END, uiColumn);
    if (uiBegin == std::string::npos || uiEnd == std::string::npos) {
        return std::nullopt;
    }
    const std::string_view strMessage = in_strMessage;
    const auto take = [&](std::size_t in_uiBegin, std::size_t in_uiEnd) {
        return strMessage.substr(in_uiBegin, in_uiEnd - in_uiBegin);
    };
    const auto line = readWholeNumber(take(uiLine + LINE.size(), uiColumn));
    const auto column = readWholeNumber(take(uiColumn + COLUMN.size(), uiEnd));
    if (!line || !column) {
        return std::nullopt;
    }
    PositionText text;
    text.m_Position.m_strScript = take(uiBegin + BEGIN.size(), uiLine);
    text.m_Position.m_Position = {*line, *column};
    text.m_uiBegin = uiBegin;
    text.m_uiEnd = uiEnd + END.size();
    return text;
}

} // namespace Vxpr
