#include <velmora/math/xpr/FeatureComputer.h>
#include <velmora/math/xpr/FeatureComputerWithInputs.h>

#include <memory>
#include <optional>

#include <boost/archive/archive_exception.hpp>

#include <gmock/gmock.h>

#include <velmora/Exception.h>

#include "math/xpr/ComputerArchives.h"

namespace Velmora::Math::Xpr {

namespace {

using boost::archive::archive_exception;
using boost::serialization::make_nvp;
using log4cplus::ERROR_LOG_LEVEL;
using ::testing::HasSubstr;
using Testing::saveComputer;

std::string replaced(std::string in_strText, const std::string& in_strOld,
                     const std::string& in_strNew) {
    const std::size_t uiFound = in_strText.find(in_strOld);
    EXPECT_NE(uiFound, std::string::npos) << in_strOld;
    return uiFound == std::string::npos ? in_strText
                                        : in_strText.replace(uiFound, in_strOld.size(), in_strNew);
}

class FeatureComputerDamagedArchiveTest : public Testing::ComputerArchiveBench {
protected:
    bool isXml() const { return GetParam().m_strName == "xml"; }

    /// An archive of a computer with an evaluator of its own and any script name.
    std::string withScript(const std::string& in_strName) {
        const std::string strSize = std::to_string(in_strName.size());
        return isXml() ? replaced(saveOwn(), ">voice<", ">" + in_strName + "<")
                       : replaced(saveOwn(), "5 voice", strSize + " " + in_strName);
    }

    /// The size of an archive up to the end of what is read as values. Behind it a text archive has
    /// the end of the line, and one of XML a closing tag without which the archive library itself
    /// ends the process.
    std::size_t sizeOfValues(const std::string& in_strArchive) const {
        const std::string strEnd = isXml() ? "</computer>" : "\n";
        return in_strArchive.rfind(strEnd) + (isXml() ? strEnd.size() : 0);
    }

    /// What reading the archive throws, as text; nothing if it is read. Whatever happens, nothing
    /// is left behind.
    template <class Made = FeatureComputer>
    std::optional<std::string> refusal(const std::string& in_strArchive) {
        m_pFiles->setFile("data/archive", in_strArchive);
        const auto mapBefore = liveBlocks();
        const int iHandles = m_pFileSystem.getReferenceCount();
        std::optional<std::string> refusal;
        try {
            vfsistream stream(m_pFileSystem, "data/archive");
            Testing::loadComputer<Made>(GetParam(), stream);
        } catch (const std::exception& exception) {
            refusal = exception.what();
        }
        EXPECT_EQ(liveBlocks(), mapBefore);
        EXPECT_EQ(m_pFileSystem.getReferenceCount(), iHandles);
        EXPECT_EQ(m_pFiles->getOpenFiles(), 0u);
        return refusal;
    }

