#include "RunStatistics.h"

#include "Diagnostic.h"
#include "NameAdvice.h"
#include "TextList.h"

#include <velmora/LimitedObjPtr.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/VariableImpl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>
#include <unordered_map>

namespace Vxpr {

using Velmora::LimitedObjPtr;
using Velmora::Math::DoubleVector;
using Velmora::Math::Xpr::Argument;
using Velmora::Math::Xpr::DomainVariableImpl;
using Velmora::Math::Xpr::FunctionBaseImpl;
using Velmora::Math::Xpr::VariableImpl;

namespace {

/// Whether a node that hands a value on is a definition: a variable, or a function of nothing. An
/// input isn't evaluated.
bool isDefinition(const FeatureGraph::Node& in_Node) {
    if (const auto* pFunction = dynamic_cast<const FunctionBaseImpl*>(&in_Node)) {
        return pFunction->getArgumentCount() == 0 && pFunction->getParameterCount() == 0;
    }
    return dynamic_cast<const VariableImpl*>(&in_Node) != nullptr &&
           dynamic_cast<const Argument*>(&in_Node) == nullptr &&
           dynamic_cast<const DomainVariableImpl*>(&in_Node) == nullptr;
}

/// A number with one digit behind the point.
std::string toTenths(double in_dValue) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.1f", in_dValue);
    return buffer.data();
}

double toMicroseconds(std::chrono::steady_clock::duration in_Time) {
    return std::chrono::duration<double, std::micro>(in_Time).count();
}

} // namespace

/// Finds the definitions, and the steps between them.
class RunStatistics::Builder {
public:
    Builder(const FeatureGraph& in_Graph, const std::string& in_strScript,
            RunStatistics& out_Statistics)
        : m_Graph(in_Graph), m_strScript(in_strScript), m_Statistics(out_Statistics) {}

    void build() {
        for (const FeatureGraph::Source& feature : m_Graph.getFeatures()) {
            m_Statistics.m_vFeatures.push_back(makeLink(feature));
        }
        std::vector<Step>& vSteps = m_Statistics.m_vSteps;
        for (std::size_t uiStep = 0; uiStep < vSteps.size(); ++uiStep) {
            const FeatureGraph::Reader* pReader = m_Graph.findReader(vSteps[uiStep].m_pNode);
            std::vector<Link> vLinks;
            for (std::size_t ui = 0; pReader != nullptr && ui < pReader->m_vSources.size(); ++ui) {
                vLinks.push_back(makeLink(pReader->m_vSources[ui]));
            }
            vSteps[uiStep].m_pReader = pReader;
            vSteps[uiStep].m_vLinks = std::move(vLinks);
        }
    }

private:
    Link makeLink(const FeatureGraph::Source& in_Source) {
        Link link;
        for (const FeatureGraph::Node* pNode : in_Source.m_vChain) {
            if (isDefinition(*pNode)) {
                link.m_vRows.push_back(findRow(*pNode));
            }
        }
        if (in_Source.m_pNode != nullptr) {
            const auto [ite, bNew] =
                m_mapSteps.emplace(in_Source.m_pNode, m_Statistics.m_vSteps.size());
            if (bNew) {
                m_Statistics.m_vSteps.emplace_back();
                m_Statistics.m_vSteps.back().m_pNode = in_Source.m_pNode;
            }
            link.m_uiStep = ite->second;
        }
        return link;
    }

    std::size_t findRow(const FeatureGraph::Node& in_Definition) {
        const std::string strName = in_Definition.getName();
        const auto [ite, bNew] = m_mapRows.emplace(strName, m_Statistics.m_vRows.size());
        if (bNew) {
            Row row;
            row.m_strName = unqualify(strName, m_strScript);
            if (row.m_strName == strName) {
                row.m_strScript = strName.substr(0, strName.find('.'));
            }
            if (const auto position = findPosition(in_Definition.getSourceInfo())) {
                row.m_uiLine = position->m_Position.m_Position.m_uiLine;
            }
            m_Statistics.m_vRows.push_back(std::move(row));
        }
        return ite->second;
    }

    const FeatureGraph& m_Graph;
    const std::string& m_strScript;
    RunStatistics& m_Statistics;
    std::unordered_map<const FeatureGraph::Node*, std::size_t> m_mapSteps;
    std::unordered_map<std::string, std::size_t> m_mapRows;
};

RunStatistics::RunStatistics(const FeatureGraph& in_Graph, const std::string& in_strScript) {
    Builder(in_Graph, in_strScript, *this).build();
}

void RunStatistics::evaluateFrame() {
    ++m_uiFrames;
    m_FrameTime = {};
    for (const Link& feature : m_vFeatures) {
        enter(feature, NONE);
        while (!m_vOpen.empty()) {
            advance();
        }
    }
    m_TotalTime += m_FrameTime;
    m_WorstTime = std::max(m_WorstTime, m_FrameTime);
}

