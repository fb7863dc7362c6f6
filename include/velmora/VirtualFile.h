#pragma once

#include <velmora/Object.h>

#include <cstddef>

namespace Velmora {

/// A file that a `VirtualFileSystem` has opened for reading. It is closed when it is destroyed.
class VELMORA_EXPORT VirtualFile : public virtual Object {
public:
    /// Reads up to `in_uiCount` bytes into the buffer. Returns how many it read, 0 at the end,
    /// negative on an error.
    virtual long read(char* out_pBuffer, std::size_t in_uiCount) = 0;

    /// The path by which the file was opened. It lives as long as the file.
    virtual const char* getPath() const = 0;
};

} // namespace Velmora
