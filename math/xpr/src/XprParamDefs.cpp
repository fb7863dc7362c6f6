#include <velmora/math/xpr/XprParamDefs.h>

#include <velmora/Exception.h>
#include <velmora/FileLogger.h>
#include <velmora/LogSite.h>
#include <velmora/ParameterInfoDB.h>
#include <velmora/ParameterValue.h>
#include <velmora/SingletonRegistry.h>

#include "ParamDefsAtLoad.h"

namespace Velmora::Xpr {

VELMORA_FILE_LOGGER(fileLogger, "quillmark.infra.ParamDefs");

namespace {

/// Stands in the table of singletons for the fact that the parameters are declared.
struct ParamDefsMarker {};

void destroyMarker(void* in_pMarker) {
    delete static_cast<ParamDefsMarker*>(in_pMarker);
}

[[maybe_unused]] const bool s_bDeclared = (declareParametersAtLoad(), true);

} // namespace

bool addParametersToDB() {
    constexpr const ParameterValue* NoDefault = nullptr;
    constexpr bool Optional = false;
    constexpr bool Hidden = false;
    constexpr bool Deprecated = false;
    try {
        ParameterInfoDB::getNonConstInstance().declareParameter(
            "quillmark.math.xpr.scriptLoader.scriptsDir", ParameterValue::StringTag, NoDefault,
            Optional, Hidden, Deprecated,
            "List of the directories where the XPR script loader will try to load the XPR scripts "
            "files. Use the semi-colon (;) to delimit list items.");
    } catch (const Exception& exception) {
        VELMORA_LOG_ERROR(fileLogger(), exception);
        return false;
    }
    return true;
}

void declareParametersAtLoad() {
    auto* const pMarker = new ParamDefsMarker;
    addParametersToDB();
    void* const pHeld = SingletonRegistry::getInstance().registerInstance(
        "ParamDefs::Singleton", pMarker, &destroyMarker, 0);
    if (pHeld != pMarker) {
        delete pMarker;
    }
}

} // namespace Velmora::Xpr
