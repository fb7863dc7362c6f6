#include "GraphText.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace Vxpr::TestSupport {

namespace {

std::string dropMarkup(const std::string& in_strLabel) {
    std::string strText = std::regex_replace(in_strLabel, std::regex("<BR/>"), " | ");
    strText = std::regex_replace(strText, std::regex("<[^>]*>"), "");
    for (const auto& [szFrom, szTo] :
         {std::pair{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}}) {
        strText = std::regex_replace(strText, std::regex(szFrom), szTo);
    }
    return strText;
}

} // namespace

GraphText::GraphText(const std::string& in_strText) {
    const std::regex node(R"re(  (n\d+) \[(.*)label=<(.*)>(, tooltip="(.*)")?\];)re");
    const std::regex edge(R"re(  (n\d+) -> (n\d+)( \[headlabel="(.*)"\])?;)re");
    std::istringstream lines(in_strText);
    std::smatch match;
    for (std::string strLine; std::getline(lines, strLine);) {
        if (std::regex_match(strLine, match, edge)) {
            m_vEdges.push_back({match[1], match[2], match[4]});
        } else if (std::regex_match(strLine, match, node)) {
            m_mapAttributes[match[1]] = match[2];
            m_mapLabels[match[1]] = dropMarkup(match[3]);
        }
    }
}

std::vector<std::string> GraphText::getLabels() const {
    std::vector<std::string> vLabels;
    for (const auto& [strId, strLabel] : m_mapLabels) {
        vLabels.push_back(strLabel);
    }
    std::sort(vLabels.begin(), vLabels.end());
    return vLabels;
}

std::string GraphText::getAttributes(const std::string& in_strLabel) const {
    std::string strAttributes;
    int iFound = 0;
    for (const auto& [strId, strLabel] : m_mapLabels) {
        if (strLabel == in_strLabel) {
            strAttributes = m_mapAttributes.at(strId);
            ++iFound;
        }
    }
    return iFound == 1 ? strAttributes : "";
}

std::vector<std::string> GraphText::getSources(const std::string& in_strLabel) const {
    std::vector<std::string> vSources;
    for (const Edge& edge : m_vEdges) {
        if (m_mapLabels.at(edge.m_strTo) == in_strLabel) {
            vSources.push_back(edge.m_strRole + "=" + m_mapLabels.at(edge.m_strFrom));
        }
    }
    return vSources;
}

} // namespace Vxpr::TestSupport
