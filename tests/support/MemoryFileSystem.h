#pragma once

#include <velmora/VirtualFileSystem.h>

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Velmora::Testing {

/// A file system of texts, and the record of what was done with it.
class MemoryFileSystem : public VirtualFileSystem {
public:
    /// Path to text.
    using Files = std::map<std::string, std::string>;

    explicit MemoryFileSystem(Files in_mapFiles);

    TSHandle<VirtualFile> open(const char* in_szPath) override;

    /// Adds a file, or replaces the text that later openings give.
    void setFile(const std::string& in_strPath, const std::string& in_strText);

    /// The paths that were asked for, in order, found or not.
    const std::vector<std::string>& getAskedPaths() const { return m_pRecord->m_vAskedPaths; }

    /// The largest number of bytes that one read asked for.
    std::size_t getLargestRead() const { return m_pRecord->m_uiLargestRead; }

    /// How many files are open now.
    std::size_t getOpenFiles() const { return m_pRecord->m_uiOpenFiles; }

private:
    class File;

    struct Record {
        std::vector<std::string> m_vAskedPaths;
        std::size_t m_uiLargestRead = 0;
        std::size_t m_uiOpenFiles = 0;
    };

    Files m_mapFiles;
    /// Shared with the files, which may outlive the file system.
    std::shared_ptr<Record> m_pRecord;
};

} // namespace Velmora::Testing
