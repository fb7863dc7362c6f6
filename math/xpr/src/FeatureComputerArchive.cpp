// How feature computers are written to archives and read back.

#include <algorithm>
#include <istream>
#include <sstream>

#include <boost/archive/archive_exception.hpp>
#include <boost/archive/basic_text_iprimitive.hpp>
#include <boost/archive/polymorphic_iarchive.hpp>
#include <boost/archive/polymorphic_oarchive.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/void_cast.hpp>

#include <velmora/Exception.h>
#include <velmora/LogSite.h>
#include <velmora/OS.h>
#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>
#include <velmora/vfsistream.h>

namespace Velmora::Math::Xpr {

namespace {

using boost::archive::archive_exception;
using boost::archive::polymorphic_iarchive;
using boost::archive::polymorphic_oarchive;
using boost::serialization::make_nvp;

/// Places reserved ahead of reading, whatever count an archive claims.
constexpr unsigned int MaxReserved = 1024;

/// The way to a text archive's stream, which only derived classes see.
class ArchiveStream : public boost::archive::basic_text_iprimitive<std::istream> {
public:
    static std::istream& of(boost::archive::basic_text_iprimitive<std::istream>& inout_Archive) {
        return static_cast<ArchiveStream&>(inout_Archive).is;
    }
};

/// Does the name lead out of the directory that it is relative to?
bool leadsUpward(const std::string& in_strName) {
    std::istringstream stream(in_strName);
    for (std::string strPart; std::getline(stream, strPart, '/');) {
        if (strPart == "..") {
            return true;
        }
    }
    return false;
}

} // namespace

/// The names of the inputs as an archive holds them: a count, and then each name. An object of its
/// own, so that the archive describes its class.
class InputNames {
public:
    explicit InputNames(std::vector<std::string>& inout_vNames) : m_vNames(inout_vNames) {}

private:
    friend class boost::serialization::access;

    void serialize(polymorphic_oarchive& inout_Archive, unsigned int) {
        const auto uiCount = static_cast<unsigned int>(m_vNames.size());
        inout_Archive << make_nvp("count", uiCount);
        for (const std::string& strName : m_vNames) {
            inout_Archive << make_nvp("item", strName);
        }
    }

    void serialize(polymorphic_iarchive& inout_Archive, unsigned int) {
        m_vNames.clear();
        unsigned int uiCount = 0;
        inout_Archive >> make_nvp("count", uiCount);
        m_vNames.reserve(std::min(uiCount, MaxReserved));
        for (unsigned int uiName = 0; uiName != uiCount; ++uiName) {
            std::string strName;
            inout_Archive >> make_nvp("item", strName);
            m_vNames.push_back(strName);
            inout_Archive.reset_object_address(&m_vNames.back(), &strName);
        }
    }

    std::vector<std::string>& m_vNames;
};

template <class Archive>
void FeatureComputer::transferFields(Archive& inout_Archive) {
    inout_Archive& make_nvp("m_bSharedEvaluator", m_bSharedEvaluator);
    inout_Archive& make_nvp("m_strFeatureName", m_strFeatureName);
    inout_Archive& make_nvp("m_strXprFilename", m_strXprFilename);
}

void FeatureComputer::serialize(polymorphic_oarchive& inout_Archive, unsigned int) {
    transferFields(inout_Archive);
}

void FeatureComputer::serialize(polymorphic_iarchive& inout_Archive, unsigned int) {
    try {
        transferFields(inout_Archive);
        auto* const pArchive =
            dynamic_cast<boost::archive::basic_text_iprimitive<std::istream>*>(&inout_Archive);
        if (pArchive == nullptr) {
            VELMORA_ASSERT_FAIL_L(getLogger(), "pArchive != 0");
        } else if (!setUpFrom(ArchiveStream::of(*pArchive))) {
            throw ExceptionWithMsg("failed to set XPR filename");
        }
    } catch (...) {
        // Whoever catches the exception has no way to destroy what an archive was creating.
        forget();
        throw;
    }
}

bool FeatureComputer::setUpFrom(std::istream& inout_Stream) {
    if (inout_Stream.fail()) {
        // The archive library fills up a text that the end of the archive has cut off.
        throw archive_exception(archive_exception::input_stream_error);
    }
    std::string strFileName(m_strXprFilename);
    if (leadsUpward(strFileName)) {
        VELMORA_LOG_ERROR(getLogger(),
                          "the script name in an archive must not contain \"..\": " << strFileName);
        return false;
    }
    const auto* const pFileStream = dynamic_cast<const vfsistream*>(&inout_Stream);
    if (pFileStream == nullptr) {
        return setXprFilename(strFileName.c_str(), TSHandle<VirtualFileSystem>());
    }
    if (OS::isPathRelative(strFileName) && !pFileStream->getFile().isNull()) {
        std::string strDirectory;
        OS::stripFileName(pFileStream->getFile()->getPath(), strDirectory);
        if (!strDirectory.empty()) {
            strDirectory += '/';
        }
        strFileName.insert(0, strDirectory);
    }
    return setXprFilename(strFileName.c_str(), pFileStream->getFileSystem());
}

template <class Archive>
void FeatureComputerWithInputs::transferFields(Archive& inout_Archive) {
    // The names first: the base object sets the script up as soon as it has been read.
    InputNames names(m_vInputNames);
    inout_Archive& make_nvp("m_vInputNames", names);
    inout_Archive& make_nvp("FeatureComputer", static_cast<FeatureComputer&>(*this));
}

void FeatureComputerWithInputs::serialize(polymorphic_oarchive& inout_Archive, unsigned int) {
    transferFields(inout_Archive);
}

void FeatureComputerWithInputs::serialize(polymorphic_iarchive& inout_Archive, unsigned int) {
    try {
        transferFields(inout_Archive);
    } catch (...) {
        forget();
        std::vector<std::string>().swap(m_vInputNames);
        m_bSetUp = false;
        throw;
    }
}

namespace {

/// The bases of the math library are abstract and bear no key, so the archive library is told by
/// hand how to get from one to the other.
const bool s_bCastsAreRegistered = [] {
    using boost::serialization::void_cast_register;
    void_cast_register<FeatureComputer, Velmora::Math::FeatureComputer>();
    void_cast_register<FeatureComputerWithInputs, Velmora::Math::FeatureComputerWithInputs>();
    void_cast_register<FeatureComputerWithInputs, Velmora::Math::FeatureComputer>();
    void_cast_register<FeatureComputerWithInputs, FeatureComputer>();
    return true;
}();

} // namespace

} // namespace Velmora::Math::Xpr

BOOST_CLASS_EXPORT_IMPLEMENT(Velmora::Math::Xpr::FeatureComputer)
BOOST_CLASS_EXPORT_IMPLEMENT(Velmora::Math::Xpr::FeatureComputerWithInputs)
