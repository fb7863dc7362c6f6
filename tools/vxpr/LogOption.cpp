#include "LogOption.h"

namespace Vxpr {

void addLogOption(CLI::App& inout_Command, std::string& out_strLevel) {
    inout_Command
        .add_option("--log", out_strLevel,
                    "Show the engine's own log on the standard error, from this level on: trace, "
                    "debug, info or error")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"trace", "debug", "info", "error"}));
}

} // namespace Vxpr
