#include "PrintableText.h"

namespace Vxpr {

std::string makePrintable(std::string_view in_strLine) {
    constexpr std::size_t TAB_STOP = 4;
    std::string strLine;
    for (const char c : in_strLine) {
        if (c == '\t') {
            strLine.append(TAB_STOP - strLine.size() % TAB_STOP, ' ');
        } else {
            strLine.push_back(static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? '?' : c);
        }
    }
    return strLine;
}

} // namespace Vxpr
