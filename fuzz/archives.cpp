// Archives of feature computers, of text or of XML, read through a pointer to the base class: the
// result is a computer or an exception, and nothing is left behind.
//
// The input is the archive, and is read as XML if it starts as XML does. The archive library itself
// trusts one number, which is checked for it here as a host has to that reads archives of others.

#include <exception>
#include <memory>
#include <new>
#include <sstream>
#include <string>

#include <sanitizer/asan_interface.h>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_text_iarchive.hpp>
#include <boost/archive/polymorphic_xml_iarchive.hpp>
#include <boost/serialization/nvp.hpp>

#include <velmora/math/xpr/Evaluator.h>
#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/vfsistream.h>

#include "fuzz/support/ScriptHost.h"
#include "fuzz/support/Target.h"
#include "tests/support/MemoryFileSystem.h"

using namespace Velmora;
using namespace Velmora::Math;

namespace {

using boost::archive::archive_exception;
using Archive = boost::archive::polymorphic_iarchive;

constexpr const char* ArchivePath = "data/archive";

/// Whether the object that the archive's pointer points at has been read whole.
class PointerProgress {
public:
    bool isReadWhole() const { return m_bReadWhole; }

protected:
    bool m_bReadWhole = false;
};

/// An archive whose first pointer is null or of the first class that it describes.
///
/// The archive library takes the number of a pointer's class for an index into the classes that it
/// knows, and doesn't look whether there are as many.
template <class Polymorphic, class Implementation>
class CheckedArchive : public Polymorphic, public PointerProgress {
public:
    using Polymorphic::Polymorphic;

private:
    using Serializer = boost::archive::detail::basic_pointer_iserializer;

    void vload(boost::archive::class_id_type& out_Class) override {
        static_cast<Implementation&>(*this) >> out_Class;
        constexpr int NullPointer = -1;
        if (out_Class != boost::archive::class_id_type(0) &&
            out_Class != boost::archive::class_id_type(NullPointer)) {
            throw archive_exception(archive_exception::unregistered_class);
        }
    }

    const Serializer* load_pointer(
        void*& out_pObject, const Serializer* in_pSerializer,
        const Serializer* (*in_find)(const boost::serialization::extended_type_info&)) override {
        const Serializer* const pUsed =
            Implementation::load_pointer(out_pObject, in_pSerializer, in_find);
        m_bReadWhole = true;
        return pUsed;
    }
};

using TextArchive =
    CheckedArchive<boost::archive::polymorphic_text_iarchive, boost::archive::text_iarchive>;
using XmlArchive =
    CheckedArchive<boost::archive::polymorphic_xml_iarchive, boost::archive::xml_iarchive>;

std::unique_ptr<Archive> open(const std::string& in_strArchive, std::istream& inout_Stream) {
    if (!in_strArchive.empty() && in_strArchive.front() == '<') {
        return std::make_unique<XmlArchive>(inout_Stream);
    }
    return std::make_unique<TextArchive>(inout_Stream);
}

/// Ends a stream as an archive of XML ends.
///
/// Such an archive reads its closing tag when it is destroyed, and ends the process if it isn't
/// there: another thing that a host has to see to.
class ClosingTag {
public:
    explicit ClosingTag(std::istream& inout_Stream)
        : m_Stream(inout_Stream), m_pBuffer(inout_Stream.rdbuf()) {}
    ~ClosingTag() { m_Stream.rdbuf(m_pBuffer); }
    ClosingTag(const ClosingTag&) = delete;
    ClosingTag& operator=(const ClosingTag&) = delete;

    void put() { m_Stream.rdbuf(&m_Tag); } // which clears the stream's state, too

private:
    std::istream& m_Stream;
    std::streambuf* m_pBuffer;
    std::stringbuf m_Tag{"</boost_serialization>", std::ios::in};
};

/// Releases what the archive library hasn't destroyed: an object that it abandoned while making it,
/// or one that was read whole and that the archive says isn't tracked. The first must hold nothing
/// by then, so that its memory is all that there is to release; its address stands in the pointer
/// as it is, not converted to the base class.
void release(FeatureComputer* in_pComputer, bool in_bReadWhole) {
    if (in_pComputer == nullptr || __asan_address_is_poisoned(in_pComputer) != 0) {
        return;
    }
    if (in_bReadWhole) {
        delete in_pComputer;
    } else {
        ::operator delete(static_cast<void*>(in_pComputer));
    }
}

/// Null if the archive can't be read.
std::unique_ptr<FeatureComputer> read(const std::string& in_strArchive,
                                      std::istream& inout_Stream) {
    FeatureComputer* pComputer = nullptr;
    ClosingTag closingTag(inout_Stream);
    std::unique_ptr<Archive> pArchive;
    try {
        pArchive = open(in_strArchive, inout_Stream);
        *pArchive >> boost::serialization::make_nvp("computer", pComputer);
        closingTag.put();
        return std::unique_ptr<FeatureComputer>(pComputer);
    } catch (const std::exception&) {
        if (pArchive) {
            pArchive->delete_created_pointers();
            release(pComputer, dynamic_cast<PointerProgress&>(*pArchive).isReadWhole());
        }
        closingTag.put();
        return nullptr;
    }
}

void use(FeatureComputer& inout_Computer, const TSHandle<VirtualFileSystem>& in_pFileSystem) {
    Xpr::Evaluator evaluator;
    if (auto* const pXpr = dynamic_cast<Xpr::FeatureComputer*>(&inout_Computer)) {
        Fuzz::configure(evaluator, in_pFileSystem);
        if (pXpr->setEvaluator(LimitedObjPtr<Xpr::Evaluator>(&evaluator)) && evaluator.link(true)) {
            evaluator.reconfigureExpressions();
        }
    }
    DoubleVector vFeature;
    const DoubleVector vInput{1.0, 2.0, 3.0};
    for (int iFrame = 0; iFrame != 3; ++iFrame) {
        if (auto* const pInputs = dynamic_cast<FeatureComputerWithInputs*>(&inout_Computer)) {
            pInputs->setInput("left", vInput);
            pInputs->setInput("right", vInput);
        }
        inout_Computer.computeFeatures(vFeature);
        inout_Computer.reset();
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* in_pData, std::size_t in_uiSize) {
    const std::string strArchive(in_pData, in_pData + in_uiSize);
    auto* const pFiles = new Testing::MemoryFileSystem({{ArchivePath, strArchive},
                                                        {"./voice.xpr", "level = 3 + 4\n"},
                                                        {"./data/voice.xpr", "level = 8\n"},
                                                        {"./data/pair.xpr", "sum = left + right\n"},
                                                        {"scripts/voice.xpr", "level = 12\n"}});
    const TSHandle<VirtualFileSystem> pFileSystem(pFiles);
    {
        vfsistream stream(pFileSystem, ArchivePath);
        if (const auto pComputer = read(strArchive, stream)) {
            use(*pComputer, pFileSystem);
        }
    }
    std::istringstream stream(strArchive);
    read(strArchive, stream);
    return 0;
}
