#include <velmora/vfsistream.h>

#include <algorithm>

namespace Velmora {

template <class Ch>
VfsStreamBuf<Ch>::~VfsStreamBuf() = default;

template <class Ch>
void VfsStreamBuf<Ch>::attach(const TSHandle<VirtualFile>& in_pFile, std::basic_ios<Ch>& in_ios) {
    m_pFile = in_pFile;
    m_pIos = &in_ios;
}

template <class Ch>
typename std::basic_streambuf<Ch>::int_type VfsStreamBuf<Ch>::underflow() {
    using Traits = typename std::basic_streambuf<Ch>::traits_type;
    if (this->gptr() != this->egptr()) {
        return Traits::to_int_type(*this->gptr());
    }
    if (m_pFile.isNull()) {
        return Traits::eof();
    }
    const auto uiKept =
        std::min(static_cast<std::size_t>(this->gptr() - this->eback()), PutBackSize);
    Ch* const pData = m_buffer.data() + PutBackSize;
    std::copy(this->gptr() - uiKept, this->gptr(), pData - uiKept);

    const long iRead = m_pFile->read(pData, BufferSize);
    this->setg(pData - uiKept, pData, pData + std::max(iRead, 0L));
    if (iRead < 0) {
        m_pIos->setstate(std::ios_base::badbit);
    }
    return iRead > 0 ? Traits::to_int_type(*pData) : Traits::eof();
}

template <class Ch>
basic_vfsistream<Ch>::basic_vfsistream(const TSHandle<VirtualFileSystem>& in_pFileSystem,
                                       const char* in_szPath)
    : std::basic_istream<Ch>(nullptr),
      m_pFileSystem(in_pFileSystem),
      m_pFile(in_pFileSystem.isNull() ? TSHandle<VirtualFile>() : in_pFileSystem->open(in_szPath)) {
    this->rdbuf(&m_buffer);
    m_buffer.attach(m_pFile, *this);
    if (m_pFile.isNull()) {
        this->setstate(std::ios_base::failbit);
    }
}

template <class Ch>
basic_vfsistream<Ch>::~basic_vfsistream() = default;

template class VfsStreamBuf<char>;
template class basic_vfsistream<char>;

} // namespace Velmora
