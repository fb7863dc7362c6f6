#include "GraphCommand.h"

#include "EngineLog.h"
#include "Failure.h"
#include "FeatureSelection.h"
#include "FileEnding.h"
#include "GraphvizProgram.h"
#include "GraphvizText.h"
#include "LogOption.h"
#include "NodeText.h"
#include "Output.h"
#include "ParsedScript.h"
#include "TextList.h"

#include <velmora/math/xpr/FunctionBaseImpl.h>

#include <algorithm>
#include <set>

namespace Vxpr {

namespace {

using Velmora::Handle;
using Velmora::Math::Xpr::FunctionBaseImpl;

constexpr const char* DESCRIPTION =
    R"(Draws what a script computes: as text for Graphviz, or as a picture.)";

constexpr const char* REFERENCE = R"(
  Arrows lead from what is read to what reads it. Where a node reads several others, the arrows are
  numbered in the order of the script. A box is an operation, with the names of the definitions
  that have its value and their lines; several names mean that the definitions share the node. A
  box of two lines on a yellow ground keeps something from frame to frame. Inputs are ellipses,
  literals have square corners. Definitions that only stand for another, arguments, and calls of
  functions that a script defines have no nodes of their own: the arrows go through them.

  Without FEATURE the picture has all definitions that have a value; the functions, if there are
  no others. What only they would use isn't shown.

STAGES
  --raw        the definitions as they were parsed, each on its own; names are dashed, they haven't
               been looked up. The functions that the script defines are shown as well.
  --linked     names are looked up, and each call of a function that a script defines has a copy of
               what it computes; so has each use of a definition above its own line
  --optimized  equal operations on equal values are one node. This is what vxpr run evaluates, and
               so what is shown without an option.

OUTPUT
  The ending of -o FILE chooses: .dot or .gv is text, .svg and .png are pictures. Those are drawn by
  Graphviz' program `dot`, which must be installed and be found on the PATH. Without -o the text
  goes to the standard output. The same script gives the same text.

EXIT STATUS
  0  done    1  the script or the output is at fault    2  the command line is at fault

EXAMPLES
  vxpr graph loudness.xpr -o loudness.svg
  vxpr graph endpointer.xpr speech --linked -o linked.png
  vxpr graph endpointer.xpr | dot -Tpdf > endpointer.pdf
)";

/// `dot` takes minutes beyond.
constexpr std::size_t MANY_NODES = 1000;

std::size_t getLine(const Definition& in_Definition) {
    return in_Definition.m_Position ? in_Definition.m_Position->m_Position.m_uiLine : 0;
}

std::size_t countReached(const ScriptGraph& in_Graph) {
    return static_cast<std::size_t>(
        std::count_if(in_Graph.getNodes().begin(), in_Graph.getNodes().end(),
                      [](const ScriptGraph::Node& in_Node) { return in_Node.m_bReached; }));
}

} // namespace

GraphCommand::GraphCommand(CLI::App& inout_App)
    : m_pCommand(inout_App.add_subcommand("graph", DESCRIPTION)) {
    m_pCommand->footer(REFERENCE);
    m_pCommand->add_option("SCRIPT", m_strScript, "The script; - is the standard input")
        ->required();
    m_pCommand->add_option("FEATURE", m_vFeatures, "What to show; everything without it");
    CLI::Option* pRaw = m_pCommand->add_flag("--raw", m_bRaw, "As parsed");
    CLI::Option* pLinked = m_pCommand->add_flag("--linked", m_bLinked, "Behind linking");
    CLI::Option* pOptimized = m_pCommand->add_flag("--optimized", m_bOptimized,
                                                   "Behind optimizing, which is also the default");
    pRaw->excludes(pLinked)->excludes(pOptimized);
    pLinked->excludes(pOptimized);
    m_pCommand
        ->add_option("-I,--include", m_vDirectories,
                     "Search other scripts there, behind the script's own directory")
        ->type_name("DIR")
        ->allow_extra_args(false);
    m_pCommand
        ->add_option("-o,--output", m_strOutput,
                     "Where to write: a file ending in .dot, .gv, .svg or .png; - is the standard "
                     "output, which is also the default")
        ->type_name("FILE");
    addLogOption(*m_pCommand, m_strLog);
}

