#include <velmora/math/xpr/ScriptLoaderVFS.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <sstream>

#include <velmora/DiskFileSystem.h>
#include <velmora/LogSite.h>

#include "ScriptLoaderSupport.h"
#include "ScriptTooLong.h"

namespace Velmora::Math::Xpr {

namespace {

constexpr long ChunkSize = 1023;

/// The text of the file, each chunk up to its first zero byte. Null for a file that is too long,
/// zero bytes counted: a file of nothing else can be longer than anyone can read.
std::unique_ptr<std::istream> readFile(VirtualFile& inout_File) {
    auto pText = std::make_unique<std::stringstream>(std::ios::in | std::ios::out);
    std::array<char, ChunkSize + 1> buffer;
    std::size_t uiSize = 0;
    for (long lCount = inout_File.read(buffer.data(), ChunkSize); lCount > 0;
         lCount = inout_File.read(buffer.data(), ChunkSize)) {
        uiSize += static_cast<std::size_t>(lCount);
        if (uiSize > ScriptParser::MaxScriptSize) {
            return nullptr;
        }
        buffer[static_cast<std::size_t>(std::min(lCount, ChunkSize))] = '\0';
        *pText << buffer.data();
    }
    return pText;
}

} // namespace

ScriptLoaderVFS::ScriptLoaderVFS(const TSHandle<VirtualFileSystem>& in_pFileSystem)
    : m_pFileSystem(in_pFileSystem) {}

Cloneable* ScriptLoaderVFS::clone() const {
    return new ScriptLoaderVFS(*this);
}

bool ScriptLoaderVFS::configure_i(const ROConfiguration& in_Configuration) {
    if (m_pFileSystem.isNull()) {
        VELMORA_LOG_INFO(scriptLoaderLogger(),
                         "script loader will read script file from the DiskFileSystem");
        m_pFileSystem = TSHandle<VirtualFileSystem>(new (std::nothrow) DiskFileSystem);
        if (m_pFileSystem.isNull()) {
            VELMORA_ASSERT_FAIL("!m_pFileSystem.isNull() && \"can't create file system\"");
            return false;
        }
    }
    return readScriptDirs(in_Configuration, m_vScriptDirs);
}

std::istream* ScriptLoaderVFS::openScriptFile_i(const char* in_szScriptName,
                                                const char* in_szFileName,
                                                bool in_bReportOpenFailure,
                                                std::string& out_strFilePath) {
    // Named for the operation that the host called.
    VELMORA_TRACE_SCOPE(scriptLoaderLogger(), "ScriptLoaderVFS::run");
    std::string strPath;
    for (const std::string& strDirectory : m_vScriptDirs) {
        strPath = strDirectory + "/" + in_szFileName;
        VELMORA_LOG_DEBUG(scriptLoaderLogger(), "trying to loading script \""
                                                    << in_szScriptName
                                                    << "\" from file: " << strPath);
        const TSHandle<VirtualFile> pFile = m_pFileSystem->open(strPath.c_str());
        if (!pFile.isNull()) {
            VELMORA_LOG_DEBUG(scriptLoaderLogger(),
                              "Loaded script \"" << in_szScriptName << "\" from file: " << strPath);
            out_strFilePath = strPath;
            std::unique_ptr<std::istream> pText = readFile(*pFile);
            if (pText == nullptr) {
                VELMORA_LOG_ERROR(scriptLoaderLogger(), scriptTooLong(in_szScriptName));
            }
            return pText.release();
        }
    }
    logOpenFailure(strPath, in_bReportOpenFailure);
    return nullptr;
}

} // namespace Velmora::Math::Xpr
