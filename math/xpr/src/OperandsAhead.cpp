#include "OperandsAhead.h"

#include "SkipGrammar.h"

namespace Velmora::Math::Xpr {

std::optional<ScriptIterator> findOperandsBeyond(std::size_t in_uiLimit,
                                                 const ScriptIterator& in_First) {
    const SkipGrammar blanks(in_First.getText());
    ScriptIterator position(in_First);
    blanks.skip(position);
    ScriptIterator statement(position);
    std::size_t uiOperands = 0;
    bool bText = false;
    while (!position.isAtEnd()) {
        const char c = *position;
        ++position;
        blanks.skip(position);
        if (c == '"') {
            bText = !bText;
        } else if (!bText && (c == '\n' || c == '\r' || c == ';')) {
            statement = position;
        } else if (!bText && (c == ',' || c == '=') && ++uiOperands > in_uiLimit) {
            return statement;
        }
    }
    return std::nullopt;
}

} // namespace Velmora::Math::Xpr
