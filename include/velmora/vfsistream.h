#pragma once

#include <velmora/Export.h>
#include <velmora/VirtualFileSystem.h>

#include <array>
#include <istream>
#include <streambuf>

namespace Velmora {

/// The buffer behind a `basic_vfsistream`: reads a virtual file from its start to its end.
template <class Ch>
class VELMORA_EXPORT VfsStreamBuf : public std::basic_streambuf<Ch> {
public:
    VfsStreamBuf() = default;
    ~VfsStreamBuf() override;

    /// Reads from the file from now on; `in_ios` gets its badbit set when a read fails.
    void attach(const TSHandle<VirtualFile>& in_pFile, std::basic_ios<Ch>& in_ios);

protected:
    /// Reads on in the file when the buffer is used up.
    typename std::basic_streambuf<Ch>::int_type underflow() override;

private:
    static constexpr std::size_t PutBackSize = 8;
    static constexpr std::size_t BufferSize = 4096;

    TSHandle<VirtualFile> m_pFile;
    std::basic_ios<Ch>* m_pIos = nullptr;
    std::array<Ch, PutBackSize + BufferSize> m_buffer;
};

/// An input stream on a file of a `VirtualFileSystem`, which tells both.
///
/// It reads forward only. A file that can't be opened sets failbit, a read that fails badbit.
template <class Ch>
class VELMORA_EXPORT basic_vfsistream : public std::basic_istream<Ch> { // NOLINT
public:
    /// Opens the file. A null file system opens nothing.
    basic_vfsistream(const TSHandle<VirtualFileSystem>& in_pFileSystem, const char* in_szPath);
    ~basic_vfsistream() override;

    /// The open file; null if it couldn't be opened.
    const TSHandle<VirtualFile>& getFile() const noexcept { return m_pFile; }

    /// The file system that the stream was given.
    const TSHandle<VirtualFileSystem>& getFileSystem() const noexcept { return m_pFileSystem; }

private:
    TSHandle<VirtualFileSystem> m_pFileSystem;
    TSHandle<VirtualFile> m_pFile;
    VfsStreamBuf<Ch> m_buffer;
};

using vfsistream = basic_vfsistream<char>;

extern template class VfsStreamBuf<char>;
extern template class basic_vfsistream<char>;

} // namespace Velmora
