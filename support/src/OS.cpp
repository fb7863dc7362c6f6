#include <velmora/OS.h>

namespace Velmora {

bool OS::stripFileName(const char* in_szPath, std::string& out_strDirectory) {
    if (in_szPath == nullptr) {
        return false;
    }
    const std::string strPath(in_szPath);
    const std::size_t uiSlash = strPath.rfind('/');
    if (uiSlash == std::string::npos) {
        out_strDirectory = ".";
        return true;
    }
    const std::size_t uiLast = strPath.find_last_not_of('/', uiSlash);
    out_strDirectory = uiLast == std::string::npos ? "/" : strPath.substr(0, uiLast + 1);
    return true;
}

bool OS::stripPathAndExtension(const char* in_szPath, std::string& out_strStem) {
    if (in_szPath == nullptr) {
        return false;
    }
    const std::string strPath(in_szPath);
    const std::size_t uiSlash = strPath.rfind('/');
    const std::string strName =
        uiSlash == std::string::npos ? strPath : strPath.substr(uiSlash + 1);
    if (strName.empty()) {
        return false;
    }
    const std::size_t uiPoint = strName.rfind('.');
    out_strStem =
        uiPoint == std::string::npos || uiPoint == 0 ? strName : strName.substr(0, uiPoint);
    return true;
}

bool OS::isPathRelative(const char* in_szPath) {
    return in_szPath != nullptr && *in_szPath != '/';
}

bool OS::isPathRelative(const std::string& in_strPath) {
    return isPathRelative(in_strPath.c_str());
}

} // namespace Velmora
