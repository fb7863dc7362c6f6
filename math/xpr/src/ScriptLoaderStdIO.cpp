#include <velmora/math/xpr/ScriptLoaderStdIO.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include <velmora/LogSite.h>

#include "ScriptLoaderSupport.h"

namespace Velmora::Math::Xpr {

namespace {

/// A stream opens a directory without complaint, and waits on a pipe for its other end.
bool isRegularFile(const std::string& in_strPath) {
    std::error_code error;
    return std::filesystem::is_regular_file(in_strPath, error);
}

} // namespace

Cloneable* ScriptLoaderStdIO::clone() const {
    return new ScriptLoaderStdIO(*this);
}

bool ScriptLoaderStdIO::configure_i(const ROConfiguration& in_Configuration) {
    return readScriptDirs(in_Configuration, m_vScriptDirs);
}

std::istream* ScriptLoaderStdIO::openScriptFile_i(const char* in_szScriptName,
                                                  const char* in_szFileName,
                                                  bool in_bReportOpenFailure,
                                                  std::string& out_strFilePath) {
    std::string strPath;
    for (const std::string& strDirectory : m_vScriptDirs) {
        strPath = strDirectory + "/" + in_szFileName;
        VELMORA_LOG_DEBUG(scriptLoaderLogger(), "trying to load script \""
                                                    << in_szScriptName
                                                    << "\" from file: " << strPath);
        if (!isRegularFile(strPath)) {
            continue;
        }
        auto pStream = std::make_unique<std::ifstream>(strPath);
        if (pStream->is_open()) {
            VELMORA_LOG_DEBUG(scriptLoaderLogger(),
                              "Loaded script \"" << in_szScriptName << "\" from file: " << strPath);
            out_strFilePath = strPath;
            return pStream.release();
        }
    }
    logOpenFailure(strPath, in_bReportOpenFailure);
    return nullptr;
}

} // namespace Velmora::Math::Xpr
