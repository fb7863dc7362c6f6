#include "StatementScanner.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Vxpr {

namespace {

constexpr const char* NO_COMPARING =
    "the language has no operators for comparing or for true and false: isGreater(a, b) is 1 where "
    "a >= b, and if(condition, a, b) chooses";

bool isLineEnd(char in_c) {
    return in_c == '\n' || in_c == '\r';
}
bool isWordStart(char in_c) {
    return std::isalpha(static_cast<unsigned char>(in_c)) != 0 || in_c == '_';
}
bool isWordPart(char in_c) {
    return isWordStart(in_c) || std::isdigit(static_cast<unsigned char>(in_c)) != 0;
}
bool isDigit(char in_c) {
    return std::isdigit(static_cast<unsigned char>(in_c)) != 0;
}

/// What is wrong with a number, in the way in which the language writes them: whole ones have 32
/// bits between < and >, and may be hexadecimal there.
std::string describeNumber(const std::string& in_strNumber, bool in_bWholeParameter,
                           bool in_bNegative) {
    const std::string strBegin = in_strNumber.substr(0, 2);
    const bool bHexadecimal = strBegin == "0x" || strBegin == "0X";
    if (bHexadecimal && (!in_bWholeParameter || strBegin == "0X")) {
        return "hexadecimal numbers stand between < and > only, and begin with 0x; write a decimal "
               "one elsewhere";
    }
    if (!in_bWholeParameter ||
        (!bHexadecimal && !std::all_of(in_strNumber.begin(), in_strNumber.end(), isDigit))) {
        return {};
    }
    constexpr unsigned long long MOST = std::numeric_limits<std::uint32_t>::max();
    constexpr unsigned long long MOST_BELOW_ZERO = MOST / 2 + 1;
    errno = 0;
    const unsigned long long ullValue = std::strtoull(in_strNumber.c_str(), nullptr, 0);
    return errno == 0 && ullValue <= (in_bNegative ? MOST_BELOW_ZERO : MOST)
               ? ""
               : "this is too large for a whole number between < and >, which has 32 bits; with a "
                 "point, as in 10000000000.0, it is of another kind";
}

} // namespace

/// Passes over blanks, comments and continued lines, as the grammar does between any two tokens.
std::size_t StatementScanner::skipBlanks(std::size_t in_uiBegin, bool& out_bLineComment) const {
    const std::string& strText = m_Script.getText();
    out_bLineComment = false;
    std::size_t uiOffset = in_uiBegin;
    while (uiOffset < strText.size()) {
        const char c = strText[uiOffset];
        if (c == '#' || strText.compare(uiOffset, 2, "//") == 0) {
            const std::size_t uiEnd = strText.find_first_of("\r\n", uiOffset);
            if (uiEnd == std::string::npos) {
                return strText.size();
            }
            out_bLineComment = true;
            uiOffset = uiEnd + (strText.compare(uiEnd, 2, "\r\n") == 0 ? 2 : 1);
        } else if (strText.compare(uiOffset, 2, "/*") == 0 &&
                   strText.find("*/", uiOffset + 2) != std::string::npos) {
            uiOffset = strText.find("*/", uiOffset + 2) + 2;
        } else if (c == '\\' && uiOffset + 1 < strText.size() && isLineEnd(strText[uiOffset + 1])) {
            uiOffset += strText.compare(uiOffset + 1, 2, "\r\n") == 0 ? 3 : 2;
        } else if (!isLineEnd(c) && std::isspace(static_cast<unsigned char>(c)) != 0) {
            ++uiOffset;
        } else {
            break;
        }
    }
    return uiOffset;
}

StatementScanner::Token StatementScanner::readToken(std::size_t in_uiBegin) const {
    const std::string& strText = m_Script.getText();
    Token token;
    token.m_uiBegin = in_uiBegin;
    token.m_uiEnd = in_uiBegin + 1;
    const char c = strText[in_uiBegin];
    const auto extend = [&](bool (*in_pBelongs)(char)) {
        while (token.m_uiEnd < strText.size() && in_pBelongs(strText[token.m_uiEnd])) {
            ++token.m_uiEnd;
        }
    };
    if (isWordStart(c)) {
        token.m_Kind = Token::Kind::Word;
        extend(&isWordPart);
    } else if (isDigit(c)) {
        token.m_Kind = Token::Kind::Number;
        extend(&isWordPart);
    } else if (c == '"' && strText.find('"', in_uiBegin + 1) != std::string::npos) {
        token.m_Kind = Token::Kind::String;
        token.m_uiEnd = strText.find('"', in_uiBegin + 1) + 1;
    } else if (isLineEnd(c)) {
        token.m_Kind = Token::Kind::LineEnd;
        if (strText.compare(in_uiBegin, 2, "\r\n") == 0 ||
            strText.compare(in_uiBegin, 2, "\n\r") == 0) {
            ++token.m_uiEnd;
        }
    }
    return token;
}

