#pragma once

#include <velmora/Object.h>
#include <velmora/TSHandle.h>
#include <velmora/VirtualFile.h>

namespace Velmora {

/// Where scripts and archives are read from. A host implements it to read from elsewhere than the
/// disk.
class VELMORA_EXPORT VirtualFileSystem : public virtual Object {
public:
    /// Opens a file for reading; null if it can't be opened. What it opens is never a directory.
    virtual TSHandle<VirtualFile> open(const char* in_szPath) = 0;
};

} // namespace Velmora
