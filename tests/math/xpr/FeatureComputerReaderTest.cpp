#include <velmora/math/xpr/FeatureComputerReader.h>

#include <locale>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

#include <boost/archive/archive_exception.hpp>
#include <boost/serialization/access.hpp>
#include <boost/serialization/export.hpp>

#include <gmock/gmock.h>

#include <velmora/Exception.h>
#include <velmora/math/FeatureComputerWithInputs.h>

#include "math/xpr/ComputerArchives.h"

namespace Velmora::Testing {

/// A class of the host's that archives know and that is no computer.
class Stranger {
public:
    Stranger() { ++s_iLive; }
    virtual ~Stranger() { --s_iLive; }
    Stranger(const Stranger&) = delete;
    Stranger& operator=(const Stranger&) = delete;

    inline static int s_iLive = 0;

private:
    friend class boost::serialization::access;

    template <class Archive>
    void serialize(Archive&, unsigned int) {}
};

} // namespace Velmora::Testing

BOOST_CLASS_EXPORT_GUID(Velmora::Testing::Stranger, "Stranger")

namespace Velmora::Math::Xpr {

namespace {

using ::testing::HasSubstr;

class FeatureComputerReaderTest : public Testing::ComputerArchiveBench {
protected:
    bool isXml() const { return GetParam().m_strName == "xml"; }

    std::unique_ptr<Math::FeatureComputer> read(const std::string& in_strArchive) {
        m_pFiles->setFile("data/archive", in_strArchive);
        vfsistream stream(m_pFileSystem, "data/archive");
        return FeatureComputerReader::read(stream, "computer");
    }

    /// What reading the archive throws, as text; nothing if it is read. Whatever happens, nothing
    /// is left behind, and the host goes on.
    std::optional<std::string> refusal(const std::string& in_strArchive) {
        const auto mapBefore = liveBlocks();
        const int iHandles = m_pFileSystem.getReferenceCount();
        std::optional<std::string> refusal;
        try {
            read(in_strArchive);
        } catch (const std::exception& exception) {
            refusal = exception.what();
        }
        EXPECT_EQ(liveBlocks(), mapBefore);
        EXPECT_EQ(m_pFileSystem.getReferenceCount(), iHandles);
        EXPECT_EQ(m_pFiles->getOpenFiles(), 0u);
        return refusal;
    }

    static std::string replaced(std::string in_strText, const std::string& in_strOld,
                                const std::string& in_strNew) {
        const std::size_t uiFound = in_strText.find(in_strOld);
        EXPECT_NE(uiFound, std::string::npos) << in_strOld;
        return uiFound == std::string::npos
                   ? in_strText
                   : in_strText.replace(uiFound, in_strOld.size(), in_strNew);
    }

