#include "ScriptLoaderSupport.h"

#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>

namespace Velmora::Math::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.math.xpr.ScriptLoader");

namespace {

constexpr const char* ScriptsDirKey = "quillmark.math.xpr.scriptLoader.scriptsDir";

} // namespace

const AceCleanupLogger& scriptLoaderLogger() {
    return fileLogger();
}

bool readScriptDirs(const ROConfiguration& in_Configuration, StringVector& out_vScriptDirs) {
    std::string strScriptDirs;
    if (!in_Configuration.getStringParameter(ScriptsDirKey, strScriptDirs)) {
        VELMORA_LOG_ERROR(fileLogger(),
                          "failed to configure. Can't find parameter: " << ScriptsDirKey);
        return false;
    }
    strTokenize(strScriptDirs, out_vScriptDirs, ';');
    return true;
}

void logOpenFailure(const std::string& in_strPath, bool in_bReportOpenFailure) {
    if (in_bReportOpenFailure) {
        VELMORA_LOG_ERROR(fileLogger(), "can't open file: " << in_strPath);
    } else {
        VELMORA_LOG_DEBUG(fileLogger(), "can't open file: " << in_strPath);
    }
}

} // namespace Velmora::Math::Xpr
