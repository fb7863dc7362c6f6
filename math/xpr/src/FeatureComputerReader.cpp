#include <velmora/math/xpr/FeatureComputerReader.h>

#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <velmora/LogSite.h>

namespace Velmora::Math::Xpr {

namespace {

using boost::archive::archive_exception;
using Serializer = boost::archive::detail::basic_pointer_iserializer;
using Finder = const Serializer* (*)(const boost::serialization::extended_type_info&);

constexpr const char* ClosingTag = "</boost_serialization>";

/// The class of the object that an archive on this thread is making. The archive library asks for
/// it through a plain function.
class Search {
public:
    explicit Search(Finder in_find) : m_find(in_find), m_pOuter(t_pSearch) { t_pSearch = this; }
    ~Search() { t_pSearch = m_pOuter; }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    const Serializer* getFound() const { return m_pFound; }

    static const Serializer* find(const boost::serialization::extended_type_info& in_Type) {
        return t_pSearch->m_pFound = t_pSearch->m_find(in_Type);
    }

private:
    static thread_local Search* t_pSearch;

    Finder m_find;
    const Serializer* m_pFound = nullptr;
    /// A computer of the host's may read another archive while it is read.
    Search* m_pOuter;
};

thread_local Search* Search::t_pSearch = nullptr;

[[noreturn]] void refuse(archive_exception::exception_code in_eCode) {
    throw archive_exception(in_eCode);
}

/// An archive of one pointer, which is null or of the first class that the archive describes.
template <class Polymorphic, class Implementation>
class CheckedArchive : public Polymorphic {
public:
    using Polymorphic::Polymorphic;

    /// Destroys the object, for a caller that can't use it. The pointer that was read may not be
    /// one to it: it is converted only behind all that can fail.
    void release() {
        if (m_bMade && m_pObject != nullptr && m_pSerializer != nullptr) {
            m_pSerializer->get_basic_serializer().destroy(m_pObject);
        }
        m_pObject = nullptr;
    }

protected:
    // The number of a pointer's class is used as an index, whether or not there are as many.
    void vload(boost::archive::class_id_type& out_Class) override {
        static_cast<Implementation&>(*this) >> out_Class;
        const boost::archive::class_id_type first(0);
        const boost::archive::class_id_type nullPointer(-1);
        if (!(out_Class == first || out_Class == nullPointer)) {
            refuse(archive_exception::unregistered_class);
        }
    }

private:
    const Serializer* load_pointer(void*& out_pObject, const Serializer* in_pSerializer,
                                   Finder in_find) override {
        const Search search(in_find);
        try {
            const Serializer* const pUsed =
                Implementation::load_pointer(out_pObject, in_pSerializer, Search::find);
            m_pObject = out_pObject;
            m_pSerializer = search.getFound();
            return pUsed;
        } catch (...) {
            m_pObject = out_pObject;
            m_pSerializer = search.getFound();
            release();
            throw;
        }
    }

    // Whether the object has been made: its constructor can fail as well.
    void load_object(void* inout_pObject,
                     const boost::archive::detail::basic_iserializer& in_Serializer) override {
        m_bMade = true;
        Implementation::load_object(inout_pObject, in_Serializer);
    }

