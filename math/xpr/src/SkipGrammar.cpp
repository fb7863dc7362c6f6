#include "SkipGrammar.h"

namespace Velmora::Math::Xpr {

namespace {

bool isLineEnd(char in_c) {
    return in_c == '\n' || in_c == '\r';
}

bool isBlank(char in_c) {
    return in_c == ' ' || in_c == '\t' || in_c == '\v' || in_c == '\f';
}

/// The character that follows, or 0 at the end.
char following(const ScriptIterator& in_Position) {
    const char* pNext = in_Position.getText() + 1;
    return pNext == in_Position.getTextEnd() ? '\0' : *pNext;
}

void skipLine(ScriptIterator& inout_Position) {
    while (!inout_Position.isAtEnd()) {
        const bool bLineEnd = isLineEnd(*inout_Position);
        ++inout_Position;
        if (bLineEnd) {
            return;
        }
    }
}

} // namespace

void SkipGrammar::skipItems(ScriptIterator& inout_Position) const {
    const char* pFirst = inout_Position.getText();
    if (pFirst == m_pSkippedFrom) {
        inout_Position = m_SkippedTo;
        jumpTo(inout_Position);
        return;
    }
    while (!inout_Position.isAtEnd() && skipItem(inout_Position)) {
    }
    m_pSkippedFrom = pFirst;
    m_SkippedTo = inout_Position;
    countRead(inout_Position.getText());
}

bool SkipGrammar::skipItem(ScriptIterator& inout_Position) const {
    const char c = *inout_Position;
    if (isBlank(c)) {
        ++inout_Position;
        return true;
    }
    if (c == '#') {
        skipLine(inout_Position);
        return true;
    }
    if (c != '/' && c != '\\') {
        return false;
    }
    const char cNext = following(inout_Position);
    if (c == '\\') {
        if (!isLineEnd(cNext)) {
            return false;
        }
        ++inout_Position;
        ++inout_Position;
        return true;
    }
    if (cNext == '*') {
        return skipBlockComment(inout_Position);
    }
    if (cNext == '/') {
        skipLine(inout_Position);
        return true;
    }
    return false;
}

bool SkipGrammar::skipBlockComment(ScriptIterator& inout_Position) const {
    if (m_pUnclosedFrom != nullptr && inout_Position.getText() >= m_pUnclosedFrom) {
        return false;
    }
    ScriptIterator position(inout_Position);
    ++position;
    ++position;
    while (!position.isAtEnd()) {
        const bool bStar = *position == '*';
        ++position;
        if (bStar && !position.isAtEnd() && *position == '/') {
            ++position;
            inout_Position = position;
            return true;
        }
    }
    m_pUnclosedFrom = inout_Position.getText();
    return false;
}

} // namespace Velmora::Math::Xpr
