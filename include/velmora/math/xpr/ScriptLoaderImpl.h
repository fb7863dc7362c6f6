#pragma once

#include <istream>
#include <string>

#include <velmora/Export.h>
#include <velmora/math/xpr/ScriptLoader.h>

namespace Velmora::Math::Xpr {

/// What all script loaders share: parsing a script and filling a dictionary. A derived class says
/// how a file is found and opened.
///
/// Its operations only read the loader's fields, so one loader serves any number of dictionaries.
class VELMORA_EXPORT ScriptLoaderImpl : public virtual ScriptLoader {
public:
    ScriptLoaderImpl() = default;
    ScriptLoaderImpl(const ScriptLoaderImpl&) = default;
    ScriptLoaderImpl& operator=(const ScriptLoaderImpl&) = default;

    bool configure(const ROConfiguration& in_Configuration) override;
    bool run(std::istream& inout_Stream, const char* in_szScriptName,
             Dictionnary& inout_Dictionnary) override;
    bool run(const char* in_szScriptName, Dictionnary& inout_Dictionnary,
             bool in_bReportOpenFailure) override;

protected:
    /// Parses the stream to its end or its first fault, and adds each definition.
    bool run_i(std::istream& inout_Stream, const char* in_szScriptName, const char* in_szFileName,
               const char* in_szFilePath, Dictionnary& inout_Dictionnary);

private:
    virtual bool configure_i(const ROConfiguration& in_Configuration) = 0;

    /// Opens the file of a script. Returns a stream that the caller owns, and the path under which
    /// the file was found; null if it was found nowhere, which has been logged.
    virtual std::istream* openScriptFile_i(const char* in_szScriptName, const char* in_szFileName,
                                           bool in_bReportOpenFailure,
                                           std::string& out_strFilePath) = 0;
};

} // namespace Velmora::Math::Xpr