/// The format in the terms of `dot`; empty for its own language.
std::string GraphCommand::chooseFormat() const {
    if (m_strOutput == "-" || hasEnding(m_strOutput, ".dot") || hasEnding(m_strOutput, ".gv")) {
        return {};
    }
    for (const char* szFormat : {"svg", "png"}) {
        if (hasEnding(m_strOutput, std::string(".") + szFormat)) {
            return szFormat;
        }
    }
    throw Failure::ofCommandLine("-o " + m_strOutput +
                                 ": the ending says what to write; let it be .dot or .gv for text, "
                                 ".svg or .png for a picture");
}

std::vector<ScriptGraph::Definition> GraphCommand::collect(LinkedScript& inout_Script,
                                                           ScriptLibrary& inout_Library) const {
    const std::vector<Definition>& vInventory = inout_Script.getInventory().getDefinitions();
    std::vector<ScriptGraph::NodeHandle> vExpressions;
    if (m_bRaw) {
        vExpressions = ParsedScript(*inout_Library.find(inout_Script.getName())).getDefinitions();
    } else {
        for (const Definition& definition : vInventory) {
            vExpressions.push_back(inout_Script.find(definition.m_strName));
        }
    }
    std::vector<ScriptGraph::Definition> vDefinitions;
    for (std::size_t ui = 0; ui < std::min(vInventory.size(), vExpressions.size()); ++ui) {
        const Handle<FunctionBaseImpl> pFunction = vExpressions[ui];
        vDefinitions.push_back({vInventory[ui].m_strName,
                                pFunction.isNull() ? "" : describeArguments(*pFunction),
                                getLine(vInventory[ui]), vExpressions[ui], true});
    }
    return vDefinitions;
}

/// Settles which definitions the picture is about.
void GraphCommand::ask(const LinkedScript& in_Script,
                       std::vector<ScriptGraph::Definition>& inout_vDefinitions) const {
    const std::vector<Definition>& vInventory = in_Script.getInventory().getDefinitions();
    std::set<std::string> setAsked;
    for (const std::string& strFeature : m_vFeatures) {
        setAsked.insert(findDefinition(in_Script, strFeature).m_strName);
    }
    const bool bValues =
        !m_bRaw && std::any_of(vInventory.begin(), vInventory.end(),
                               [](const Definition& in_Other) { return in_Other.hasValue(); });
    for (std::size_t ui = 0; ui < inout_vDefinitions.size(); ++ui) {
        inout_vDefinitions[ui].m_bAsked = setAsked.empty()
                                              ? !bValues || vInventory[ui].hasValue()
                                              : setAsked.count(vInventory[ui].m_strName) != 0;
    }
}

std::string GraphCommand::makeTitle(const LinkedScript& in_Script) const {
    std::vector<std::string> vNames(1, in_Script.getName() + ".xpr");
    for (const std::string& strFeature : m_vFeatures) {
        vNames.push_back(findDefinition(in_Script, strFeature).m_strName);
    }
    return join(vNames, ", ") + " (" +
           (m_bRaw      ? "as parsed"
            : m_bLinked ? "linked"
                        : "optimized") +
           ")";
}

ExitStatus GraphCommand::execute() const {
    EngineLog::install(m_strLog);
    const std::string strFormat = chooseFormat();
    if (m_strScript != "-" && m_strOutput != "-" && isSameFile(m_strScript, m_strOutput)) {
        throw Failure::ofCommandLine("-o " + m_strOutput +
                                     " would replace the script; choose another name");
    }
    ScriptLibrary library;
    DiagnosticPrinter printer(library);
    LinkedScript script({m_strScript, m_vDirectories, !m_bLinked, !m_bRaw}, library, printer);
    if (!script.load()) {
        throw ReportedFailure();
    }
    std::vector<ScriptGraph::Definition> vDefinitions = collect(script, library);
    ask(script, vDefinitions);
    if (vDefinitions.empty()) {
        printer.print(
            {Diagnostic::Severity::Warning, std::nullopt, "'" + m_strScript + "' defines nothing"});
    }
    const ScriptGraph graph(script.getName(), vDefinitions);
    const std::string strText = toGraphviz(graph, makeTitle(script));
    Output output(m_strOutput);
    if (strFormat.empty()) {
        output.append(strText);
    } else {
        const std::size_t uiNodes = countReached(graph);
        if (uiNodes > MANY_NODES) {
            printer.print({Diagnostic::Severity::Note, std::nullopt,
                           "the graph has " + std::to_string(uiNodes) +
                               " nodes, which takes `dot` long to draw; name a feature for a "
                               "smaller one, or write text with a name that ends in .dot"});
        }
        output.append(GraphvizProgram::draw(strText, strFormat));
    }
    output.commit();
    return ExitStatus::Done;
}

} // namespace Vxpr
