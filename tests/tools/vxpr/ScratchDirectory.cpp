#include "ScratchDirectory.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <unistd.h>

namespace Vxpr::TestSupport {

ScratchDirectory::ScratchDirectory()
    : m_strPath((std::filesystem::temp_directory_path() / "vxpr-test-XXXXXX").string()) {
    if (mkdtemp(m_strPath.data()) == nullptr) {
        throw std::runtime_error("can't make a scratch directory");
    }
}

ScratchDirectory::~ScratchDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(m_strPath, ignored);
}

std::string ScratchDirectory::write(const std::string& in_strName,
                                    const std::string& in_strText) const {
    const std::string strPath = getPath(in_strName);
    std::filesystem::create_directories(std::filesystem::path(strPath).parent_path());
    std::ofstream(strPath, std::ios::binary) << in_strText;
    return strPath;
}

std::vector<std::string> ScratchDirectory::list() const {
    std::vector<std::string> vNames;
    for (const auto& entry : std::filesystem::directory_iterator(m_strPath)) {
        vNames.push_back(entry.path().filename().string());
    }
    std::sort(vNames.begin(), vNames.end());
    return vNames;
}

Unprivileged::Unprivileged() : m_bSuperuser(geteuid() == 0) {
    constexpr uid_t NOBODY = 65534;
    if (m_bSuperuser && seteuid(NOBODY) != 0) {
        throw std::runtime_error("can't act as nobody");
    }
}

Unprivileged::~Unprivileged() {
    if (m_bSuperuser && seteuid(0) != 0) {
        std::abort();
    }
}

std::string readFile(const std::string& in_strPath) {
    std::ifstream file(in_strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace Vxpr::TestSupport
