#pragma once

#include "DiagnosticPrinter.h"
#include "EngineLog.h"
#include "FeatureGraph.h"
#include "LinkedScript.h"
#include "TableWriter.h"

#include <velmora/LimitedObjPtr.h>
#include <velmora/math/DoubleVector.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Vxpr {

/// The features of a script, evaluated frame by frame. A frame allocates nothing unless something
/// fails.
class FeatureRow {
public:
    /// in_Script and inout_Printer outlive the row.
    FeatureRow(LinkedScript& in_Script, const std::vector<std::string>& in_vNames,
               DiagnosticPrinter& inout_Printer);

    /// Hands the parameters to the functions; false if some refuse, each reported to the printer.
    bool configure();

    /// False if a call can't give a value on any frame, each reported to the printer: the function
    /// takes its parameters without being able to work with them, or is used without its
    /// arguments. What doesn't read its value works nonetheless. Comes behind configure().
    bool checkCalls();

    /// The input variables that the features read.
    const std::vector<FeatureGraph::Node*>& getInputs() const { return m_Graph.getInputs(); }

    /// What the features are computed from.
    const FeatureGraph& getGraph() const { return m_Graph; }

    /// Evaluates a frame. The cells are good until the next call. A feature that fails has no value
    /// on that frame; the first time is reported to the printer.
    const std::vector<Cell>& evaluate(std::uint64_t in_uiFrame, double in_dTime);

    /// For each feature, on how many frames it had no value.
    const std::vector<std::uint64_t>& getFailures() const { return m_vFailures; }

private:
    /// A function that has no value on any frame, and why.
    struct Unusable {
        const FeatureGraph::Node* m_pFunction;
        std::string m_strText;
    };

    void markFailures(std::uint64_t in_uiFrame, double in_dTime);
    const std::string* findUnusable(const FeatureGraph::Node* in_pNode) const;
    std::vector<EngineMessage> collectMessages() const;
    void report(const FeatureGraph::Node* in_pNode, const std::string& in_strText);

    LinkedScript& m_Script;
    std::vector<std::string> m_vNames;
    DiagnosticPrinter& m_Printer;
    std::vector<FeatureGraph::NodeHandle> m_vFeatures;
    FeatureGraph m_Graph;
    std::vector<Unusable> m_vUnusable;
    std::vector<Velmora::LimitedObjPtr<Velmora::Math::DoubleVector>> m_vValues;
    std::vector<Cell> m_vCells;
    /// What the engine reported of a frame: before the features were evaluated, and with each.
    std::vector<EngineMessage> m_vMessagesAhead;
    std::vector<std::vector<EngineMessage>> m_vMessages;
    std::vector<std::uint64_t> m_vFailures;
};

} // namespace Vxpr
