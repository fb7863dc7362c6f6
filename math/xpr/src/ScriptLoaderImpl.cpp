#include <velmora/math/xpr/ScriptLoaderImpl.h>

#include <memory>

#include <velmora/LogSite.h>
#include <velmora/OS.h>
#include <velmora/math/xpr/ScriptParser.h>

#include "ScriptLoaderSupport.h"

namespace Velmora::Math::Xpr {

bool ScriptLoaderImpl::configure(const ROConfiguration& in_Configuration) {
    return configure_i(in_Configuration);
}

bool ScriptLoaderImpl::run(std::istream& inout_Stream, const char* in_szScriptName,
                           Dictionnary& inout_Dictionnary) {
    return run_i(inout_Stream, in_szScriptName, in_szScriptName, in_szScriptName,
                 inout_Dictionnary);
}

bool ScriptLoaderImpl::run(const char* in_szScriptName, Dictionnary& inout_Dictionnary,
                           bool in_bReportOpenFailure) {
    if (in_szScriptName == nullptr) {
        VELMORA_ASSERT_FAIL("0 != in_szScriptName");
        return false;
    }
    const std::string strFileName = std::string(in_szScriptName) + ".xpr";
    std::string strFilePath;
    const std::unique_ptr<std::istream> pStream(
        openScriptFile_i(in_szScriptName, strFileName.c_str(), in_bReportOpenFailure, strFilePath));
    return pStream && run_i(*pStream, in_szScriptName, strFileName.c_str(), strFilePath.c_str(),
                            inout_Dictionnary);
}

bool ScriptLoaderImpl::run_i(std::istream& inout_Stream, const char* in_szScriptName,
                             const char* in_szFileName, const char* in_szFilePath,
                             Dictionnary& inout_Dictionnary) {
    std::string strFileDirectory;
    if (!OS::stripFileName(in_szFilePath, strFileDirectory)) {
        VELMORA_ASSERT_FAIL("OS::stripFileName( in_szFilePath, strFileDirectory )");
        return false;
    }
    ScriptParser parser;
    if (!parser.initialize(inout_Stream, in_szFileName, strFileDirectory.c_str())) {
        VELMORA_LOG_ERROR(scriptLoaderLogger(),
                          "failed to initialize parser from script file " << in_szFileName);
        return false;
    }
    bool bFirst = true;
    for (Handle<Expression> pExpression = parser.getExpression(); !pExpression.isNull();
         pExpression = parser.getExpression()) {
        if (bFirst && inout_Dictionnary.find(pExpression)) {
            VELMORA_LOG_DEBUG(scriptLoaderLogger(),
                              "script =\"" << in_szFileName
                                           << "\" is already loaded -> Skipping script loading.");
            return true;
        }
        bFirst = false;
        if (!inout_Dictionnary.add(pExpression, false)) {
            VELMORA_ASSERT_FAIL("out_Dictionnary.add( pExpression )");
            return false;
        }
    }
    if (parser.failed()) {
        VELMORA_LOG_ERROR(scriptLoaderLogger(), "failed to load script: \""
                                                    << in_szScriptName
                                                    << "\" from file: " << in_szFilePath);
        return false;
    }
    return true;
}

} // namespace Velmora::Math::Xpr