template <class Function>
void StatementScanner::visit(std::size_t in_uiBegin, Range in_eRange, Function in_Function) const {
    bool bLineComment = false;
    std::size_t uiOffset = skipBlanks(in_uiBegin, bLineComment);
    while (uiOffset < m_Script.getText().size()) {
        Token token = readToken(uiOffset);
        token.m_bBehindLineComment = bLineComment;
        const bool bEnds =
            token.m_Kind == Token::Kind::LineEnd || m_Script.getText()[token.m_uiBegin] == ';';
        if (!in_Function(token) || (bEnds && in_eRange == Range::Statement)) {
            return;
        }
        uiOffset = skipBlanks(token.m_uiEnd, bLineComment);
    }
}

std::vector<StatementScanner::Token> StatementScanner::scan(std::size_t in_uiBegin,
                                                            Range in_eRange) const {
    std::vector<Token> vTokens;
    visit(in_uiBegin, in_eRange, [&](const Token& in_Token) {
        vTokens.push_back(in_Token);
        return true;
    });
    return vTokens;
}

std::size_t StatementScanner::findBegin(std::size_t in_uiOffset) const {
    std::size_t uiBegin = 0;
    for (std::size_t uiEnd = findEnd(0); uiEnd <= in_uiOffset && uiEnd > uiBegin;
         uiEnd = findEnd(uiBegin)) {
        uiBegin = uiEnd;
    }
    return uiBegin;
}

std::size_t StatementScanner::findEnd(std::size_t in_uiBegin) const {
    std::size_t uiEnd = m_Script.getText().size();
    bool bFirst = true;
    visit(in_uiBegin, Range::Statement, [&](const Token& in_Token) {
        // A line comment is taken for the end that its author meant it to be.
        const bool bGoesOn = bFirst || !in_Token.m_bBehindLineComment;
        if (bGoesOn) {
            uiEnd = in_Token.m_uiEnd;
        }
        bFirst = false;
        return bGoesOn;
    });
    return uiEnd;
}

std::string StatementScanner::findDefinedName(std::size_t in_uiBegin) const {
    constexpr std::size_t TokensOfAName = 2;
    std::vector<Token> vTokens;
    visit(in_uiBegin, Range::Statement, [&](const Token& in_Token) {
        vTokens.push_back(in_Token);
        return vTokens.size() != TokensOfAName;
    });
    if (vTokens.size() != TokensOfAName || vTokens[0].m_Kind != Token::Kind::Word) {
        return {};
    }
    if (getText(vTokens[0]) == "inputvar" && vTokens[1].m_Kind == Token::Kind::Word) {
        return getText(vTokens[1]);
    }
    return getText(vTokens[0]);
}

std::string StatementScanner::describeMistake(const Token& in_Token, const Token* in_pBefore,
                                              const Token* in_pNext) const {
    const std::string strMark = getText(in_Token);
    const auto uiByte = static_cast<unsigned char>(strMark[0]);
    if (uiByte >= 0x80) {
        char szByte[8];
        std::snprintf(szByte, sizeof szByte, "0x%02X", static_cast<unsigned>(uiByte));
        return std::string("the byte ") + szByte +
               " can't stand here: names are made of the letters a to z, digits and `_`; "
               "anything may stand in comments";
    }
    if (in_Token.m_Kind != Token::Kind::Mark) {
        return {};
    }
    const std::string strNext =
        in_pNext != nullptr && in_pNext->m_uiBegin == in_Token.m_uiEnd ? getText(*in_pNext) : "";
    const bool bEqualsFollows = !strNext.empty() && strNext[0] == '=';
    if ((std::strchr("<>!=", strMark[0]) != nullptr && bEqualsFollows) || strMark == "&" ||
        strMark == "|" || strMark == "!" || strMark == "?") {
        return NO_COMPARING;
    }
    if (strMark == "^" || (strMark == "*" && strNext == "*")) {
        return "there is no power operator: multiply instead, as in x * x";
    }
    if (strMark == "%" || strMark == "'" || strMark == "@" || strMark == "$" || strMark == "~" ||
        strMark == "`" || strMark == ":") {
        return "`" + strMark + "` has no meaning in a script";
    }
    if (strMark == "\"") {
        return "this string isn't closed; a comment sign within it hides the quote";
    }
    if (strMark == "/" && strNext == "*") {
        return "this comment isn't closed: `*/` is missing";
    }
    if (strMark == "\\") {
        return "a `\\` continues a line only as its very last character";
    }
    const bool bEndsStatement = in_pNext == nullptr || in_pNext->m_Kind == Token::Kind::LineEnd ||
                                m_Script.getText()[in_pNext->m_uiBegin] == ';';
    if (bEndsStatement && std::strchr("+-*/=,", strMark[0]) != nullptr) {
        return "a value is missing behind `" + strMark +
               "`; a line goes on in the next one behind "
               "a `\\`";
    }
    const bool bOperandBefore =
        in_pBefore != nullptr && (in_pBefore->m_Kind != Token::Kind::Mark ||
                                  std::strchr(")]}", getText(*in_pBefore)[0]) != nullptr);
    if (strMark == "<" && bOperandBefore && in_pBefore->m_Kind != Token::Kind::Word) {
        return NO_COMPARING;
    }
    const bool bNumberFollows = !strNext.empty() && (isDigit(strNext[0]) || strNext[0] == '.');
    if (strMark == "-" && !bOperandBefore && !bNumberFollows) {
        return "there is no minus sign for values, only for numbers: write 0 - x for -x, and -2 "
               "without a blank";
    }
    return {};
}

