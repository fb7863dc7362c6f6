#pragma once

#include <locale>
#include <string>

namespace Velmora::Testing {

/// A locale that writes 1234.5 as 1.234,5.
inline std::locale makePunctuatedLocale() {
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    return std::locale(std::locale::classic(), new Punctuation);
}

/// Makes it a host's own for as long as this lives.
class GlobalPunctuation {
public:
    GlobalPunctuation() : m_Former(std::locale::global(makePunctuatedLocale())) {}
    ~GlobalPunctuation() { std::locale::global(m_Former); }
    GlobalPunctuation(const GlobalPunctuation&) = delete;
    GlobalPunctuation& operator=(const GlobalPunctuation&) = delete;

private:
    const std::locale m_Former;
};

} // namespace Velmora::Testing
