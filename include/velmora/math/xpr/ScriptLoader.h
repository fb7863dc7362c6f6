#pragma once

#include <istream>

#include <velmora/Cloneable.h>
#include <velmora/Export.h>
#include <velmora/Object.h>
#include <velmora/ROConfiguration.h>
#include <velmora/math/xpr/Dictionnary.h>

namespace Velmora::Math::Xpr {

/// Finds a script by its name and adds what it defines to a dictionary.
///
/// Remembers no scripts: a script counts as loaded when the dictionary has an expression of the
/// name of the script's first definition.
class VELMORA_EXPORT ScriptLoader : public virtual Cloneable, public virtual Object {
public:
    /// Reads where scripts are searched. False, with an ERROR line, without the parameter
    /// "quillmark.math.xpr.scriptLoader.scriptsDir".
    virtual bool configure(const ROConfiguration& in_Configuration) = 0;

    /// Loads a script from an open stream. The name stands for the path as well: its directory
    /// part is what "$FILE_DIR" means in the script.
    ///
    /// False when the script has a fault, which is in the log; what was defined ahead of the fault
    /// stays in the dictionary. True and nothing changes when the script counts as loaded.
    virtual bool run(std::istream& inout_Stream, const char* in_szScriptName,
                     Dictionnary& inout_Dictionnary) = 0;

    /// Loads the script of that name, without extension, from the first place that has it. Results
    /// as above; also false when no place has it, with a line at ERROR level if
    /// `in_bReportOpenFailure`, else at DEBUG level.
    ///
    /// The name may have directories, which are looked up below each place of the search; whoever
    /// passes on a name that he doesn't trust has to refuse "/" in it.
    virtual bool run(const char* in_szScriptName, Dictionnary& inout_Dictionnary,
                     bool in_bReportOpenFailure) = 0;
};

} // namespace Velmora::Math::Xpr
