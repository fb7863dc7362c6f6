#pragma once

#include "DiagnosticPrinter.h"
#include "FeatureGraph.h"
#include "FrameSource.h"
#include "InputTable.h"
#include "PowerSpectrum.h"
#include "ScriptLibrary.h"

#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Variable.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Vxpr {

/// Gives the input variables of a script their values for each frame: `frame` gets the samples,
/// `spectrum` the power spectrum, any other a row of its table. Feeding doesn't allocate once the
/// rows have had their largest size.
class InputFeed {
public:
    /// Paths of tables by the names of inputs.
    using Tables = std::map<std::string, std::string>;

    /// in_vInputs are the variables to feed; they and in_Frames outlive the feed. Every table is
    /// opened and goes along, also if none of them is called so. Throws a Failure for a table that
    /// can't be used. A variable that nothing feeds is reported to the printer.
    InputFeed(const std::vector<FeatureGraph::Node*>& in_vInputs, const Tables& in_Tables,
              const FrameSource& in_Frames, ScriptLibrary& in_Library,
              DiagnosticPrinter& inout_Printer);
    ~InputFeed();
    InputFeed(const InputFeed&) = delete;
    InputFeed& operator=(const InputFeed&) = delete;

    /// Feeds the current frame. False if there is no recording and the tables have ended; a table
    /// that ends ahead of a recording, or of another table, throws a Failure.
    bool feed(std::uint64_t in_uiFrame);

    /// The tables, by name, that have rows left behind the last frame.
    std::vector<std::string> findUnread();

private:
    enum class Kind { Frame, Spectrum, Table };

    struct Input {
        Kind m_Kind = Kind::Table;
        std::string m_strName;
        std::vector<Velmora::Math::Xpr::Variable*> m_vVariables;
        Velmora::Math::DoubleVector m_vValue;
        std::unique_ptr<InputTable> m_pTable;
    };

    Input& findInput(const std::string& in_strName);
    void choose(Input& inout_Input, const Tables& in_Tables);
    void reportMissing(const Input& in_Input, const std::string& in_strQualifiedName);
    bool readRows(std::uint64_t in_uiFrame);

    const FrameSource& m_Frames;
    ScriptLibrary& m_Library;
    DiagnosticPrinter& m_Printer;
    std::vector<std::unique_ptr<Input>> m_vInputs;
    std::unique_ptr<PowerSpectrum> m_pSpectrum;
    std::vector<double> m_vRow;
};

} // namespace Vxpr
