#pragma once

#include "ScriptLibrary.h"

#include <velmora/DiskFileSystem.h>
#include <velmora/VirtualFileSystem.h>

namespace Vxpr {

/// The disk as the engine sees it; it tells the library of scripts what the engine has opened.
class SearchFileSystem : public Velmora::VirtualFileSystem {
public:
    /// inout_Library must outlive the file system.
    explicit SearchFileSystem(ScriptLibrary& inout_Library) : m_Library(inout_Library) {}

    Velmora::TSHandle<Velmora::VirtualFile> open(const char* in_szPath) override;

private:
    ScriptLibrary& m_Library;
    Velmora::DiskFileSystem m_Disk;
};

} // namespace Vxpr
