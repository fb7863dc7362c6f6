#pragma once

#include <cstddef>
#include <map>
#include <string>

#include <velmora/TSHandle.h>
#include <velmora/VirtualFileSystem.h>

namespace Velmora::Testing {

/// Scripts from texts, by path. Remembers nothing, so that it takes no memory however often it is
/// asked.
class ScriptFiles : public VirtualFileSystem {
public:
    /// The map lives longer.
    explicit ScriptFiles(const std::map<std::string, std::string>& in_mapTexts)
        : m_mapTexts(in_mapTexts) {}

    TSHandle<VirtualFile> open(const char* in_szPath) override {
        const auto ite = m_mapTexts.find(in_szPath);
        return ite == m_mapTexts.end() ? TSHandle<VirtualFile>()
                                       : TSHandle<VirtualFile>(new File(ite->second));
    }

private:
    class File : public VirtualFile {
    public:
        explicit File(const std::string& in_strText) : m_strText(in_strText) {}

        long read(char* out_pBuffer, std::size_t in_uiCount) override {
            const std::size_t uiCount = m_strText.copy(out_pBuffer, in_uiCount, m_uiPosition);
            m_uiPosition += uiCount;
            return static_cast<long>(uiCount);
        }
        const char* getPath() const override { return "script"; }

    private:
        const std::string& m_strText;
        std::size_t m_uiPosition = 0;
    };

    const std::map<std::string, std::string>& m_mapTexts;
};

} // namespace Velmora::Testing
