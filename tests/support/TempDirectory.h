#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Velmora {

/// A new directory of its own for one test, removed with all its files at the end.
class TempDirectory {
public:
    TempDirectory() {
        std::string strTemplate =
            (std::filesystem::temp_directory_path() / "velmora-test-XXXXXX").string();
        if (::mkdtemp(strTemplate.data()) == nullptr) {
            throw std::runtime_error("can't make a directory like " + strTemplate);
        }
        m_path = strTemplate;
    }

    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    std::string path() const { return m_path.string(); }

    /// The path of a name inside.
    std::string path(const std::string& in_strName) const { return (m_path / in_strName).string(); }

    /// Writes a file inside, with the directories that lead to it, and returns its path.
    std::string write(const std::string& in_strName, const std::string& in_strText) const {
        const std::filesystem::path file = m_path / in_strName;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << in_strText;
        return file.string();
    }

private:
    std::filesystem::path m_path;
};

} // namespace Velmora
