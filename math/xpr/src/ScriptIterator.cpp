#include "ScriptIterator.h"

#include <ostream>

namespace Velmora::Math::Xpr {

std::string positionText(const ScriptIterator& in_Position) {
    std::string strText = "<file_position fileName=\"";
    strText += in_Position.getFile();
    strText += "\" line=\"";
    strText += std::to_string(in_Position.getLine());
    strText += "\" column=\"";
    strText += std::to_string(in_Position.getColumn());
    strText += "\"/>";
    return strText;
}

std::ostream& operator<<(std::ostream& out_Stream, const ScriptIterator& in_Position) {
    return out_Stream << positionText(in_Position);
}

} // namespace Velmora::Math::Xpr
