#include "SearchFileSystem.h"

#include <sys/stat.h>

namespace Vxpr {

Velmora::TSHandle<Velmora::VirtualFile> SearchFileSystem::open(const char* in_szPath) {
    Velmora::TSHandle<Velmora::VirtualFile> pFile = m_Disk.open(in_szPath);
    if (!pFile.isNull()) {
        m_Library.addFile(in_szPath);
    } else if (struct stat status{}; lstat(in_szPath, &status) == 0) {
        m_Library.addUnusable(in_szPath);
    }
    return pFile;
}

} // namespace Vxpr
