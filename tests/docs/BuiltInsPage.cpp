#include "BuiltInsPage.h"

#include <fstream>
#include <sstream>

namespace Velmora::Testing {

namespace {

bool startsWith(const std::string& in_strText, const std::string& in_strStart) {
    return in_strText.compare(0, in_strStart.size(), in_strStart) == 0;
}

/// The text between the first two backticks; empty without them.
std::string codeIn(const std::string& in_strText) {
    const std::size_t uiFirst = in_strText.find('`');
    const std::size_t uiLast = in_strText.find('`', uiFirst + 1);
    return uiLast == std::string::npos ? "" : in_strText.substr(uiFirst + 1, uiLast - uiFirst - 1);
}

std::string resultIn(const std::string& in_strCell) {
    return startsWith(in_strCell, "`") ? codeIn(in_strCell)
                                       : in_strCell.substr(0, std::string("no result").size());
}

} // namespace

BuiltInsPage::BuiltInsPage() {
    std::ifstream file(std::string(VELMORA_SOURCE_DIR) + "/docs/built-ins.md");
    for (std::string strLine; std::getline(file, strLine);) {
        readLine(strLine);
    }
}

void BuiltInsPage::readLine(const std::string& in_strLine) {
    if (startsWith(in_strLine, "```")) {
        m_bInScript = in_strLine == "```xpr";
        if (m_bInScript) {
            scripts.emplace_back(sections.empty() ? "introduction" : sections.back().name, "");
        }
    } else if (m_bInScript) {
        scripts.back().second += in_strLine + "\n";
    } else if (startsWith(in_strLine, "## ")) {
        sections.emplace_back();
        sections.back().name = in_strLine.substr(3);
    } else if (!sections.empty() && startsWith(in_strLine, "| ")) {
        readRow(in_strLine);
    } else if (!sections.empty() && sections.back().signature.empty() &&
               startsWith(in_strLine, "`")) {
        sections.back().signature = codeIn(in_strLine);
        sections.back().description = in_strLine.substr(sections.back().signature.size() + 4);
    }
}

void BuiltInsPage::readRow(const std::string& in_strLine) {
    std::istringstream cells(in_strLine);
    std::string strHead;
    std::string strCell;
    std::getline(cells, strHead, '|');
    std::getline(cells >> std::ws, strHead, '|');
    std::getline(cells >> std::ws, strCell, '|');
    BuiltInSection& section = sections.back();
    if (startsWith(strHead, "Empty input")) {
        section.emptyInput = resultIn(strCell);
    } else if (startsWith(strHead, "NaN")) {
        section.nan = resultIn(strCell);
    } else if (startsWith(strHead, "Memory")) {
        section.memory = strCell.substr(0, strCell.find_last_not_of(' ') + 1);
    } else if (startsWith(strHead, "`")) {
        section.parameters.push_back(codeIn(strHead));
    }
}

} // namespace Velmora::Testing
