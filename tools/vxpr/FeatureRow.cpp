#include "FeatureRow.h"

#include "EngineLog.h"
#include "EvaluationFault.h"
#include "NumberText.h"
#include "ParameterTrial.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace Vxpr {

namespace {

/// Every feature that fails may have to search what was said to the others.
constexpr std::size_t MOST_SEARCHED = 1000;

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
      m_vMessages(in_vNames.size()),
      m_vFailures(in_vNames.size(), 0) {
    for (const std::string& strName : in_vNames) {
        m_vFeatures.push_back(in_Script.find(strName));
        m_Graph.addFeature(m_vFeatures.back());
    }
}

bool FeatureRow::configure() {
    const EngineLog::Details details;
    EngineLog::take();
    bool bDone = true;
    for (const FeatureGraph::NodeHandle& pFeature : m_vFeatures) {
        bDone = pFeature->configure(m_Script.getFileSystem()) && bDone;
    }
    const std::vector<EngineMessage> vMessages = EngineLog::take();
    if (bDone && vMessages.empty()) {
        return true;
    }
    bool bExplained = false;
    for (const ParameterTrial& trial : tryParameters(m_vFeatures, m_Script.getFileSystem())) {
        const std::string strText = explainConfiguration(trial.m_pFunction, trial.m_vMessages);
        if (!trial.m_bAccepted) {
            report(trial.m_pFunction, strText);
            bExplained = true;
        } else if (!trial.m_vMessages.empty()) {
            m_vUnusable.push_back({trial.m_pFunction, strText});
        }
    }
    if (!bDone && !bExplained) {
        report(nullptr, explainConfiguration(nullptr, vMessages));
    }
    return bDone;
}

bool FeatureRow::checkCalls() {
    for (const Unusable& unusable : m_vUnusable) {
        report(unusable.m_pFunction, unusable.m_strText);
    }
    const std::vector<FeatureGraph::Uncalled> vUncalled = m_Graph.findUncalled();
    for (const FeatureGraph::Uncalled& uncalled : vUncalled) {
        report(uncalled.m_pPosition, explainUncalled(uncalled));
    }
    return m_vUnusable.empty() && vUncalled.empty();
}

void FeatureRow::report(const FeatureGraph::Node* in_pNode, const std::string& in_strText) {
    m_Printer.print({Diagnostic::Severity::Error, getPosition(in_pNode), in_strText});
}

const std::vector<Cell>& FeatureRow::evaluate(std::uint64_t in_uiFrame, double in_dTime) {
    if (!EngineLog::isEmpty()) {
        // Whoever evaluated a part of the frame before may have heard of its failures.
        m_vMessagesAhead = EngineLog::take();
    }
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
        if (!EngineLog::isEmpty()) {
            m_vMessages[uiFeature] = EngineLog::take();
        }
    }
    if (bFailed || m_Graph.hasFailure()) {
        markFailures(in_uiFrame, in_dTime);
        m_Graph.repair();
    }
    m_vMessagesAhead.clear();
    for (std::vector<EngineMessage>& vMessages : m_vMessages) {
        vMessages.clear();
    }
    return m_vCells;
}

void FeatureRow::markFailures(std::uint64_t in_uiFrame, double in_dTime) {
    struct Failed {
        std::size_t m_uiFeature;
        FeatureGraph::Failure m_Failure;
    };
    std::vector<Failed> vFailed;
    bool bNews = false;
    for (std::size_t uiFeature = 0; uiFeature < m_vFeatures.size(); ++uiFeature) {
        FeatureGraph::Failure failure;
        if (!m_Graph.findFailure(uiFeature, failure) && !m_vCells[uiFeature].m_bMissing) {
            continue;
        }
        m_vCells[uiFeature] = {nullptr, 0, true};
        bNews = m_vFailures[uiFeature]++ == 0 || bNews;
        vFailed.push_back({uiFeature, std::move(failure)});
    }
    if (!bNews) {
        return;
    }
    const std::vector<EngineMessage> vOfFrame = collectMessages();
    std::unordered_map<const FeatureGraph::Node*, std::string> mapCauses;
    for (const Failed& failed : vFailed) {
        // A node speaks when it fails, but not to those that read it later: they get what was made
        // of its words then.
        const auto [iteCause, bFirst] = mapCauses.try_emplace(failed.m_Failure.m_pNode);
        if (bFirst || failed.m_Failure.m_pNode == nullptr) {
            const std::string* pKnown = findUnusable(failed.m_Failure.m_pNode);
            iteCause->second = pKnown != nullptr
                                   ? *pKnown
                                   : explainEvaluation(failed.m_Failure,
                                                       m_vMessages[failed.m_uiFeature], vOfFrame);
        }
        if (m_vFailures[failed.m_uiFeature] == 1) {
            report(failed.m_Failure.m_pPosition, "`" + m_vNames[failed.m_uiFeature] +
                                                     "` has no value on frame " +
                                                     std::to_string(in_uiFrame) + " (" +
                                                     toText(in_dTime) + " s): " + iteCause->second);
        }
    }
}

/// Why the function has no value on any frame; null if it isn't known to have none.
const std::string* FeatureRow::findUnusable(const FeatureGraph::Node* in_pNode) const {
    const auto ite =
        std::find_if(m_vUnusable.begin(), m_vUnusable.end(), [&](const Unusable& in_Unusable) {
            return in_Unusable.m_pFunction == in_pNode;
        });
    return ite == m_vUnusable.end() ? nullptr : &ite->m_strText;
}

/// The first messages of the frame, whichever feature they came with.
std::vector<EngineMessage> FeatureRow::collectMessages() const {
    std::vector<EngineMessage> vMessages = m_vMessagesAhead;
    for (const std::vector<EngineMessage>& vOfFeature : m_vMessages) {
        const std::size_t uiTaken =
            std::min(vOfFeature.size(), MOST_SEARCHED - std::min(MOST_SEARCHED, vMessages.size()));
        vMessages.insert(vMessages.end(), vOfFeature.begin(),
                         vOfFeature.begin() + static_cast<std::ptrdiff_t>(uiTaken));
    }
    return vMessages;
}

} // namespace Vxpr