/// Counts that somebody reads along the link, and opens what is to be computed for that. in_uiRow
/// is the definition of the reader.
void RunStatistics::enter(const Link& in_Link, std::size_t in_uiRow) {
    for (const std::size_t uiRow : in_Link.m_vRows) {
        ++m_vRows[uiRow].m_uiAsked;
    }
    if (in_Link.m_uiStep == NONE) {
        return;
    }
    Step& step = m_vSteps[in_Link.m_uiStep];
    // What has failed on this frame isn't counted as computed once more.
    if (step.m_pNode->isValid() || step.m_uiFrame == m_uiFrames) {
        return;
    }
    step.m_uiFrame = m_uiFrames;
    const bool bWhole = !in_Link.m_vRows.empty();
    m_vOpen.push_back({in_Link.m_uiStep, 0, bWhole ? in_Link.m_vRows.back() : in_uiRow, bWhole});
}

void RunStatistics::advance() {
    Open& open = m_vOpen.back();
    const Step& step = m_vSteps[open.m_uiStep];
    if (open.m_uiNext == step.m_vLinks.size()) {
        if (open.m_bWhole) {
            measure(step, open.m_uiRow);
            ++m_vRows[open.m_uiRow].m_uiEvaluated;
        }
        m_vOpen.pop_back();
        return;
    }
    const std::size_t uiNext = open.m_uiNext++;
    if (step.m_pReader->m_bChooses && uiNext == 1 && step.m_vLinks[0].m_uiStep != NONE) {
        // The condition tells what else is read.
        measure(m_vSteps[step.m_vLinks[0].m_uiStep], open.m_uiRow);
    }
    if (FeatureGraph::isRead(*step.m_pReader, uiNext)) {
        enter(step.m_vLinks[uiNext], open.m_uiRow);
    }
}

void RunStatistics::measure(const Step& in_Step, std::size_t in_uiRow) {
    if (in_Step.m_pNode->isValid()) {
        return;
    }
    LimitedObjPtr<DoubleVector> pValue;
    const Clock::time_point begin = Clock::now();
    in_Step.m_pNode->evaluate(pValue);
    const Clock::duration time = Clock::now() - begin;
    m_FrameTime += time;
    if (in_uiRow != NONE) {
        m_vRows[in_uiRow].m_Time += time;
    }
}

std::string RunStatistics::format() const {
    std::vector<const Row*> vRows;
    for (const Row& row : m_vRows) {
        vRows.push_back(&row);
    }
    std::sort(vRows.begin(), vRows.end(), [](const Row* in_pLeft, const Row* in_pRight) {
        return std::tie(in_pLeft->m_strScript, in_pLeft->m_uiLine, in_pLeft->m_strName) <
               std::tie(in_pRight->m_strScript, in_pRight->m_uiLine, in_pRight->m_strName);
    });
    const double dTotal = std::max(toMicroseconds(m_TotalTime), 1e-9);
    std::vector<std::array<std::string, 5>> vLines{
        {"definition", "line", "evaluations", "saved", "time"}};
    for (const Row* pRow : vRows) {
        const std::string strLine = pRow->m_uiLine == 0 ? "" : std::to_string(pRow->m_uiLine);
        vLines.push_back(
            {pRow->m_strName,
             pRow->m_strScript.empty() ? strLine : pRow->m_strScript + ".xpr:" + strLine,
             std::to_string(pRow->m_uiEvaluated),
             std::to_string(pRow->m_uiAsked - pRow->m_uiEvaluated),
             toTenths(100.0 * toMicroseconds(pRow->m_Time) / dTotal) + " %"});
    }
    std::array<std::size_t, 5> widths{};
    for (const auto& line : vLines) {
        for (std::size_t ui = 0; ui < line.size(); ++ui) {
            widths[ui] = std::max(widths[ui], line[ui].size());
        }
    }
    std::string strText;
    for (const auto& line : vLines) {
        strText += line[0] + std::string(widths[0] - line[0].size(), ' ');
        for (std::size_t ui = 1; ui < line.size(); ++ui) {
            strText += std::string(2 + widths[ui] - line[ui].size(), ' ') + line[ui];
        }
        strText += "\n";
    }
    const double dFrames = static_cast<double>(std::max<std::uint64_t>(m_uiFrames, 1));
    return strText + count(m_uiFrames, "frame") + ": mean " +
           toTenths(toMicroseconds(m_TotalTime) / dFrames) + " us, worst " +
           toTenths(toMicroseconds(m_WorstTime)) + " us\n";
}

} // namespace Vxpr
