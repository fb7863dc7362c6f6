#include "FeatureRow.h"

#include "EngineLog.h"
#include "EvaluationFault.h"
#include "NumberText.h"

namespace Vxpr {

namespace {

std::optional<SourcePosition> getPosition(const FeatureGraph::Node* in_pNode) {
    if (in_pNode == nullptr) {
        return std::nullopt;
    }
    const auto position = findPosition(in_pNode->getSourceInfo());
    return position ? std::optional<SourcePosition>(position->m_Position) : std::nullopt;
}

} // namespace

FeatureRow::FeatureRow(LinkedScript& in_Script, const std::vector<std::string>& in_vNames,
                       DiagnosticPrinter& inout_Printer)
    : m_Script(in_Script),
      m_vNames(in_vNames),
      m_Printer(inout_Printer),
      m_vValues(in_vNames.size()),
      m_vCells(in_vNames.size()),
      m_vFailures(in_vNames.size(), 0) {
    for (const std::string& strName : in_vNames) {
        m_vFeatures.push_back(in_Script.find(strName));
        m_Graph.addFeature(m_vFeatures.back());
    }
}

bool FeatureRow::configure() {
    for (const FeatureGraph::NodeHandle& pFeature : m_vFeatures) {
        if (pFeature->configure(m_Script.getFileSystem())) {
            continue;
        }
        const std::vector<EngineMessage> vMessages = EngineLog::take();
        const FeatureGraph::Node* pFunction = m_Graph.findUnconfigurable(m_Script.getFileSystem());
        EngineLog::take();
        m_Printer.print({Diagnostic::Severity::Error, getPosition(pFunction),
                         explainConfiguration(pFunction, vMessages)});
        return false;
    }
    return true;
}

const std::vector<Cell>& FeatureRow::evaluate(std::uint64_t in_uiFrame, double in_dTime) {
    bool bFailed = false;
    for (std::size_t uiFeature = 0; uiFeature < m_vFeatures.size(); ++uiFeature) {
        m_vValues[uiFeature] = nullptr;
        const bool bDone = m_vFeatures[uiFeature]->evaluate(m_vValues[uiFeature]);
        const bool bMissing = !bDone || m_vValues[uiFeature].isNull();
        bFailed = bFailed || bMissing;
        Cell& cell = m_vCells[uiFeature];
        cell.m_bMissing = bMissing;
        cell.m_pValues = bMissing ? nullptr : m_vValues[uiFeature]->begin();
        cell.m_uiSize = bMissing ? 0 : m_vValues[uiFeature]->size();
    }
    if (bFailed || m_Graph.hasFailure()) {
        markFailures(in_uiFrame, in_dTime);
        m_Graph.repair();
    }
    if (!EngineLog::isEmpty()) {
        EngineLog::take();
    }
    return m_vCells;
}

void FeatureRow::markFailures(std::uint64_t in_uiFrame, double in_dTime) {
    for (std::size_t uiFeature = 0; uiFeature < m_vFeatures.size(); ++uiFeature) {
        FeatureGraph::Failure failure;
        if (!m_Graph.findFailure(uiFeature, failure) && !m_vCells[uiFeature].m_bMissing) {
            continue;
        }
        m_vCells[uiFeature] = {nullptr, 0, true};
        if (m_vFailures[uiFeature]++ == 0) {
            report(uiFeature, failure, in_uiFrame, in_dTime);
        }
    }
}

void FeatureRow::report(std::size_t in_uiFeature, const FeatureGraph::Failure& in_Failure,
                        std::uint64_t in_uiFrame, double in_dTime) {
    m_Printer.print({Diagnostic::Severity::Error, getPosition(in_Failure.m_pPosition),
                     "`" + m_vNames[in_uiFeature] + "` has no value on frame " +
                         std::to_string(in_uiFrame) + " (" + toText(in_dTime) +
                         " s): " + explainEvaluation(in_Failure, EngineLog::peek())});
}

} // namespace Vxpr