    /// The host goes on.
    void expectGoodArchiveIsRead() {
        EXPECT_EQ(compute(*loadFile("data/archive", saveOwn())), "[8]");
    }
};

INSTANTIATE_TEST_SUITE_P(Format, FeatureComputerDamagedArchiveTest, Testing::everyArchiveFormat(),
                         Testing::nameOfFormat);

/// Text archives tell a name's length ahead of it.
class FeatureComputerDamagedTextTest : public FeatureComputerDamagedArchiveTest {};

INSTANTIATE_TEST_SUITE_P(Format, FeatureComputerDamagedTextTest,
                         ::testing::Values(Testing::textFormat()), Testing::nameOfFormat);

constexpr const char* NotSetUp = "failed to set XPR filename";

TEST_P(FeatureComputerDamagedArchiveTest, AMissingScriptIsAnExceptionAndItsNameIsLogged) {
    EXPECT_EQ(refusal(withScript("missing")), NotSetUp);
    EXPECT_TRUE(m_Log.contains(ERROR_LOG_LEVEL, "can't load script: data/missing"));
    expectGoodArchiveIsRead();
}

TEST_P(FeatureComputerDamagedArchiveTest, AScriptThatDoesntLinkIsAnException) {
    m_pFiles->setFile("./data/dangling.xpr", "level = nowhere.value\n");
    EXPECT_EQ(refusal(withScript("dangling")), NotSetUp);
    m_pFiles->setFile("./data/broken.xpr", "a = 1\nlevel = (\n");
    EXPECT_EQ(refusal(withScript("broken")), NotSetUp);
    expectGoodArchiveIsRead();
}

TEST_P(FeatureComputerDamagedArchiveTest, AScriptNameThatLeadsUpwardIsRefused) {
    for (const char* szName : {"..", "../voice", "a/../voice", "/abs/../voice", "a/..", "./../x"}) {
        SCOPED_TRACE(szName);
        m_Log.clear();
        m_pFiles->setFile(std::string("./data/") + szName + ".xpr", "level = 1\n");
        m_pFiles->setFile(std::string("./") + szName + ".xpr", "level = 1\n");
        EXPECT_EQ(refusal(withScript(szName)), NotSetUp);
        EXPECT_THAT(
            m_Log.messages(ERROR_LOG_LEVEL),
            ::testing::ElementsAre("the script name in an archive must not contain \"..\": " +
                                   std::string(szName)));
    }
    expectGoodArchiveIsRead();
}

TEST_P(FeatureComputerDamagedArchiveTest, PointsElsewhereInAScriptNameAreAccepted) {
    for (const char* szName : {"a..b", "..a", "a...", "./a", "a../b"}) {
        SCOPED_TRACE(szName);
        m_pFiles->setFile(std::string("./data/") + szName + ".xpr", "level = 1\n");
        EXPECT_EQ(refusal(withScript(szName)), std::nullopt);
    }
}

TEST_P(FeatureComputerDamagedArchiveTest, AnEmptyScriptNameIsAnException) {
    EXPECT_EQ(refusal(withScript("")), NotSetUp);
}

TEST_P(FeatureComputerDamagedArchiveTest, AnArchiveThatIsCutOffAnywhereIsAnException) {
    const std::string strOwn = saveOwn();
    for (std::size_t uiSize = 0; uiSize != sizeOfValues(strOwn); ++uiSize) {
        SCOPED_TRACE(uiSize);
        ASSERT_TRUE(refusal(strOwn.substr(0, uiSize)));
    }
    const std::string strInputs = saveWithInputs();
    for (std::size_t uiSize = 0; uiSize != sizeOfValues(strInputs); ++uiSize) {
        SCOPED_TRACE(uiSize);
        ASSERT_TRUE(refusal<FeatureComputerWithInputs>(strInputs.substr(0, uiSize)));
    }
    EXPECT_EQ(refusal(strOwn), std::nullopt);
    expectGoodArchiveIsRead();
}

TEST_P(FeatureComputerDamagedTextTest, AScriptNameThatIsCutOffDoesntNameAnotherScript) {
    m_pFiles->setFile("./data/voi.xpr", "level = 1\n");
    const std::string strArchive = saveOwn();
    const auto strRefusal = refusal(strArchive.substr(0, strArchive.rfind("ce")));
    ASSERT_TRUE(strRefusal);
    EXPECT_THAT(*strRefusal, HasSubstr("input stream error"));
}

TEST_P(FeatureComputerDamagedArchiveTest, ACountOfFourBillionNamesIsAnException) {
    const std::string strArchive =
        isXml() ? replaced(saveWithInputs(), "<count>2<", "<count>4294967295<")
                : replaced(saveWithInputs(), " 2 4 left", " 4294967295 4 left");
    m_pFiles->setFile("data/archive", strArchive);
    vfsistream stream(m_pFileSystem, "data/archive");
    EXPECT_THROW(Testing::loadComputer<FeatureComputerWithInputs>(GetParam(), stream),
                 archive_exception);
    expectGoodArchiveIsRead();
}

TEST_P(FeatureComputerDamagedArchiveTest, ACountBelowTheNumberOfNamesIsAnException) {
    const std::string strArchive = isXml() ? replaced(saveWithInputs(), "<count>2<", "<count>1<")
                                           : replaced(saveWithInputs(), " 2 4 left", " 1 4 left");
    EXPECT_TRUE(refusal<FeatureComputerWithInputs>(strArchive));
}

TEST_P(FeatureComputerDamagedTextTest, ANameOfAnImpossibleLengthIsAnException) {
    for (const char* szLength : {"18446744073709551615", "-1", "99999999999999999999999", "x"}) {
        SCOPED_TRACE(szLength);
        EXPECT_TRUE(refusal(replaced(saveOwn(), "5 voice", std::string(szLength) + " voice")));
    }
    expectGoodArchiveIsRead();
}

// What describes the classes is left out: the archive library trusts the numbers of classes and
// objects, and an archive in which they are wrong isn't safe to read.
TEST_P(FeatureComputerDamagedArchiveTest, AGarbledArchiveIsAnExceptionOrAnotherComputer) {
    const std::string strArchive = saveWithInputs();
    const std::size_t uiFirst = strArchive.find(isXml() ? "<count>" : " 2 4 left");
    const std::size_t uiLast = strArchive.rfind("</FeatureComputer>");
    std::size_t uiRefused = 0;
    std::size_t uiRead = 0;
    for (std::size_t uiByte = uiFirst; uiByte < std::min(uiLast, strArchive.size()); ++uiByte) {
        if (!isXml() && uiByte >= strArchive.find(" 1 0\n") &&
            uiByte < strArchive.find(" 0 3 sum")) {
            continue;
        }
        for (const char cWrong : {'\0', ' ', '9', '-', '/', '<', 'x', '\xff'}) {
            SCOPED_TRACE(std::to_string(uiByte) + ": " + std::to_string(cWrong));
            std::string strGarbled = strArchive;
            strGarbled[uiByte] = cWrong;
            ++(refusal<FeatureComputerWithInputs>(strGarbled) ? uiRefused : uiRead);
        }
    }
    EXPECT_GT(uiRefused, uiRead);
    expectGoodArchiveIsRead();
}

TEST_P(FeatureComputerDamagedArchiveTest, AnUnknownClassIsAnException) {
    const std::string strArchive = replaced(saveOwn(), "XprFeatureComputer", "XprFeatureCompiler");
    const auto strRefusal = refusal(strArchive);
    ASSERT_TRUE(strRefusal);
    EXPECT_THAT(*strRefusal, HasSubstr("unregistered class"));
}

TEST_P(FeatureComputerDamagedArchiveTest, TheArchiveReleasesAComputerThatDoesntFitThePointer) {
    m_pFiles->setFile("data/archive", saveOwn());
    const auto mapBefore = liveBlocks();
    {
        vfsistream stream(m_pFileSystem, "data/archive");
        const auto pArchive = GetParam().m_read(stream);
        Velmora::Math::FeatureComputerWithInputs* pComputer = nullptr;
        EXPECT_THROW(*pArchive >> make_nvp("computer", pComputer), archive_exception);
        pArchive->delete_created_pointers();
    }
    EXPECT_EQ(liveBlocks(), mapBefore);
}

TEST_P(FeatureComputerDamagedArchiveTest, AnObjectOfTheHostIsAsNewAfterAFailure) {
    std::ostringstream written;
    {
        const auto pArchive = GetParam().m_write(written);
        FeatureComputerWithInputs source("level");
        ASSERT_TRUE(source.setInputNames({"left"}));
        ASSERT_TRUE(source.setXprFilename("voice", m_pFileSystem));
        *pArchive << make_nvp("computer", std::as_const(source));
    }
    m_pFiles->setFile("elsewhere/archive", written.str());
    vfsistream stream(m_pFileSystem, "elsewhere/archive");
    const auto pArchive = GetParam().m_read(stream);
    FeatureComputerWithInputs computer("sum");
    EXPECT_THROW(*pArchive >> make_nvp("computer", computer), ExceptionWithMsg);

    EXPECT_EQ(compute(computer), "none");
    EXPECT_THAT(errorLines(),
                ::testing::ElementsAre("Could not extract XPR script name from filename "));
    EXPECT_TRUE(computer.setInputNames({"left", "right"}));
    EXPECT_TRUE(computer.setXprFilename("pair", m_pFileSystem));
    const DoubleVector vFrame{1.0};
    EXPECT_TRUE(computer.setInput("left", vFrame));
}

TEST_P(FeatureComputerDamagedArchiveTest, AComputerThatIsSetUpCantBeReadOver) {
    std::ostringstream written;
    FeatureComputer computer("level");
    ASSERT_TRUE(computer.setXprFilename("voice", m_pFileSystem));
    *GetParam().m_write(written) << make_nvp("computer", std::as_const(computer));
    std::istringstream stream(written.str());
    const auto pArchive = GetParam().m_read(stream);
    EXPECT_THROW(*pArchive >> make_nvp("computer", computer), ExceptionWithMsg);
    EXPECT_EQ(
        m_Assertions.count("m_bSharedEvaluator || (!m_bSharedEvaluator && m_pEvaluator.isNull())"),
        1u);
    EXPECT_EQ(MemAccounts::get("Evaluator").liveBlocks, 0u);
}

} // namespace

} // namespace Velmora::Math::Xpr
