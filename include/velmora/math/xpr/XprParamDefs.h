#pragma once

#include <velmora/Export.h>

namespace Velmora::Xpr {

/// Declares the engine's configuration parameter, "quillmark.math.xpr.scriptLoader.scriptsDir", in
/// the process's table of parameters. The library does so by itself when it is loaded. False, with
/// an ERROR line, if the table refuses.
VELMORA_EXPORT bool addParametersToDB();

} // namespace Velmora::Xpr