std::optional<Diagnostic> StatementScanner::findMistake(std::size_t in_uiBegin) const {
    const std::vector<Token> vTokens = scan(in_uiBegin, Range::Statement);
    bool bParameters = false;
    for (std::size_t uiToken = 0; uiToken < vTokens.size(); ++uiToken) {
        const Token& token = vTokens[uiToken];
        const Token* pBefore = uiToken > 0 ? &vTokens[uiToken - 1] : nullptr;
        const Token* pNext = uiToken + 1 < vTokens.size() ? &vTokens[uiToken + 1] : nullptr;
        std::string strText;
        std::size_t uiPlace = token.m_uiBegin;
        if (token.m_bBehindLineComment && uiToken > 0 && token.m_Kind != Token::Kind::LineEnd) {
            uiPlace = vTokens[uiToken - 1].m_uiEnd;
            strText = "the comment behind this statement takes the line end with it, so the "
                      "statement goes on in the next line; close it with `;` ahead of the comment";
        } else {
            strText = describeMistake(token, pBefore, pNext);
        }
        const std::string strToken = getText(token);
        if (strText.empty() && token.m_Kind == Token::Kind::Number) {
            const auto isMark = [this](const Token* in_pToken, const char* in_szMark) {
                return in_pToken != nullptr && getText(*in_pToken) == in_szMark;
            };
            const bool bPoint = isMark(pNext, ".") || isMark(pBefore, ".");
            strText = describeNumber(strToken, bParameters && !bPoint, isMark(pBefore, "-"));
        }
        if (strText.empty() && strToken == ">" && !bParameters) {
            strText = NO_COMPARING;
        }
        bParameters = strToken == "<" || (bParameters && strToken != ">");
        if (!strText.empty()) {
            return Diagnostic{Diagnostic::Severity::Error, toPosition(uiPlace), strText};
        }
    }
    return std::nullopt;
}

std::optional<SourcePosition> StatementScanner::findInput(const std::string& in_strName,
                                                          std::size_t in_uiSkipped) const {
    const std::vector<Token> vTokens = scan(0, Range::WholeScript);
    for (std::size_t uiToken = 0; uiToken + 1 < vTokens.size(); ++uiToken) {
        if (getText(vTokens[uiToken]) == "inputvar" &&
            getText(vTokens[uiToken + 1]) == in_strName && in_uiSkipped-- == 0) {
            return toPosition(vTokens[uiToken + 1].m_uiBegin);
        }
    }
    return std::nullopt;
}

std::optional<SourcePosition> StatementScanner::findCharacter(char in_cCharacter) const {
    for (const Token& token : scan(0, Range::WholeScript)) {
        if (token.m_Kind == Token::Kind::Mark &&
            m_Script.getText()[token.m_uiBegin] == in_cCharacter) {
            return toPosition(token.m_uiBegin);
        }
    }
    return std::nullopt;
}

std::optional<SourcePosition>
StatementScanner::findParameterUse(const std::string& in_strName) const {
    const std::vector<Token> vTokens = scan(0, Range::WholeScript);
    std::size_t uiStatement = 0;
    bool bDefined = false;
    bool bInFunction = false;
    bool bInList = false;
    for (std::size_t uiToken = 0; uiToken < vTokens.size(); ++uiToken) {
        const std::string strText = getText(vTokens[uiToken]);
        if (vTokens[uiToken].m_Kind == Token::Kind::LineEnd || strText == ";") {
            uiStatement = uiToken + 1;
            bDefined = false;
            bInList = false;
        } else if (strText == "=") {
            bDefined = true;
            bInFunction = uiToken > uiStatement + 1;
        } else if (strText == "<" || strText == ">") {
            bInList = bDefined && strText == "<";
        } else if (bInList && vTokens[uiToken].m_Kind == Token::Kind::Word &&
                   (in_strName.empty() ? !bInFunction : strText == in_strName)) {
            return toPosition(vTokens[uiToken].m_uiBegin);
        }
    }
    return std::nullopt;
}

std::string StatementScanner::getText(const Token& in_Token) const {
    return m_Script.getText().substr(in_Token.m_uiBegin, in_Token.m_uiEnd - in_Token.m_uiBegin);
}

SourcePosition StatementScanner::toPosition(std::size_t in_uiOffset) const {
    return {m_Script.getName(), m_Script.getPosition(in_uiOffset)};
}

} // namespace Vxpr
