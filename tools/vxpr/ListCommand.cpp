#include "ListCommand.h"

#include "Builtins.h"
#include "EngineLog.h"
#include "Failure.h"
#include "Output.h"
#include "Suggestion.h"

#include <nlohmann/json.hpp>

namespace Vxpr {

namespace {

constexpr const char* DESCRIPTION =
    R"(Lists the built-in functions: how they are called, and what they give.)";

constexpr const char* REFERENCE = R"(
  Parameters stand between < and >, arguments between ( and ), both in the order shown; their names
  are never written in a script. With --format json the output is an array of objects with the
  fields name, description, arguments and parameters.

EXIT STATUS
  0  done    2  there is no such function, or the command line is at fault

EXAMPLES
  vxpr list
  vxpr list slidingWindow
)";

std::string toText(const std::vector<Builtin>& in_vBuiltins) {
    std::string strText;
    for (const Builtin& builtin : in_vBuiltins) {
        strText += builtin.getCall() + "\n    " + builtin.m_strDescription + "\n";
    }
    return strText;
}

std::string toJson(const std::vector<Builtin>& in_vBuiltins) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const Builtin& builtin : in_vBuiltins) {
        list.push_back({{"name", builtin.m_strName},
                        {"description", builtin.m_strDescription},
                        {"arguments", builtin.m_vArguments},
                        {"parameters", builtin.m_vParameters}});
    }
    return list.dump(2) + "\n";
}

} // namespace

ListCommand::ListCommand(CLI::App& inout_App)
    : m_pCommand(inout_App.add_subcommand("list", DESCRIPTION)) {
    m_pCommand->footer(REFERENCE);
    m_pCommand->add_option("NAME", m_strName, "The function to list; all without it");
    m_pCommand->add_option("--format", m_strFormat, "text or json; text without it")
        ->type_name("FORMAT")
        ->check(CLI::IsMember({"text", "json"}));
}

ExitStatus ListCommand::execute() const {
    EngineLog::install({});
    std::vector<Builtin> vBuiltins;
    if (m_strName.empty()) {
        vBuiltins = Builtins::getAll();
    } else if (const auto builtin = Builtins::find(m_strName)) {
        vBuiltins.push_back(*builtin);
    } else {
        throw Failure::ofCommandLine("there is no built-in function `" + m_strName +
                                     "`; `vxpr list` shows all of them" +
                                     suggestInWords(m_strName, Builtins::getNames()));
    }
    Output output("-");
    output.append(m_strFormat == "json" ? toJson(vBuiltins) : toText(vBuiltins));
    output.commit();
    return ExitStatus::Done;
}

} // namespace Vxpr
