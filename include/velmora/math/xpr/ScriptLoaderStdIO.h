#pragma once

#include <velmora/Export.h>
#include <velmora/MemAccounting.h>
#include <velmora/StringUtil.h>
#include <velmora/math/xpr/ScriptLoaderImpl.h>

namespace Velmora::Math::Xpr {

/// Loads scripts from the machine's files, from the first directory of the search path that has
/// the script.
///
/// Opens regular files only: a directory, a pipe or a device of a script's name is passed over.
class VELMORA_EXPORT ScriptLoaderStdIO : public ScriptLoaderImpl {
public:
    VELMORA_MEM_ACCOUNT("ScriptLoaderStdIO")

    ScriptLoaderStdIO() = default;
    ScriptLoaderStdIO(const ScriptLoaderStdIO&) = default;
    ScriptLoaderStdIO& operator=(const ScriptLoaderStdIO&) = default;

    /// A loader of its own with the same search path, which the caller owns.
    Cloneable* clone() const override;

private:
    bool configure_i(const ROConfiguration& in_Configuration) override;
    std::istream* openScriptFile_i(const char* in_szScriptName, const char* in_szFileName,
                                   bool in_bReportOpenFailure,
                                   std::string& out_strFilePath) override;

    StringVector m_vScriptDirs;
};

} // namespace Velmora::Math::Xpr
