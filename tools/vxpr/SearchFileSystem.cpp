#include "SearchFileSystem.h"

namespace Vxpr {

Velmora::TSHandle<Velmora::VirtualFile> SearchFileSystem::open(const char* in_szPath) {
    Velmora::TSHandle<Velmora::VirtualFile> pFile = m_Disk.open(in_szPath);
    if (!pFile.isNull()) {
        m_Library.addFile(in_szPath);
    }
    return pFile;
}

} // namespace Vxpr