    /// Everything up to there is needed.
    std::size_t sizeOfNeeded(const std::string& in_strArchive) const {
        return in_strArchive.find_last_not_of('\n') + 1;
    }
};

INSTANTIATE_TEST_SUITE_P(Format, FeatureComputerReaderTest, Testing::everyArchiveFormat(),
                         Testing::nameOfFormat);

TEST_P(FeatureComputerReaderTest, ReadsWhatWasWritten) {
    EXPECT_EQ(compute(*read(saveOwn())), "[8]");
    std::istringstream stream(saveWithInputs());
    // A relative script name is relative to the archive in a file system only.
    EXPECT_THROW(FeatureComputerReader::read(stream, "computer"), ExceptionWithMsg);

    const auto pComputer = read(saveWithInputs());
    auto& computer = dynamic_cast<Math::FeatureComputerWithInputs&>(*pComputer);
    const DoubleVector vInput{2.0};
    EXPECT_TRUE(computer.setInput("left", vInput));
    EXPECT_TRUE(computer.setInput("right", vInput));
    EXPECT_EQ(compute(computer), "[5]");
}

TEST_P(FeatureComputerReaderTest, TheStreamIsTheHostsOwnAfterwards) {
    m_pFiles->setFile("data/archive", saveOwn());
    vfsistream stream(m_pFileSystem, "data/archive");
    const auto* const pBuffer = static_cast<std::istream&>(stream).rdbuf();
    const std::locale locale = stream.getloc();
    FeatureComputerReader::read(stream, "computer");
    EXPECT_EQ(static_cast<std::istream&>(stream).rdbuf(), pBuffer);
    EXPECT_EQ(static_cast<std::istream&>(stream).rdbuf()->getloc(), locale);
    EXPECT_EQ(stream.getloc(), locale);
}

TEST_P(FeatureComputerReaderTest, ANullPointerIsNull) {
    std::ostringstream written;
    {
        const Math::FeatureComputer* const pNone = nullptr;
        *GetParam().m_write(written) << boost::serialization::make_nvp("computer", pNone);
    }
    EXPECT_EQ(read(written.str()), nullptr);
}

TEST_P(FeatureComputerReaderTest, AnArchiveThatIsCutOffAnywhereIsAnException) {
    const std::string strArchive = saveWithInputs();
    for (std::size_t uiSize = 0; uiSize != sizeOfNeeded(strArchive); ++uiSize) {
        SCOPED_TRACE(uiSize);
        ASSERT_TRUE(refusal(strArchive.substr(0, uiSize)));
    }
    EXPECT_EQ(refusal(strArchive.substr(0, sizeOfNeeded(strArchive))), std::nullopt);
}

TEST_P(FeatureComputerReaderTest, AGarbledArchiveIsAnExceptionOrAnotherComputer) {
    const std::string strArchive = saveWithInputs();
    std::size_t uiRefused = 0;
    for (std::size_t uiByte = 0; uiByte != sizeOfNeeded(strArchive); ++uiByte) {
        for (const char cWrong : {'\0', ' ', '1', '9', '-', '<', 'x', '\xff'}) {
            SCOPED_TRACE(std::to_string(uiByte) + ": " + std::to_string(cWrong));
            std::string strGarbled = strArchive;
            strGarbled[uiByte] = cWrong;
            uiRefused += refusal(strGarbled) ? 1 : 0;
        }
    }
    EXPECT_GT(uiRefused, 4 * sizeOfNeeded(strArchive));
    EXPECT_EQ(compute(*read(saveOwn())), "[8]");
}

TEST_P(FeatureComputerReaderTest, AClassThatIsntDescribedIsAnException) {
    const std::string strArchive = saveOwn();
    for (const char* szNumber : {"1", "2", "77", "30000", "-2"}) {
        SCOPED_TRACE(szNumber);
        const auto strRefusal =
            isXml() ? refusal(replaced(strArchive, "class_id=\"0\"",
                                       "class_id=\"" + std::string(szNumber) + "\""))
                    : refusal(replaced(strArchive, " 0 18 XprFeatureComputer",
                                       " " + std::string(szNumber) + " 18 XprFeatureComputer"));
        ASSERT_TRUE(strRefusal);
        EXPECT_THAT(*strRefusal, HasSubstr("unregistered class"));
    }
}

TEST_P(FeatureComputerReaderTest, AClassThatIsNoComputerIsAnExceptionAndItsObjectIsDestroyed) {
    const std::string strArchive =
        isXml() ? replaced(saveOwn(), "\"XprFeatureComputer\"", "\"Stranger\"")
                : replaced(saveOwn(), "18 XprFeatureComputer", "8 Stranger");
    EXPECT_TRUE(refusal(strArchive));
    EXPECT_EQ(Testing::Stranger::s_iLive, 0);
}

TEST_P(FeatureComputerReaderTest, AMissingScriptIsAnExceptionAndItsNameIsLogged) {
    EXPECT_EQ(refusal(replaced(saveOwn(), "voice", "verse")), "failed to set XPR filename");
    EXPECT_TRUE(m_Log.contains(log4cplus::ERROR_LOG_LEVEL, "can't load script: data/verse"));
}

class FeatureComputerTextReaderTest : public FeatureComputerReaderTest {};

INSTANTIATE_TEST_SUITE_P(Format, FeatureComputerTextReaderTest,
                         ::testing::Values(Testing::textFormat()), Testing::nameOfFormat);

TEST_P(FeatureComputerTextReaderTest, ATextBeyondTheLimitIsAnExceptionBeforeItTakesRoom) {
    const std::string strArchive = saveOwn();
    for (const std::string strText :
         {"22 serialization::archive", "18 XprFeatureComputer", "5 level", "5 voice"}) {
        for (const char* szLength : {"65537", "4294967295", "18446744073709551615", "-1", "x"}) {
            SCOPED_TRACE(strText + ": " + szLength);
            const std::string strClaim = szLength + strText.substr(strText.find(' '));
            const auto strRefusal = refusal(replaced(strArchive, strText, strClaim));
            ASSERT_TRUE(strRefusal);
            EXPECT_THAT(*strRefusal, HasSubstr("input stream error"));
        }
    }
}

TEST_P(FeatureComputerTextReaderTest, AHeaderOfSomethingElseIsAnException) {
    const auto strSignature = refusal(replaced(saveOwn(), "serialization", "xerialization"));
    ASSERT_TRUE(strSignature);
    EXPECT_THAT(*strSignature, HasSubstr("invalid signature"));
    const auto strVersion = refusal(replaced(saveOwn(), "archive ", "archive 9"));
    ASSERT_TRUE(strVersion);
    EXPECT_THAT(*strVersion, HasSubstr("unsupported version"));
}

TEST_P(FeatureComputerReaderTest, NothingIsReadWithoutANameOrABuffer) {
    std::istringstream stream(saveOwn());
    EXPECT_EQ(FeatureComputerReader::read(stream, nullptr), nullptr);
    std::istream empty(nullptr);
    EXPECT_EQ(FeatureComputerReader::read(empty, "computer"), nullptr);
    EXPECT_EQ(m_Assertions.count("in_szName != nullptr && inout_Stream.rdbuf() != nullptr"), 2u);
}

} // namespace

} // namespace Velmora::Math::Xpr
