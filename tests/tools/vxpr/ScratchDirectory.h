#pragma once

#include <string>
#include <vector>

namespace Vxpr::TestSupport {

/// A directory of a test's own in the system's place for temporary files; it goes with the object.
class ScratchDirectory {
public:
    ScratchDirectory();
    ~ScratchDirectory();
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::string& getPath() const { return m_strPath; }

    /// The path of a file in the directory.
    std::string getPath(const std::string& in_strName) const {
        return m_strPath + "/" + in_strName;
    }

    /// Writes a file and returns its path.
    std::string write(const std::string& in_strName, const std::string& in_strText) const;

    /// The names of what is in the directory, sorted.
    std::vector<std::string> list() const;

private:
    std::string m_strPath;
};

/// While it lives, nothing is allowed that is forbidden by the permissions of files: the superuser,
/// to whom nothing is forbidden, acts as nobody.
class Unprivileged {
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;

private:
    bool m_bSuperuser;
};

/// The contents of a file; empty if it can't be read.
std::string readFile(const std::string& in_strPath);

} // namespace Vxpr::TestSupport
