#include "ScriptLibrary.h"

#include "Failure.h"

namespace Vxpr {

namespace {

void addPath(const std::string& in_strPath, std::map<std::string, std::string>& inout_mapPaths) {
    const std::string strPath =
        in_strPath.compare(0, 2, "./") == 0 ? in_strPath.substr(2) : in_strPath;
    const std::size_t uiSlash = strPath.rfind('/');
    const std::size_t uiName = uiSlash == std::string::npos ? 0 : uiSlash + 1;
    inout_mapPaths.emplace(strPath.substr(uiName, strPath.rfind('.') - uiName), strPath);
}

} // namespace

void ScriptLibrary::add(const ScriptText& in_Script) {
    m_mapTexts.insert_or_assign(in_Script.getName(), in_Script);
}

void ScriptLibrary::addFile(const std::string& in_strPath) {
    addPath(in_strPath, m_mapPaths);
}

void ScriptLibrary::addUnusable(const std::string& in_strPath) {
    addPath(in_strPath, m_mapUnusable);
}

std::string ScriptLibrary::findUnusable(const std::string& in_strName) const {
    const auto itePath = m_mapUnusable.find(in_strName);
    return itePath == m_mapUnusable.end() ? std::string() : itePath->second;
}

std::set<std::string> ScriptLibrary::getNames() const {
    std::set<std::string> setNames;
    for (const auto& [strName, script] : m_mapTexts) {
        setNames.insert(strName);
    }
    for (const auto& [strName, strPath] : m_mapPaths) {
        setNames.insert(strName);
    }
    return setNames;
}

const ScriptText* ScriptLibrary::find(const std::string& in_strName) {
    const auto iteText = m_mapTexts.find(in_strName);
    if (iteText != m_mapTexts.end()) {
        return &iteText->second;
    }
    const auto itePath = m_mapPaths.find(in_strName);
    if (itePath == m_mapPaths.end()) {
        return nullptr;
    }
    try {
        return &m_mapTexts.emplace(in_strName, ScriptText::read(itePath->second)).first->second;
    } catch (const Failure&) {
        return nullptr;
    }
}

} // namespace Vxpr
