#include "ScriptIterator.h"

#include <ostream>

#include <velmora/math/xpr/SourcePosition.h>

namespace Velmora::Math::Xpr {

std::string positionText(const ScriptIterator& in_Position) {
    std::string strText;
    SourcePosition::write(in_Position.getFile(), in_Position.getLine(), in_Position.getColumn(),
                          strText);
    return strText;
}

std::ostream& operator<<(std::ostream& out_Stream, const ScriptIterator& in_Position) {
    return out_Stream << positionText(in_Position);
}

} // namespace Velmora::Math::Xpr
