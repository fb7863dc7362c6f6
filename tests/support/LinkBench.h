#pragma once

#include <initializer_list>
#include <sstream>
#include <string>

#include <velmora/Handle.h>
#include <velmora/ParameterTrie.h>
#include <velmora/TSHandle.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/Linker.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>
#include <velmora/math/xpr/VariableImpl.h>

#include "support/MemoryFileSystem.h"

namespace Velmora::Testing {

/// A configuration that names the directory of scripts.
inline ParameterTrie scriptsIn(const char* in_szDirectories) {
    ParameterTrie configuration;
    configuration.setParameter("quillmark.math.xpr.scriptLoader.scriptsDir",
                               ParameterValue(in_szDirectories));
    return configuration;
}

/// The first stages of the pipeline, driven by hand: scripts from texts and from a file system in
/// memory ("scripts/NAME.xpr"), a loader, a linker and both dictionaries.
class LinkBench {
public:
    LinkBench(std::initializer_list<MemoryFileSystem::Files::value_type> in_files = {})
        : m_pFiles(new MemoryFileSystem(in_files)),
          m_pFileSystem(m_pFiles),
          m_pLoader(new Math::Xpr::ScriptLoaderVFS(m_pFileSystem)) {
        const ParameterTrie configuration = scriptsIn("scripts");
        m_pLoader->configure(configuration);
        m_Linker.configure(configuration, m_pLoader);
    }

    bool load(const char* in_szName, const std::string& in_strText) {
        std::istringstream stream(in_strText);
        return m_pLoader->run(stream, in_szName, m_Raw);
    }

    bool link() { return m_Linker.run(m_Raw, m_Linked); }

    /// The linked expression of that name, if it is of that kind.
    template <class T>
    Handle<T> linked(const char* in_szName) const {
        return Handle<T>(m_Linked.findExpression(in_szName));
    }

    /// The value of a linked expression as text; "none" if it has none.
    std::string value(const char* in_szName) const {
        const Handle<Math::Xpr::Expression> pExpression(m_Linked.findExpression(in_szName));
        Math::DoubleVector vValue;
        if (pExpression.isNull() || !pExpression->evaluate(vValue)) {
            return "none";
        }
        std::ostringstream text;
        vValue.write(text);
        return text.str();
    }

    void set(const char* in_szName, const Math::DoubleVector& in_vValue) const {
        m_Linked.findVariable(in_szName)->setValue(in_vValue);
    }

    MemoryFileSystem& files() { return *m_pFiles; }

    Math::Xpr::Dictionnary m_Raw{"raw"};
    Math::Xpr::Dictionnary m_Linked{"linked"};
    Math::Xpr::Linker m_Linker;

private:
    MemoryFileSystem* m_pFiles;
    TSHandle<VirtualFileSystem> m_pFileSystem;
    Handle<Math::Xpr::ScriptLoader> m_pLoader;
};

} // namespace Velmora::Testing
