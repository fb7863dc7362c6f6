#pragma once

#include <velmora/Export.h>
#include <velmora/MemAccounting.h>
#include <velmora/StringUtil.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>
#include <velmora/math/xpr/ScriptLoaderImpl.h>

namespace Velmora::Math::Xpr {

/// Loads scripts from a file system of the host's, from the first directory of the search path
/// that has the script. Without a file system it reads the machine's files.
///
/// A file is read whole before it is parsed. A zero byte cuts off what follows it in its block of
/// 1023 bytes: scripts are text.
class VELMORA_EXPORT ScriptLoaderVFS : public ScriptLoaderImpl {
public:
    VELMORA_MEM_ACCOUNT("ScriptLoaderVFS")

    /// A null handle stands for the machine's files, from `configure` on.
    explicit ScriptLoaderVFS(const TSHandle<VirtualFileSystem>& in_pFileSystem);
    ScriptLoaderVFS(const ScriptLoaderVFS&) = default;
    ScriptLoaderVFS& operator=(const ScriptLoaderVFS&) = default;

    /// A loader of its own with the same search path on the same file system, which the caller
    /// owns.
    Cloneable* clone() const override;

private:
    bool configure_i(const ROConfiguration& in_Configuration) override;
    std::istream* openScriptFile_i(const char* in_szScriptName, const char* in_szFileName,
                                   bool in_bReportOpenFailure,
                                   std::string& out_strFilePath) override;

    TSHandle<VirtualFileSystem> m_pFileSystem;
    StringVector m_vScriptDirs;
};

} // namespace Velmora::Math::Xpr
