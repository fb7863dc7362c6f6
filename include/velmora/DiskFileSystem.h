#pragma once

#include <velmora/VirtualFileSystem.h>

namespace Velmora {

/// The files of the machine. Relative paths start at the process's working directory. Thread-safe.
class VELMORA_EXPORT DiskFileSystem : public VirtualFileSystem {
public:
    DiskFileSystem();
    ~DiskFileSystem() override;

    /// Opens regular files only: a directory, a pipe or a device gives null, and so does a path
    /// whose links lead in a circle. Never waits for another process.
    TSHandle<VirtualFile> open(const char* in_szPath) override;
};

} // namespace Velmora
