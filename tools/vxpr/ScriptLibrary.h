#pragma once

#include "ScriptText.h"

#include <map>
#include <set>
#include <string>

namespace Vxpr {

/// The scripts that take part in a run, by their names: it tells where a name's text stands.
class ScriptLibrary {
public:
    /// A script whose text is known.
    void add(const ScriptText& in_Script);

    /// A script that the engine has opened; its text is read when somebody asks for it. A name that
    /// is known already keeps its text.
    void addFile(const std::string& in_strPath);

    /// A path that would be a script's, but that the engine can't open although it is there.
    void addUnusable(const std::string& in_strPath);

    /// The first unusable path for a script of that name; empty if there is none.
    std::string findUnusable(const std::string& in_strName) const;

    /// The names of all scripts.
    std::set<std::string> getNames() const;

    /// The script of that name, null if none was opened or it can't be read any more.
    const ScriptText* find(const std::string& in_strName);

private:
    std::map<std::string, ScriptText> m_mapTexts;
    std::map<std::string, std::string> m_mapPaths;
    std::map<std::string, std::string> m_mapUnusable;
};

} // namespace Vxpr
