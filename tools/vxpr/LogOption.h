#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace Vxpr {

/// Adds `--log LEVEL`, which shows what the engine logs.
void addLogOption(CLI::App& inout_Command, std::string& out_strLevel);

} // namespace Vxpr
