#pragma once

#include <string>

#include <velmora/AceCleanupLogger.h>
#include <velmora/ROConfiguration.h>
#include <velmora/StringUtil.h>

namespace Velmora::Math::Xpr {

/// The logger of all script loaders.
const AceCleanupLogger& scriptLoaderLogger();

/// Reads the search path of the script loaders. False, with an ERROR line, if the configuration has
/// none.
bool readScriptDirs(const ROConfiguration& in_Configuration, StringVector& out_vScriptDirs);

/// Writes that no directory has the script; `in_strPath` is the last path tried.
void logOpenFailure(const std::string& in_strPath, bool in_bReportOpenFailure);

} // namespace Velmora::Math::Xpr