    void* m_pObject = nullptr;
    const Serializer* m_pSerializer = nullptr;
    bool m_bMade = false;
};

/// A text archive tells the length of each text, and room is made for as much as it claims. So all
/// texts are read here, those of the header and of classes as well.
class TextArchive : public CheckedArchive<boost::archive::polymorphic_text_iarchive,
                                          boost::archive::text_iarchive> {
public:
    explicit TextArchive(std::istream& inout_Stream)
        : CheckedArchive(inout_Stream, boost::archive::no_header) {
        if (readText() != boost::archive::BOOST_ARCHIVE_SIGNATURE()) {
            refuse(archive_exception::invalid_signature);
        }
        unsigned int uiVersion = 0;
        if (!(is >> uiVersion) || uiVersion > std::numeric_limits<std::uint16_t>::max()) {
            refuse(archive_exception::unsupported_version);
        }
        const boost::serialization::library_version_type version(uiVersion);
        if (boost::archive::BOOST_ARCHIVE_VERSION() < version) {
            refuse(archive_exception::unsupported_version);
        }
        boost::archive::text_iarchive::set_library_version(version);
    }

private:
    using CheckedArchive::vload;

    void vload(boost::archive::class_name_type& out_Name) override {
        const std::string strName = readText();
        if (strName.size() >= BOOST_SERIALIZATION_MAX_KEY_SIZE) {
            refuse(archive_exception::invalid_class_name);
        }
        strName.copy(out_Name, strName.size());
        out_Name.t[strName.size()] = '\0';
    }

    void load(std::string& out_strText) override { out_strText = readText(); }

    std::string readText() {
        std::size_t uiSize = 0;
        if (!(is >> uiSize) || uiSize > FeatureComputerReader::MaxText) {
            refuse(archive_exception::input_stream_error);
        }
        is.get();
        std::string strText(uiSize, '\0');
        if (!is.read(strText.data(), static_cast<std::streamsize>(uiSize))) {
            refuse(archive_exception::input_stream_error);
        }
        return strText;
    }
};

using XmlArchive =
    CheckedArchive<boost::archive::polymorphic_xml_iarchive, boost::archive::xml_iarchive>;

/// Gives an archive the closing tag that it reads when it is destroyed, whatever the stream has.
class GivenClosingTag {
public:
    explicit GivenClosingTag(std::istream& inout_Stream)
        : m_Stream(inout_Stream),
          m_pBuffer(inout_Stream.rdbuf()),
          m_Locale(inout_Stream.rdbuf()->getloc()) {}
    ~GivenClosingTag() { m_Stream.rdbuf(m_pBuffer); }
    GivenClosingTag(const GivenClosingTag&) = delete;
    GivenClosingTag& operator=(const GivenClosingTag&) = delete;

    /// From now on; the state of the stream is good again.
    void give() {
        // The archive takes its locale, which dies with it, back from the buffer that it finds.
        m_pBuffer->pubimbue(m_Locale);
        m_Stream.rdbuf(&m_Tag);
    }

private:
    std::istream& m_Stream;
    std::streambuf* m_pBuffer;
    std::locale m_Locale;
    std::stringbuf m_Tag{ClosingTag, std::ios::in};
};

/// Calls `give` at the end of a scope, ahead of what was made before.
class GiveAtEnd {
public:
    explicit GiveAtEnd(GivenClosingTag& inout_Tag) : m_Tag(inout_Tag) {}
    ~GiveAtEnd() { m_Tag.give(); }
    GiveAtEnd(const GiveAtEnd&) = delete;
    GiveAtEnd& operator=(const GiveAtEnd&) = delete;

private:
    GivenClosingTag& m_Tag;
};

template <class Archive>
std::unique_ptr<Math::FeatureComputer> readPointer(Archive& inout_Archive, const char* in_szName) {
    Math::FeatureComputer* pComputer = nullptr;
    try {
        inout_Archive >> boost::serialization::make_nvp(in_szName, pComputer);
    } catch (...) {
        inout_Archive.release();
        throw;
    }
    return std::unique_ptr<Math::FeatureComputer>(pComputer);
}

std::unique_ptr<Math::FeatureComputer> readXml(std::istream& inout_Stream, const char* in_szName) {
    GivenClosingTag tag(inout_Stream);
    XmlArchive archive(inout_Stream);
    const GiveAtEnd giveAtEnd(tag);
    auto pComputer = readPointer(archive, in_szName);
    std::string strEnd;
    inout_Stream >> std::ws >> std::setw(static_cast<int>(std::strlen(ClosingTag))) >> strEnd;
    if (strEnd != ClosingTag) {
        refuse(archive_exception::input_stream_error);
    }
    return pComputer;
}

} // namespace

std::unique_ptr<Math::FeatureComputer> FeatureComputerReader::read(std::istream& inout_Stream,
                                                                   const char* in_szName) {
    if (in_szName == nullptr || inout_Stream.rdbuf() == nullptr) {
        VELMORA_ASSERT_FAIL("in_szName != nullptr && inout_Stream.rdbuf() != nullptr");
        return nullptr;
    }
    if ((inout_Stream >> std::ws).peek() == '<') {
        return readXml(inout_Stream, in_szName);
    }
    TextArchive archive(inout_Stream);
    return readPointer(archive, in_szName);
}

} // namespace Velmora::Math::Xpr
